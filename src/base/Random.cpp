#include "base/Random.h"

#include "base/Atomic.h"

namespace {

thread_local uint64_t state = 0; ///< 0 until the thread draws its first number

void seedThread() {
    static Shared<unsigned> threads{0};
    seedRand(threads.fetchAdd(1));
}

} // namespace

/// The finaliser of splitmix64.
uint64_t scramble(uint64_t v) {
    v += 0x9e3779b97f4a7c15;
    v = (v ^ v >> 30) * 0xbf58476d1ce4e5b9;
    v = (v ^ v >> 27) * 0x94d049bb133111eb;
    return v ^ v >> 31;
}

void seedRand(unsigned seed) {
    state = scramble(seed);
    if (state == 0) state = 1;
}

int asRandInt() {
    if (state == 0) seedThread();
    // xorshift64*; its upper bits are the good ones.
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    return int(state * 0x2545f4914f6cdd1d >> 33);
}

double asRand() {
    return asRandInt() / 2147483648.0;
}

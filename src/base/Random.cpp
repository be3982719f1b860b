#include "base/Random.h"

#include "base/Atomic.h"

/// The finaliser of splitmix64.
uint64_t scramble(uint64_t v) {
    v += 0x9e3779b97f4a7c15;
    v = (v ^ v >> 30) * 0xbf58476d1ce4e5b9;
    v = (v ^ v >> 27) * 0x94d049bb133111eb;
    return v ^ v >> 31;
}

void Random::seed(unsigned number) {
    state = scramble(number);
    if (state == 0) state = 1;
}

int Random::integer() {
    // xorshift64*; its upper bits are the good ones.
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    return int(state * 0x2545f4914f6cdd1d >> 33);
}

double Random::unit() {
    return integer() / 2147483648.0;
}

namespace {

Random& ofThread() {
    static Shared<unsigned> threads{0};
    thread_local Random own(threads.fetchAdd(1));
    return own;
}

} // namespace

void seedRand(unsigned seed) {
    ofThread().seed(seed);
}

int asRandInt() {
    return ofThread().integer();
}

double asRand() {
    return ofThread().unit();
}

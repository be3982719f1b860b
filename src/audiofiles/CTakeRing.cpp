#include "audiofiles/CTakeRing.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int maxRate = 768000; // frames a second; a take beyond it gets less than its seconds

} // namespace

CTakeRing::CTakeRing(int rate, int bytesOfFrame)
    : frameBytes(bytesOfFrame), capacity(seconds * std::clamp(rate, 1, maxRate)),
      memory(std::make_unique<unsigned char[]>(std::size_t(capacity) * std::size_t(frameBytes))) {
}

unsigned char* CTakeRing::back(int& count) const {
    const int at = int(written % capacity);
    count = std::min(count, capacity - at);
    return memory.get() + std::ptrdiff_t(at) * frameBytes;
}

void CTakeRing::addSilence() {
    int left = int(std::min<std::int64_t>(owed, room()));
    while (left > 0) {
        int count = left;
        unsigned char* to = back(count);
        std::memset(to, 0, std::size_t(count) * std::size_t(frameBytes));
        written.storeRelease(written + count);
        owed = owed - count;
        left -= count;
    }
}

bool CTakeRing::settle() {
    const bool any = owed > 0;
    addSilence();
    return any;
}

bool CTakeRing::add(SampleCoding coding, int chs, int count, const float* left,
                    const float* right) {
    addSilence();
    int fits = owed > 0 ? 0 : std::min(count, room());
    owed = owed + count - fits;
    const bool all = fits == count;
    while (fits > 0) {
        int n = fits;
        unsigned char* to = back(n);
        encodeFrames(coding, chs, n, left, right, to);
        written.storeRelease(written + n);
        left += n;
        right += n;
        fits -= n;
    }
    return all;
}

CTakeRing::Piece CTakeRing::front() const {
    const int at = int(taken % capacity);
    return {memory.get() + std::ptrdiff_t(at) * frameBytes, std::min(waiting(), capacity - at)};
}

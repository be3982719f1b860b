#include "audiofiles/PeakImage.h"

#include "base/Clones.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <new>

namespace {

constexpr int bytesPerChannel = 3; ///< of an entry

/// Lowers `low` and raises `high` to the values at even and at odd places.
template <int lanes, class T>
[[gnu::always_inline]] inline void spread(const T* data, int values, T* low, T* high) {
    T least[lanes] = {}, most[lanes] = {};
    int i = 0;
    for (; i + lanes <= values; i += lanes)
        for (int k = 0; k < lanes; k++) {
            least[k] = data[i + k] < least[k] ? data[i + k] : least[k];
            most[k] = data[i + k] > most[k] ? data[i + k] : most[k];
        }
    for (; i < values; i++) {
        least[i & 1] = std::min(least[i & 1], data[i]);
        most[i & 1] = std::max(most[i & 1], data[i]);
    }
    for (int k = 0; k < lanes; k++) {
        low[k & 1] = std::min(low[k & 1], least[k]);
        high[k & 1] = std::max(high[k & 1], most[k]);
    }
}

/// Adds the squares of the values at even and at odd places to `sums`.
template <int lanes, class T>
[[gnu::always_inline]] inline void addSquares(const T* data, int values, float* sums) {
    float sum[lanes] = {};
    int i = 0;
    for (; i + lanes <= values; i += lanes)
        for (int k = 0; k < lanes; k++) sum[k] += float(data[i + k]) * float(data[i + k]);
    for (; i < values; i++) sum[i & 1] += float(data[i]) * float(data[i]);
    for (int k = 0; k < lanes; k++) sums[k & 1] += sum[k];
}

SONDRAVA_CLONES void findSquares(const float* data, int values, float* sums) {
    addSquares<16>(data, values, sums);
}

SONDRAVA_CLONES void findSquares(const int16_t* data, int values, float* sums) {
    addSquares<16>(data, values, sums);
}

SONDRAVA_CLONES void findExtremes(const float* data, int values, float* low, float* high) {
    spread<16>(data, values, low, high);
}

SONDRAVA_CLONES void findExtremes(const int16_t* data, int values, int16_t* low, int16_t* high) {
    spread<32>(data, values, low, high);
}

} // namespace

PeakImage::~PeakImage() {
    reset(0);
}

void PeakImage::reset(int channels) {
    entries.store(0, std::memory_order_release);
    fine.clear();
    coarse.clear();
    chs = channels <= maxChannels ? channels : 0;
    peakFrames = inWindow = 0;
    for (int c = 0; c < maxChannels; c++) peakMin[c] = peakMax[c] = squares[c] = 0.0f;
}

PeakImage::Place PeakImage::place(int index) {
    assert(index >= 0);
    const unsigned row = unsigned(index) / firstChunk + 1;
    const int chunk = std::bit_width(row) - 1;
    return {chunk, index - firstChunk * ((1 << chunk) - 1)};
}

void PeakImage::Chunks::clear() {
    for (unsigned char*& list : lists) {
        delete[] list;
        list = nullptr;
    }
}

unsigned char* PeakImage::Chunks::at(int index, int bytes) const {
    const Place in = place(index);
    return lists[in.chunk] + std::ptrdiff_t(in.index) * bytes;
}

unsigned char* PeakImage::Chunks::make(int index, int bytes) {
    const int chunk = place(index).chunk;
    if (chunk >= chunkCount) return nullptr;
    unsigned char*& list = lists[chunk];
    const std::size_t all = (std::size_t(firstChunk) << chunk) * std::size_t(bytes);
    if (!list) list = new (std::nothrow) unsigned char[all];
    return list ? at(index, bytes) : nullptr;
}

int PeakImage::bytes() const {
    return chs * bytesPerChannel;
}

const unsigned char* PeakImage::entry(int index) const {
    return fine.at(index, bytes());
}

const unsigned char* PeakImage::run(int index) const {
    return coarse.at(index, bytes());
}

unsigned char PeakImage::encode(float value) {
    const float v = value > -1.0f ? std::min(value, 1.0f) : (value <= -1.0f ? -1.0f : 0.0f);
    return static_cast<unsigned char>(int(double(v * 127.0f + 0.5f) + 127.0)); // no longer below 0
}

unsigned char PeakImage::encodeRms(float value) {
    return value < 1.0f    ? static_cast<unsigned char>(value * 255.0f + 0.5f)
           : value >= 1.0f ? 255
                           : 0;
}

bool PeakImage::store() {
    const int index = entries.load(std::memory_order_relaxed);
    unsigned char* p = fine.make(index, bytes());
    if (!p) return false;
    for (int c = 0; c < chs; c++, p += 2) {
        p[0] = encode(peakMin[c]);
        p[1] = encode(peakMax[c]);
        peakMin[c] = peakMax[c] = 0.0f;
    }
    for (int c = 0; c < chs; c++) {
        *p++ = encodeRms(std::sqrt(squares[c] / float(framesPerEntry)));
        squares[c] = 0.0f;
    }
    if ((index + 1) % entriesPerRun == 0 && !storeRun(index / entriesPerRun)) return false;
    entries.store(index + 1, std::memory_order_release);
    return true;
}

bool PeakImage::storeRun(int index) {
    unsigned char* p = coarse.make(index, bytes());
    if (!p) return false;
    const auto over = [&](int byte, auto&& gather) {
        for (int i = 0; i < entriesPerRun; i++) gather(entry(index * entriesPerRun + i)[byte]);
    };
    for (int c = 0; c < chs; c++) {
        unsigned char &low = p[2 * c] = 255, &high = p[2 * c + 1] = 0;
        float power = 0.0f;
        over(2 * c, [&](unsigned char v) { low = std::min(low, v); });
        over(2 * c + 1, [&](unsigned char v) { high = std::max(high, v); });
        over(2 * chs + c, [&](unsigned char v) { power += decodeRms(v) * decodeRms(v); });
        p[2 * chs + c] = encodeRms(std::sqrt(power / float(entriesPerRun)));
    }
    return true;
}

template <class T>
void PeakImage::addValues(const T* data, int frames, float scale) {
    while (chs > 0 && frames > 0) {
        const int n = std::min(frames, framesPerEntry - inWindow);
        T low[2] = {}, high[2] = {};
        float sums[2] = {};
        findExtremes(data, n * chs, low, high);
        findSquares(data, n * chs, sums);
        for (int k = 0; k < 2; k++) {
            float &least = peakMin[k & (chs - 1)], &most = peakMax[k & (chs - 1)];
            least = std::min(least, float(low[k]) * scale);
            most = std::max(most, float(high[k]) * scale);
            squares[k & (chs - 1)] += sums[k] * scale * scale;
        }
        data += n * chs;
        frames -= n;
        peakFrames += n;
        inWindow = (inWindow + n) % framesPerEntry;
        if (inWindow == 0 && !store()) return;
    }
}

void PeakImage::add(const float* data, int frames) {
    addValues(data, frames, 1.0f);
}

void PeakImage::add(const int16_t* data, int frames) {
    addValues(data, frames, 1.0f / 32768.0f);
}

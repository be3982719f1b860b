#include "audiofiles/PeakImage.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <new>

PeakImage::~PeakImage() {
    reset(0);
}

void PeakImage::reset(int channels) {
    entries.store(0, std::memory_order_release);
    for (unsigned char*& chunk : chunks) {
        delete[] chunk;
        chunk = nullptr;
    }
    chs = channels <= maxChannels ? channels : 0;
    peakFrames = inWindow = 0;
    for (int c = 0; c < maxChannels; c++) peakMin[c] = peakMax[c] = 0.0f;
}

PeakImage::Place PeakImage::place(int index) {
    assert(index >= 0);
    const unsigned row = unsigned(index) / firstChunk + 1;
    const int chunk = std::bit_width(row) - 1;
    return {chunk, index - firstChunk * ((1 << chunk) - 1)};
}

const unsigned char* PeakImage::entry(int index) const {
    const Place at = place(index);
    return chunks[at.chunk] + std::ptrdiff_t(at.index) * chs * 2;
}

unsigned char PeakImage::encode(float value) {
    const float v = value > -1.0f ? std::min(value, 1.0f) : (value <= -1.0f ? -1.0f : 0.0f);
    return static_cast<unsigned char>(int(std::floor(v * 127.0f + 0.5f)) + 127);
}

bool PeakImage::store() {
    const int index = entries.load(std::memory_order_relaxed);
    const Place at = place(index);
    if (at.chunk >= chunkCount) return false;
    unsigned char*& chunk = chunks[at.chunk];
    const std::size_t bytes = (std::size_t(firstChunk) << at.chunk) * std::size_t(chs) * 2;
    if (!chunk) chunk = new (std::nothrow) unsigned char[bytes];
    if (!chunk) return false;
    unsigned char* p = chunk + std::ptrdiff_t(at.index) * chs * 2;
    for (int c = 0; c < chs; c++, p += 2) {
        p[0] = encode(peakMin[c]);
        p[1] = encode(peakMax[c]);
        peakMin[c] = peakMax[c] = 0.0f;
    }
    entries.store(index + 1, std::memory_order_release);
    return true;
}

/// Lanes alternate between the channels, of which there are one or two.
template <class T, int lanes>
void PeakImage::addValues(const T* data, int frames, float scale) {
    const int other = chs - 1; // turns a lane into its channel
    while (chs > 0 && frames > 0) {
        const int n = std::min(frames, framesPerEntry - inWindow), values = n * chs;
        T low[lanes] = {}, high[lanes] = {};
        int i = 0;
        for (; i + lanes <= values; i += lanes)
            for (int k = 0; k < lanes; k++) {
                low[k] = data[i + k] < low[k] ? data[i + k] : low[k];
                high[k] = data[i + k] > high[k] ? data[i + k] : high[k];
            }
        for (; i < values; i++) {
            low[i & other] = std::min(low[i & other], data[i]);
            high[i & other] = std::max(high[i & other], data[i]);
        }
        for (int half = lanes / 2; half >= 2; half /= 2)
            for (int k = 0; k < half; k++) {
                low[k] = std::min(low[k], low[k + half]);
                high[k] = std::max(high[k], high[k + half]);
            }
        for (int k = 0; k < 2; k++) {
            peakMin[k & other] = std::min(peakMin[k & other], float(low[k]) * scale);
            peakMax[k & other] = std::max(peakMax[k & other], float(high[k]) * scale);
        }
        data += values;
        frames -= n;
        peakFrames += n;
        inWindow = (inWindow + n) % framesPerEntry;
        if (inWindow == 0 && !store()) return;
    }
}

void PeakImage::add(const float* data, int frames) {
    addValues<float, 8>(data, frames, 1.0f);
}

void PeakImage::add(const int16_t* data, int frames) {
    addValues<int16_t, 16>(data, frames, 1.0f / 32768.0f);
}

#include "driver/WavFeed.h"

#include "driver/libaam.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

constexpr unsigned formatPcm = 1, formatFloat = 3, formatExtensible = 0xFFFE;

unsigned word(const std::vector<char>& bytes, size_t at, int count) {
    unsigned value = 0;
    for (int i = 0; i < count; ++i) value |= unsigned(uint8_t(bytes[at + size_t(i)])) << (8 * i);
    return value;
}

/// Where a chunk's content lies; empty if the file has none of that name.
struct Chunk {
    size_t at = 0, size = 0;
};

Chunk find(const std::vector<char>& bytes, const char* name) {
    constexpr size_t riffHeader = 12, chunkHeader = 8;
    for (size_t at = riffHeader; at + chunkHeader <= bytes.size();) {
        const size_t content = at + chunkHeader;
        const size_t size = std::min<size_t>(word(bytes, at + 4, 4), bytes.size() - content);
        if (std::memcmp(&bytes[at], name, 4) == 0) return {content, size};
        at = content + size + size % 2;
    }
    return {};
}

float sampleAt(const char* from, bool isFloat) {
    if (isFloat) {
        float value;
        std::memcpy(&value, from, sizeof value);
        return value;
    }
    int16_t value;
    std::memcpy(&value, from, sizeof value);
    return float(value) / 32768.0f;
}

} // namespace

std::unique_ptr<WavFeed> WavFeed::load(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    constexpr size_t minFormat = 16, subFormatAt = 24;
    const Chunk format = find(bytes, "fmt "), data = find(bytes, "data");
    if (format.size < minFormat || data.size == 0) return nullptr;
    unsigned tag = word(bytes, format.at, 2);
    if (tag == formatExtensible && format.size >= subFormatAt + 2)
        tag = word(bytes, format.at + subFormatAt, 2);
    const unsigned bits = word(bytes, format.at + 14, 2), count = word(bytes, format.at + 2, 2);
    const bool isFloat = tag == formatFloat && bits == 32;
    if (count == 0 || (!isFloat && !(tag == formatPcm && bits == 16))) return nullptr;

    auto feed = std::make_unique<WavFeed>();
    const size_t sampleBytes = bits / 8;
    feed->length = data.size / (sampleBytes * count);
    for (size_t c = 0; c < count; ++c) {
        std::vector<float>& channel = feed->channels.emplace_back(feed->length + aamMaxFrames);
        for (size_t i = 0; i < feed->length; ++i)
            channel[i] = sampleAt(&bytes[data.at + (i * count + c) * sampleBytes], isFloat);
    }
    return feed;
}

void WavFeed::next(float** ins, int count, int frames) {
    for (int i = 0; i < count; ++i) {
        const bool present = size_t(i) < channels.size();
        ins[i] = channels[present ? size_t(i) : 0].data() + (present ? position : length);
    }
    position = std::min(position + size_t(frames), length);
}

#include "driver/WavCapture.h"

#include "driver/libaam.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>

std::unique_ptr<WavCapture> WavCapture::create(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "wb");
    return file ? std::unique_ptr<WavCapture>(new WavCapture(file)) : nullptr;
}

WavCapture::~WavCapture() {
    ending.store(true, std::memory_order_relaxed);
    if (begun()) {
        writer.join();
        writeOut();
        writeHeader();
    }
    std::fclose(file);
}

void WavCapture::begin(int fileChannels, int fileRate) {
    constexpr size_t secondsHeld = 2, blocksHeld = 4, chunkSamples = 65536;
    channels = size_t(std::max(fileChannels, 1));
    rate = unsigned(fileRate);
    const size_t frames = std::max(secondsHeld * rate, blocksHeld * aamMaxFrames);
    ring = std::make_unique<Ring<float>>(frames * channels);
    block.resize(aamMaxFrames * channels);
    chunk.resize(chunkSamples);
    writeHeader();
    writer = std::thread(&WavCapture::write, this);
}

bool WavCapture::put(const float* const* outs, int count, int frames) {
    for (size_t c = 0; c < channels; ++c) {
        const float* from = c < size_t(count) ? outs[c] : nullptr;
        for (size_t i = 0; i < size_t(frames); ++i) block[i * channels + c] = from ? from[i] : 0.0f;
    }
    return ring->put(block.data(), size_t(frames) * channels);
}

void WavCapture::write() {
    while (!ending.load(std::memory_order_relaxed)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        writeOut();
    }
}

void WavCapture::writeOut() {
    while (const size_t count = ring->take(chunk.data(), chunk.size()))
        samplesWritten += std::fwrite(chunk.data(), sizeof(float), count, file);
}

void WavCapture::writeHeader() {
    constexpr uint32_t formatBytes = 16, headerBytes = 36;
    constexpr uint16_t formatFloat = 3, bits = 32;
    const uint64_t bytes = std::min<uint64_t>(samplesWritten * sizeof(float), INT32_MAX);
    char header[44];
    char* at = header;
    const auto text = [&](const char* name) { at = std::copy_n(name, 4, at); };
    const auto number = [&](auto value) {
        std::memcpy(at, &value, sizeof value);
        at += sizeof value;
    };
    text("RIFF");
    number(uint32_t(headerBytes + bytes));
    text("WAVE");
    text("fmt ");
    number(formatBytes);
    number(formatFloat);
    number(uint16_t(channels));
    number(uint32_t(rate));
    number(uint32_t(rate * channels * sizeof(float)));
    number(uint16_t(channels * sizeof(float)));
    number(bits);
    text("data");
    number(uint32_t(bytes));
    std::fseek(file, 0, SEEK_SET);
    std::fwrite(header, 1, sizeof header, file);
}

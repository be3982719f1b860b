#pragma once

#include "driver/Ring.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// Writes what the program plays to a 32-bit float WAV file. The audio thread fills a ring, a
/// thread of its own empties it into the file.
class WavCapture {
public:
    /// Makes the file; null if that fails.
    static std::unique_ptr<WavCapture> create(const std::string& path);
    /// Writes what is left and completes the header.
    ~WavCapture();
    WavCapture(const WavCapture&) = delete;
    WavCapture& operator=(const WavCapture&) = delete;

    /// Fixes the form of the file, once, before the first `put`.
    void begin(int fileChannels, int fileRate);
    bool begun() const { return writer.joinable(); }

    /// Audio thread: adds a block. Channels that are missing are silent, surplus ones are dropped.
    /// False if the writer has fallen behind, and the block is lost.
    bool put(const float* const* outs, int count, int frames);

private:
    explicit WavCapture(FILE* created) : file(created) {}
    void writeHeader();
    void writeOut();
    void write();

    FILE* file; ///< owned
    size_t channels = 0;
    unsigned rate = 0;
    size_t samplesWritten = 0;
    std::unique_ptr<Ring<float>> ring; ///< of interleaved samples
    std::vector<float> block, chunk;   ///< of the audio thread, of the writer
    std::atomic<bool> ending{false};
    std::thread writer;
};

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// A WAV file that stands in for the inputs, held in memory as a whole.
class WavFeed {
public:
    /// Reads a file of 16-bit or 32-bit float samples; null if that fails.
    static std::unique_ptr<WavFeed> load(const std::string& path);

    /// Audio thread: points the first `count` of `ins` at the next block of the file's channels.
    /// Past its end, and for channels that it lacks, that is silence.
    void next(float** ins, int count, int frames);

private:
    std::vector<std::vector<float>> channels; ///< each followed by a block of zeros
    size_t length = 0, position = 0;          ///< frames
};

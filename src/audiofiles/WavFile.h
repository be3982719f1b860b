#pragma once

#include "audiofiles/AudioCue.h"

#include <cstdint>
#include <cstdio>
#include <vector>

/// What the header of a WAV or AIFF file tells of its frames.
struct AudioFormat {
    int rate = 0; ///< frames a second, at least 1
    int bits = 0; ///< 16, 24 or 32
    int chs = 0;  ///< channels, at least 1
    bool bigEndian = false;
    int frames = 0;             ///< as many as the chunk and the file really hold
    std::int64_t dataStart = 0; ///< byte offset of the first frame
    bool loop = false;          ///< the file tells exactly one loop
    int loopStart = 0;          ///< frames, at or above 0, within the file
    std::vector<AudioCue> cues; ///< in order of frames, at most `mostCues`

    int frameBytes() const { return chs * (bits / 8); }
};

/// Widest frame that can be played, in bytes.
constexpr int maxFrameBytes = 65535;
constexpr int mostCues = 4096;
constexpr int wavHeaderBytes = 44, aiffHeaderBytes = 54;

/// Opens a regular file for positioned reads, or null. Never waits on what is no file.
std::FILE* openAudioFile(const char* path);

/// Size in bytes of an open file, 0 if it can't be told.
std::int64_t audioFileSize(std::FILE* file);

/// Reads `count` bytes at `offset` whatever the handle's own position is; returns how many came.
std::int64_t readAt(std::FILE* file, std::int64_t offset, void* out, std::int64_t count);

/// Writes `count` bytes at `offset`; returns how many went.
std::int64_t writeAt(std::FILE* file, std::int64_t offset, const void* in, std::int64_t count);

/// Walks the chunks of an open file. False for what is neither WAV nor AIFF, and for one that
/// holds no frames in a format that can be played: WAV of 16 or 24 bit integers or 32 bit floats,
/// AIFF of 16, 24 or 32 bit integers, both with frames of up to `maxFrameBytes`.
bool readAudioHeader(std::FILE* file, AudioFormat& format);

/// The header of `format` into `out`, WAV or, with `bigEndian`, AIFF; returns its size.
int makeAudioHeader(const AudioFormat& format, unsigned char out[aiffHeaderBytes]);

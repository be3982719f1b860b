#pragma once

/// How the values of a sample lie in a file or in memory: 16 or 24 bit integers, or 32 bits, which
/// are floats in little-endian data and integers in big-endian data.
struct SampleCoding {
    int bits = 16;
    bool bigEndian = false;
};

/// `count` values to floats of -1 to 1; floats as they stand. Zeros for any other width.
void decodeValues(SampleCoding coding, const unsigned char* in, int count, float* out);

/// Makes big-endian 16 and 24 bit values native, in place. 32 bits stay.
void swapToNative(SampleCoding coding, unsigned char* data, long long count);

/// Packs frames of one channel (the mean of both sides) or two into `out`, cut to -1 to 1 and
/// truncated; what is not a number becomes 0. Big-endian data of 32 bits is integers in stereo,
/// but floats in mono, as such files have always been written here.
void encodeFrames(SampleCoding coding, int chs, int frames, const float* left, const float* right,
                  unsigned char* out);

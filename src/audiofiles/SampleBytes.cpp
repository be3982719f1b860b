#include "audiofiles/SampleBytes.h"

#include "base/Clones.h"
#include "base/Floats4.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr float unit16 = 1.0f / 32768.0f;
constexpr float unit32 = 1.0f / 2147483648.0f;
constexpr double full32 = 2147483648.0;

std::int16_t get16(const unsigned char* p, bool big) {
    return std::int16_t(big ? p[0] << 8 | p[1] : p[1] << 8 | p[0]);
}

/// The three bytes in bits 8 to 31.
std::int32_t get24(const unsigned char* p, bool big) {
    const unsigned low = big ? p[2] : p[0], high = big ? p[0] : p[2];
    return std::int32_t(high << 24 | unsigned(p[1]) << 16 | low << 8);
}

std::int32_t get32Big(const unsigned char* p) {
    return std::int32_t(unsigned(p[0]) << 24 | unsigned(p[1]) << 16 | unsigned(p[2]) << 8 | p[3]);
}

void put(unsigned char* p, std::uint32_t value, int bytes, bool big) {
    for (int i = 0; i < bytes; i++, value >>= 8)
        p[big ? bytes - 1 - i : i] = static_cast<unsigned char>(value);
}

/// -full to full for a value of -1 to 1, towards 0.
std::int32_t toInteger(float value, double full) {
    if (value >= 1.0f) return std::int32_t(full);
    if (value <= -1.0f) return -std::int32_t(full);
    return value == value ? std::int32_t(double(value) * full) : 0;
}

std::uint32_t toFloatBits(float value) {
    if (!(value > -1.0f)) value = value == value ? -1.0f : 0.0f;
    return std::bit_cast<std::uint32_t>(value < 1.0f ? value : 1.0f);
}

void encodeValue(SampleCoding coding, bool asInteger32, float value, unsigned char* out) {
    constexpr double full16 = 32767.0, full24 = 8388607.0, most32 = 2147483647.0;
    std::uint32_t word = 0;
    if (coding.bits == 16)
        word = std::uint32_t(toInteger(value, full16));
    else if (coding.bits == 24)
        word = std::uint32_t(toInteger(value, full24));
    else
        word = asInteger32 ? std::uint32_t(toInteger(value, most32)) : toFloatBits(value);
    put(out, word, coding.bits / 8, coding.bigEndian);
}

SONDRAVA_CLONES void decode16(const unsigned char* in, int count, bool big, float* out) {
    if (big)
        for (int i = 0; i < count; i++) out[i] = float(get16(in + i * 2ll, true)) * unit16;
    else
        for (int i = 0; i < count; i++) out[i] = float(get16(in + i * 2ll, false)) * unit16;
}

using Bytes16 = unsigned char __attribute__((vector_size(16)));
using Ints4 = int __attribute__((vector_size(16)));

/// Four values of 24 bits into the upper bytes of as many words. `in` holds at least 16 bytes.
template <bool big>
[[gnu::always_inline]] inline void decodeFour24(const unsigned char* in, float* out) {
    constexpr int z = 16; // an index of the second vector: zero
    Bytes16 bytes;
    std::memcpy(&bytes, in, sizeof bytes);
    const Bytes16 zero = {};
    if constexpr (big)
        bytes =
            __builtin_shufflevector(bytes, zero, z, 2, 1, 0, z, 5, 4, 3, z, 8, 7, 6, z, 11, 10, 9);
    else
        bytes =
            __builtin_shufflevector(bytes, zero, z, 0, 1, 2, z, 3, 4, 5, z, 6, 7, 8, z, 9, 10, 11);
    saveFloats(out, __builtin_convertvector(std::bit_cast<Ints4>(bytes), Floats4) * unit32);
}

SONDRAVA_CLONES void decode24(const unsigned char* in, int count, bool big, float* out) {
    constexpr int ahead = 6; // values whose bytes can be loaded at once
    int i = 0;
    if (std::endian::native == std::endian::little && big)
        for (; i + ahead <= count; i += 4) decodeFour24<true>(in + i * 3ll, out + i);
    else if (std::endian::native == std::endian::little)
        for (; i + ahead <= count; i += 4) decodeFour24<false>(in + i * 3ll, out + i);
    for (; i < count; i++) out[i] = float(get24(in + i * 3ll, big)) * unit32;
}

} // namespace

void decodeValues(SampleCoding coding, const unsigned char* in, int count, float* out) {
    if (count < 1) return;
    const bool big = coding.bigEndian;
    if (coding.bits == 16)
        decode16(in, count, big, out);
    else if (coding.bits == 24)
        decode24(in, count, big, out);
    else if (coding.bits == 32 && big)
        for (int i = 0; i < count; i++) out[i] = float(double(get32Big(in + i * 4ll)) / full32);
    else if (coding.bits == 32)
        std::memcpy(out, in, std::size_t(count) * sizeof(float));
    else
        std::memset(out, 0, std::size_t(count) * sizeof(float));
}

void swapToNative(SampleCoding coding, unsigned char* data, long long count) {
    if (!coding.bigEndian || coding.bits == 32) return;
    const int bytes = coding.bits / 8;
    for (long long i = 0; i < count; i++) std::swap(data[i * bytes], data[i * bytes + bytes - 1]);
}

void encodeFrames(SampleCoding coding, int chs, int frames, const float* left, const float* right,
                  unsigned char* out) {
    const int bytes = coding.bits / 8;
    if (chs == 1) {
        for (int i = 0; i < frames; i++, out += bytes)
            encodeValue(coding, false, (left[i] + right[i]) * 0.5f, out);
        return;
    }
    for (int i = 0; i < frames; i++, out += 2ll * bytes) {
        encodeValue(coding, coding.bigEndian, left[i], out);
        encodeValue(coding, coding.bigEndian, right[i], out + bytes);
    }
}

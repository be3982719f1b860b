#pragma once

#include <array>
#include <cstdint>
#include <span>

/// How time code counts frames. MIDI has these numbers.
enum class CodeRate : int { fps24 = 0, fps25 = 1, drop30 = 2, fps30 = 3 };
constexpr int codeRates = 4;
/// Pictures in a second; `drop30` has 30000 / 1001, and leaves out numbers so that it keeps up.
double framesPerSecond(CodeRate rate);

/// A moment as hours, minutes, seconds and frames.
struct TimeCode {
    int hours = 0, minutes = 0, seconds = 0, frames = 0;
    CodeRate rate = CodeRate::fps25;

    static TimeCode ofFrame(int64_t frame,
                            CodeRate rate); ///< from 0 on; after a day it begins anew
    int64_t frame() const;                  ///< how many frames after 0 it is

    /// The data of a quarter frame message: one of the eight pieces of a moment.
    int piece(int index) const;
    static TimeCode ofPieces(const std::array<int, 8>& nibbles);

    bool operator==(const TimeCode&) const = default;
};

/// The message that tells a moment whole.
using FullFrame = std::array<unsigned char, 10>;
FullFrame fullFrame(const TimeCode& code);
/// Reads one, of any device; false for another message.
bool readFullFrame(std::span<const unsigned char> bytes, TimeCode& code);

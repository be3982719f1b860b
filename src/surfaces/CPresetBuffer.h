#pragma once

#include "base/CStr.h"

#include <span>
#include <vector>

using MidiBytes = std::vector<unsigned char>;

/// The preset of a device, as it came in its latest dump by system exclusive message. Interface
/// thread.
class CPresetBuffer {
public:
    static constexpr int patienceMs = 2000; ///< that a dump is awaited

    /// A dump was asked for by a message, at a time as `asTimeInMS`; its preset begins at a byte of
    /// the answer.
    void await(const MidiBytes& request, int offset, int now);
    bool awaiting(int now) const { return waiting && now - askedAt < patienceMs; }
    /// Takes a message when it is a dump: the one that is awaited, of the maker that was asked, or
    /// one that begins as the latest and is as long. False for another.
    bool receive(std::span<const unsigned char> message, int now);

    bool defined() const { return !bytes.empty(); }
    const MidiBytes& data() const { return bytes; }
    int byteAt(int index) const;              ///< -1 outside
    void setByte(int index, int value);       ///< 0 to 127; nothing outside
    CStr getText(int offset, int size) const; ///< what of it lies inside; blanks at its end go
    void clear() { *this = CPresetBuffer(); }

private:
    MidiBytes bytes, head, asked;
    int start = 0; ///< of the preset in a dump
    int askedAt = 0;
    bool waiting = false;
};

/// The message that brings a preset to a device: a text of hexadecimal bytes, as CSysexData reads
/// them, in which "%s" stands for the preset. Empty for another text.
MidiBytes presetMessage(const CStr& text, const CPresetBuffer& preset);
/// Whether bytes are one whole system exclusive message.
bool isExclusive(std::span<const unsigned char> bytes);

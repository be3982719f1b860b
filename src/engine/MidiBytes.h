#pragma once

/// Packed channel messages: status in the low byte, first data byte in bits 8 to 15, second in
/// bits 16 to 23.

constexpr int midiNoteOff = 0x80;
constexpr int midiNoteOn = 0x90;
constexpr int midiAftertouch = 0xA0;
constexpr int midiController = 0xB0;
constexpr int midiProgram = 0xC0;
constexpr int midiPressure = 0xD0;
constexpr int midiPitchBend = 0xE0;

constexpr int ccAllNotesOff = 123;

/// Message class, without the channel.
constexpr int statusByte(int data) {
    return data & 0xF0;
}
/// Channel, 0 to 15.
constexpr int chByte(int data) {
    return data & 0x0F;
}
constexpr int asByte1(int data) {
    return (data >> 8) & 0xFF;
}
constexpr int asByte2(int data) {
    return (data >> 16) & 0xFF;
}
/// Packs a message; `status` carries the channel. Only the low eight bits of each count.
constexpr int asData(int status, int b1, int b2) {
    return (status & 0xFF) | ((b1 & 0xFF) << 8) | ((b2 & 0xFF) << 16);
}
/// A note-on with a velocity above 0.
constexpr bool noteOn(int data) {
    return statusByte(data) == midiNoteOn && asByte2(data) > 0;
}
/// A note-off, or a note-on with velocity 0.
constexpr bool noteOff(int data) {
    return statusByte(data) == midiNoteOff ||
           (statusByte(data) == midiNoteOn && asByte2(data) == 0);
}

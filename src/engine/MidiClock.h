#pragma once

#include "base/Atomic.h"
#include "engine/PulseLoop.h"

#include "driver/libaam.h"

#include <cstdint>
#include <span>

class CQV;

// MIDI clock: 24 beats of it to the quarter note, with start, stop and the song position in
// sixteenths. Graph holder, but for the choice of the device.

constexpr int noClockDevice = -2, anyClockDevice = -1;

/// Whether a packed message is a piece of time code.
constexpr bool isTimeCode(int data) {
    return (data & 0xFF) == 0xF1;
}

/// Whether a packed message tells the time: of the clock, or of time code.
constexpr bool isClockMessage(int data) {
    const int status = data & 0xFF;
    return isTimeCode(data) || status == 0xF2 || status == 0xF8 ||
           (status >= 0xFA && status <= 0xFC);
}

/// Tells instruments outside where the song is, each message at its frame.
class MidiClockOut {
public:
    Shared<int> device{noClockDevice}; ///< MIDI output; `anyClockDevice` all that are enabled

    /// A part of a block, of one tempo.
    struct Part {
        bool playing;
        double ticks, ticksPerFrame; ///< where it begins in the song
        int frame, frames;           ///< where it begins in the block
    };
    /// Writes its messages, and answers how many; those that find no room are left out.
    size_t write(const Part& part, std::span<AamEvent> room);

private:
    void put(int frame, int data);
    void play(const Part& part);
    static int frameOf(const Part& part, double ticks); ///< behind the part at the most

    enum class State { still, waiting, running };
    State state = State::still;
    double reached = 0.0;   ///< ticks at the end of the latest part
    double startsAt = 0.0;  ///< ticks, a sixteenth; while it waits
    int64_t beat = 0;       ///< the next one, counted from the start of the song
    std::span<AamEvent> to; ///< of the present part
    size_t count = 0;
};

/// Follows the clock of another machine: it starts, stops and places the song, and steers its
/// tempo, as long as the host is synced (`sync` 1).
class MidiClockIn {
public:
    Shared<int> device{noClockDevice}; ///< MIDI input; `anyClockDevice` all

    explicit MidiClockIn(CQV* root) : host(root) {}
    MidiClockIn(const MidiClockIn&) = delete;
    MidiClockIn& operator=(const MidiClockIn&) = delete;

    bool follows(const AamEvent& event) const {
        return device != noClockDevice && isClockMessage(event.data) && !isTimeCode(event.data) &&
               (device == anyClockDevice || device == event.device);
    }
    /// A message that stands where the coming part of a block begins.
    void take(int data);
    /// So many frames have passed.
    void advance(int frames) { now += frames; }

private:
    void tick();
    void follow();
    void steer() const;

    CQV* host;
    int64_t now = 0;    ///< frames, of the coming part
    bool armed = false; ///< the next beat is the first of the song
    bool running = false;
    PulseLoop pulse;    ///< of the beats
    double ticks = 0.0; ///< of the song at the latest beat
};

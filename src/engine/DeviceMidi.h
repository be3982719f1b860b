#pragma once

#include "base/Atomic.h"
#include "base/Ring.h"
#include "engine/ControlSource.h"
#include "engine/MidiClock.h"
#include "engine/MidiTimeCode.h"

#include "driver/libaam.h"

#include <bitset>
#include <functional>
#include <span>
#include <vector>

class CAAM;

/// What of MIDI outlives a block on its way between the driver and the graph: messages of blocks
/// that did not run, and the notes that sound on instruments outside. The driver's callback, but
/// for `askSilence` and `sounding`.
class DeviceMidi {
public:
    Shared<unsigned> calls{0}; ///< of the driver, whether with the graph or not

    /// Copies of the messages that come in, packed, for who is not in the graph; while `copies` is
    /// set. What there is no room for is lost.
    Ring<int, 1024> copied;
    Shared<bool> copies{false};

    /// The ports of a control surface, -1 none: what comes from there reaches no instrument, but
    /// waits here. What there is no room for is lost.
    Shared<int> controlIn{-1}, controlOut{-1};
    Ring<AamEvent, 1024> control;

    /// Messages of the interface thread that go out with the next block; `frame` is 0.
    Ring<AamEvent, 256> outside;

    ControlReader controls; ///< of what comes to the maps; graph holder
    MidiClockOut clockOut;
    MidiClockIn clockIn;
    TimeCodeOut codeOut;
    TimeCodeIn codeIn;

    /// Takes the system exclusive messages that come, but for time code. Interface thread.
    std::function<void(int device, std::span<const unsigned char> bytes)> onExclusive;
    static constexpr int mostExclusive = 256; ///< of one `idle`; the rest follows

    explicit DeviceMidi(CQV* root)
        : clockIn(root), codeOut(root), codeIn(root), kept(aamMaxEvents) {}

    /// Hands on what has come of system exclusive messages, and tells where the song was placed.
    /// Interface tick.
    void idle(CAAM& bridge);

    /// Keeps the messages of a block that cannot run for the start of the next one that does. Those
    /// that there is no room for are lost.
    void keep(std::span<const AamEvent> in);
    /// What was kept, with the messages of this block behind; valid until the next call, whatever
    /// becomes of `in`.
    std::span<const AamEvent> take(std::span<const AamEvent> in);
    void forgetKept() { numKept = 0; }

    /// Writes what waits in `outside` and answers the count. `room` is the driver's array.
    int sendOutside(std::span<AamEvent> room);

    /// Takes down which notes begin and end with the messages that go out.
    void follow(std::span<const AamEvent> out);
    /// The next block ends every note and pedal outside, whether it has the graph or not. Any
    /// thread.
    void askSilence() { asked = true; }
    /// Whether notes or pedals are held outside. Any thread; settled while no block runs.
    bool sounding() const { return held > 0; }
    /// If silence was asked for, writes the messages that make it and answers their count. `room`
    /// is the driver's array.
    int endNotes(std::span<AamEvent> room);

private:
    static constexpr int devices = 129, channels = 16, keys = 128; ///< device -1 is place 0

    std::span<const AamEvent> withKept(std::span<const AamEvent> in);
    void append(std::span<const AamEvent> in);
    void set(std::size_t at, bool on);

    std::vector<unsigned char> exclusive; ///< a message that comes; interface thread
    std::vector<AamEvent> kept;           ///< room for `aamMaxEvents`
    int numKept = 0;
    /// Of each channel of each device the keys, then the pedal.
    std::bitset<std::size_t(devices) * channels*(keys + 1)> down;
    Shared<int> held{0}; ///< bits of `down`
    Shared<bool> asked{false};
};

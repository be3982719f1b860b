#pragma once

#include "base/Atomic.h"
#include "engine/MidiClock.h"
#include "engine/TimeCode.h"

// MIDI time code: where the song is in hours, minutes, seconds and frames, in quarter frame
// messages while it runs, and in one whole message where it is placed.

/// Tells machines outside where the song is. Graph holder, but for the choices and `takePlace`.
class TimeCodeOut {
public:
    Shared<int> device{noClockDevice};      ///< MIDI output; `anyClockDevice` all that are enabled
    Shared<int> rate{int(CodeRate::fps25)}; ///< CodeRate
    Shared<int> startHour{0};               ///< that the song begins at

    explicit TimeCodeOut(CQV* root) : host(root) {}
    TimeCodeOut(const TimeCodeOut&) = delete;
    TimeCodeOut& operator=(const TimeCodeOut&) = delete;

    /// Writes the messages of a part of a block, each at its frame, and answers how many; those
    /// that find no room are left out.
    size_t write(const MidiClockOut::Part& part, std::span<AamEvent> room);
    /// Where the song was placed since the last call: false when it was not. Interface thread.
    bool takePlace(TimeCode& code);

private:
    double codeSeconds(double ticks) const;
    double quartersPerSecond() const;
    void place(double ticks);

    CQV* host;
    bool running = false;
    double reached = -1.0;           ///< ticks at the end of the latest part
    int64_t quarter = 0;             ///< the next one, counted from hour 0
    Shared<int64_t> placed{nowhere}; ///< frame that the song was placed at
    static constexpr int64_t nowhere = -1;
};

/// Follows the time code of another machine: it places, starts and stops the song, and keeps it
/// at the other's speed, as long as the host is synced (`sync` 1). The song begins with the eighth
/// message, which makes the first moment known, and ends one frame of the code after the last.
class TimeCodeIn {
public:
    Shared<int> device{noClockDevice}; ///< MIDI input; `anyClockDevice` all
    Shared<int> startHour{0};          ///< that the song begins at

    explicit TimeCodeIn(CQV* root) : host(root) {}
    TimeCodeIn(const TimeCodeIn&) = delete;
    TimeCodeIn& operator=(const TimeCodeIn&) = delete;

    bool follows(const AamEvent& event) const {
        return device != noClockDevice && isTimeCode(event.data) &&
               (device == anyClockDevice || device == event.device);
    }

    // Graph holder.
    void take(int data); ///< a message that stands where the coming part of a block begins
    /// Most frames of the coming part: the song stops where the code has been gone for a while.
    int most(int frames) const;
    void advance(int frames); ///< so many frames have passed
    /// What the song's tempo is multiplied by, so that it keeps up: 1 as long as nothing is
    /// followed.
    double speed() const { return running ? double(ratio) : 1.0; }

    /// A whole moment has come from a device: where the song is while it stands. Interface thread.
    void place(int from, const TimeCode& code);

private:
    void step(int piece);
    void begin();
    void steer();
    void lose();
    int64_t end() const;
    double codeSeconds() const; ///< of the latest message, from the start of the song
    double quartersPerSecond() const { return 4.0 * framesPerSecond(rate); }
    double startSeconds() const { return 3600.0 * startHour; }

    CQV* host;
    int64_t now = 0; ///< frames, of the coming part
    std::array<int, 8> pieces{};
    int inOrder = 0;     ///< pieces that came one behind the other, up to 8
    int latest = -1;     ///< piece
    int64_t heard = -1;  ///< when it came; -1 when the code is gone
    bool known = false;  ///< `quarter` is
    int64_t quarter = 0; ///< the latest one, counted from hour 0
    CodeRate rate = CodeRate::fps25;
    Shared<bool> running{false}; ///< the song was started
    double ratio = 1.0;
    PulseLoop pulse;
};

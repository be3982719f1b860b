#pragma once

#include "base/CList.h"
#include "base/CStr.h"

#include <cstdint>
#include <vector>

class CTempoPart;

/// Ticks and frames. A song has 960 ticks to the quarter note.

/// Ticks per second at one beat per minute.
constexpr double ticksPerSecondPerBpm = 16.0;

/// The grid line at or toward zero from `value`; with `round` the nearest one, halves away from
/// zero. A grid below 1 gives `value`.
int snapped(int grid, int value, bool round);

/// Pixels and ticks; `zoom` is pixels per quarter note.
double ticksToX(double ticks, double zoom);
double XToTicks(double x, double zoom);
/// Quarter counted from 1, and the ticks inside it: "001:000".
CStr ticksToStr(int ticks);

/// A stretch of time whose tempo is linear in ticks, from where it is `bpm` beats per minute on.
struct TempoStretch {
    double bpm = 120.0;
    double slope = 0.0; ///< beats per minute, per tick

    double bpmAt(double tick) const { return bpm + slope * tick; }
    /// Both count from the beginning. Of a slope they are the integral of 60 / (960 bpm) seconds
    /// over the ticks, rate / (16 slope) * ln(bpm at the end / bpm), and its inverse.
    double frames(double ticks, double rate) const;
    double ticks(double frames, double rate) const;
};

/// The tempo points of a program side by side, with the time that has passed at each. From a point
/// on its tempo holds until the next one, or goes to that of the next one in a line. `before`, in
/// beats per minute, holds until the first. Rates are frames per second; below 1 all gives 0.
/// For one thread at a time.
class TempoMap {
public:
    struct Point {
        double tick;
        double seconds;  ///< since the first point
        TempoStretch on; ///< from here on
        CTempoPart* part;
    };
    using Room = std::vector<Point>;

    /// Makes it anew when the list, or the count of what else has changed, is another one. There
    /// has to be room for all, or memory is taken.
    void refresh(const ListOf<CTempoPart>& tempos, unsigned changes);
    static Room roomFor(size_t points); ///< empty
    /// Takes the larger one of its own room and `room`, which is given the other.
    void takeRoom(Room& room);

    double bpmAt(float before, double tick) const;
    /// Frames that `ticks`, above 0, take from tick `from` on.
    double ticksToFrames(float before, double from, double ticks, int rate) const;
    /// Ticks that `frames` take, as a whole number: every stretch is cut to whole frames and ticks.
    double framesToTicks(float before, double from, double frames, int rate) const;
    /// A stride of playback from a tick on, in which the tempo is constant: that of the tick, or of
    /// a line the mean, so that it ends where the line does.
    struct Stride {
        double bpm;
        int frames; ///< 1 to `most`: to the next point at the latest
    };
    Stride stride(float before, double from, int most, double rate) const;

    // Points, null when there is none.
    CTempoPart* lastAt(double tick) const;    ///< at or before the tick
    CTempoPart* nextAfter(double tick) const; ///< after it
    CTempoPart* nextFrom(double tick) const;  ///< at or after it

private:
    size_t begun(double tick) const;  ///< how many stand at or before it
    size_t passed(double tick) const; ///< how many stand before it
    TempoStretch stretch(float before, size_t begunPoints, double tick) const;

    Room points;
    unsigned version = 0, knownChanges = 0;
    bool made = false;
};

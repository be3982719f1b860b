#pragma once

#include <vector>

/// Quarter notes and seconds of a song whose tempo changes.
class BeatClock {
public:
    struct Point {
        double beat, bpm;
        bool ramp; ///< goes in a line to the next one
    };

    /// `bpm` holds before the first of the points, which may come in any order. Tempos are kept
    /// within 1 to 9999.
    explicit BeatClock(double bpm = 120.0, std::vector<Point> points = {});

    double toSeconds(double beat) const; ///< from beat 0 on
    double toBeats(double seconds) const;

private:
    struct Stretch {
        double beat, seconds; ///< where it begins
        double bpm, slope;    ///< beats per minute there, and how many more of them each beat
        double secondsAt(double beats) const;
        double beatsAt(double past) const;
    };
    std::vector<Stretch> stretches; ///< the first one also holds before it
};

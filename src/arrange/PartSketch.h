#pragma once

#include <map>
#include <memory>
#include <vector>

class CPart;
class TakeNotes;

/// The notes or hits of a part in little: what its picture is drawn from.
struct PartSketch {
    struct Mark {
        int tick;   ///< from the list's start
        int length; ///< 0 for a hit
        int row;    ///< key or sound
        bool muted;
    };
    std::vector<Mark> marks;     ///< in order of time
    int lowest = 0, highest = 0; ///< rows, among the marks
    int longest = 0;             ///< ticks
};

/// Sketches of the contents that are shown, made at first use. Ghosts share that of their master.
class PartSketches {
public:
    const PartSketch& of(CPart* part);
    const PartSketch& of(const TakeNotes& take);
    void clear() { made.clear(); } ///< contents may be others

private:
    std::map<const void*, std::unique_ptr<const PartSketch>> made; ///< by contents and takes
};

#pragma once

#include <vector>

// Music as text, in sixteenths.

namespace presets {

struct LineNote {
    int step, length; ///< sixteenths from the start of the line
    int key, velocity;
};

/// Reads words apart by spaces, each of which lasts as many sixteenths as stand behind its colon,
/// one without: "A2:3" is a note, "C4+E4+G4:8" a chord, "-:4" a rest, "Bb3" and "F#3" have signs.
/// "!" behind a word is an accent, "?" a soft one. "|" counts nothing. C4 is key 60.
std::vector<LineNote> parseLine(const char* text);

/// How many sixteenths a line lasts.
int lengthOf(const char* text);

/// How hard a character of a drum line is hit, 1 to 127: 'o' softly, 'x', 'X' with an accent; 0
/// for all others.
int hitVelocity(char c);

} // namespace presets

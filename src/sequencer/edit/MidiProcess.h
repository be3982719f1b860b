#pragma once

#include "base/CStr.h"

class CSeq;

/// What the menus of MIDI and drum parts do to the events of the selected parts.
enum MidiProcess : int {
    midiQuantizeLength = 0, ///< notes last whole steps of the grid, at least one
    midiLegato = 1,         ///< notes last until the next later one, the last until the part ends
    midiSlice = 2,          ///< a note becomes notes of a grid step each, as many as it takes
    midiFixedLength = 3,    ///< notes last a grid step
    midiReverse = 4,        ///< events are mirrored in the part, notes and hits with their length
    midiDeleteDoubles = 5,  ///< of equal keys at a tick the last remains
    midiHalfTempo = 6,      ///< ticks and lengths double
    midiDoubleTempo = 7,    ///< ticks and lengths halve
    midiRandom = 8,         ///< events exchange their places
};
constexpr int midiProcessCount = 9;
/// As menus and the history show it; empty for other numbers.
const char* midiProcessText(int mode);

/// One step: the events of the selected MIDI and drum parts of the current program, of a part with
/// selected events only these, once for each master. What changes lengths alone leaves hits as they
/// are. Interface thread. Why nothing was done, empty if it was or there is nothing to do.
CStr processMIDI(CSeq* seq, int mode);

/// So many pieces are made of a part at most.
constexpr int maxPieces = 65536;
extern const char* const tooManyPieces; ///< a message

#pragma once

#include "sequencer/edit/SampleEdits.h"

#include <vector>

/// Edits of the stretch markers of one clip that no lock protects. Each is one step; where nothing
/// changes there is none. What shows the clip's content shows the change too. Interface thread.

/// "Stretch markers": markers come at frames of the sample, where they are heard now, as far as
/// they have room; a clip of another mode comes to be stretched to the tempo, and lasts as long as
/// it does. False if none came.
bool addPins(CSeq* seq, const ClipPlace& place, const std::vector<int>& frames);
/// The marker's frame comes to be heard `share` of the clip's ticks from its start, while that
/// plays forward, but not beyond its neighbours.
bool movePin(CSeq* seq, const ClipPlace& place, int pin, double share);
/// What lies behind a marker, up to the next, is tuned by so many semitones besides.
bool tunePin(CSeq* seq, const ClipPlace& place, int pin, float semitones);
bool deletePin(CSeq* seq, const ClipPlace& place, int pin);
bool deletePins(CSeq* seq, const ClipPlace& place);
/// Every marker moves to the line of a grid of `step` ticks that is nearest, as far as its
/// neighbours leave room.
bool quantizePins(CSeq* seq, const ClipPlace& place, int step);

/// The share that `movePin` would make of one.
double limitPinShare(const ClipPlace& place, int pin, double share);

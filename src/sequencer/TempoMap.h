#pragma once

#include "base/CStr.h"

class CList;
class CTempoPart;

/// Ticks and frames. A song has 960 ticks to the quarter note; tempo steps at the points of a list
/// of CTempoPart and is constant between them.

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

/// Ticks that `frames` take from tick `pos` on, as a whole number: every stretch is cut to whole
/// frames and ticks. `tempoBefore` (beats per minute) holds until the first point. 0 for rates
/// below 1.
double tempoFramesToTicks(const CList& tempos, float tempoBefore, double pos, double frames,
                          int rate);
/// Frames that `ticks` take from tick `pos` on.
double tempoTicksToFrames(const CList& tempos, float tempoBefore, int pos, int ticks, int rate);
/// The last point at or before `pos`, null when there is none.
CTempoPart* lastTempoAt(const CList& tempos, int pos);
/// The first point after `pos`, null when there is none.
CTempoPart* nextTempoAfter(const CList& tempos, int pos);
/// Ticks from the whole part of `pos` to the first point at or after it, -1 when there is none.
int ticksToNextTempo(const CList& tempos, double pos);

#pragma once

#include "engine/StoredValue.h"

class CComp;
class CMixProg;
class COutputChannel;
class CQV;
class CSend;

// The values of strips, sends, components and the host that a user sets through `CQV::values`.
// Numbers are in the unit of the field, so that a step brings back exactly what was there.

StoredValue faderOf(COutputChannel* ch);    ///< 0 to 1, and whether the mixer shows the fader
StoredValue panOf(COutputChannel* ch);      ///< -1 to 1
StoredValue muteOf(COutputChannel* ch);     ///< 0 or 1
StoredValue soloOf(COutputChannel* ch);     ///< 0 or 1
StoredValue soloSafeOf(COutputChannel* ch); ///< 0 or 1
StoredValue trimOf(COutputChannel* ch);     ///< -1 to 1, a power of 4

// Bands 0 to 3 of the equaliser.
StoredValue eqPowerOf(COutputChannel* ch, int band);     ///< 0 or 1
StoredValue eqGainOf(COutputChannel* ch, int band);      ///< dB
StoredValue eqFrequencyOf(COutputChannel* ch, int band); ///< Hz
StoredValue eqQOf(COutputChannel* ch, int band);
StoredValue eqTypeOf(COutputChannel* ch, int band); ///< EqType

StoredValue levelOf(CSend* send); ///< 0 to 1

StoredValue muteOfCable(CObject* cable); ///< 0 or 1, of either kind

/// Any parameter of a component, strip or send by its number: of a component 0 to 1 as `param`
/// tells it, of a strip or send the same value as above. For the user's 0 to 1 there is
/// `ValueDoor::setParam`.
StoredValue parameterOf(CObject* target, int param);

/// Index of the program that a component plays, of those that it has.
StoredValue programOfComp(CComp* comp);

StoredValue sectionsOf(CMixProg* prog); ///< the bit mask of what the mixer shows

// Of a project without a song.
StoredValue tempoOf(CQV* host); ///< beats per minute
StoredValue loopOf(CQV* host);  ///< 0 or 1

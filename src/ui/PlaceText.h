#pragma once

#include "base/CStr.h"

class CSeq;

// How places and lengths of the song are told. Interface thread.

/// A place as "bar 5.2.120", and a way as "+1.0.0" in bars, beats and ticks.
CStr placeText(CSeq* seq, int tick);
CStr deltaText(CSeq* seq, int ticks);
/// A length as "4 bars".
CStr lengthText(CSeq* seq, int ticks);

#pragma once

#include "engine/KeyNames.h"

class CSeq;

// How places and lengths of the song are told. Interface thread.

/// A place as "bar 5.2.120", a length as "1.0.0" in bars, beats and ticks, and a way as "+1.0.0".
CStr placeText(CSeq* seq, int tick);
CStr spanText(CSeq* seq, int ticks);
CStr deltaText(CSeq* seq, int ticks);
/// The ticks of a length that is written so, from its bars on as far as it goes; 0 for what is
/// none, and beyond a song.
int spanOf(CSeq* seq, const CStr& text);
/// Where something is that stood at `from`, and how far it has come.
CStr dragText(CSeq* seq, int from, int delta);
/// A length as "4 bars".
CStr lengthText(CSeq* seq, int ticks);

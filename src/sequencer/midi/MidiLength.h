#pragma once

class CStr;

/// How long what a standard MIDI file brings will be: the ticks to the end of its longest track of
/// notes, rounded up to a quarter, as the import makes its parts. 0 for what is none, or has none.
/// Any thread but the audio thread.
int midiLength(const CStr& path);

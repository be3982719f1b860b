#pragma once

class CQV;
class CSeq;
class CStr;

// What the builders of songs put into the current program of a sequencer. Ticks from the start of
// the song; interface thread, with the graph held or nothing running; no undo.

void addTempoPoint(CSeq* seq, int tick, float bpm, bool ramp = false);
void addSignature(CSeq* seq, int tick, int beats, int unit);
void addSongMarker(CSeq* seq, int from, int to, const CStr& name);
/// Puts everything in order, sets the locators around the song and shows all of it; the project
/// counts as saved.
void finishSong(CSeq* seq, int end, float bpm);

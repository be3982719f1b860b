#pragma once

class CQV;
class CSeq;

/// New projects. Each fills the current program of a sequencer whose host has its device components
/// already; the tracks are not undoable. Interface thread, with the graph held or nothing running.
void createEmptyProject(CSeq* seq);
/// One instrument track with a part, played by a synthesizer.
void createDefaultProject(CSeq* seq);
/// An instrument and an audio track.
void createSimpleProject(CSeq* seq);
/// Eight instrument tracks for instruments outside: on the channels 1 to 8 of the MIDI output.
void createMIDISequencerProject(CSeq* seq);
/// Eight audio tracks.
void createPortaStudioProject(CSeq* seq);
/// A drum and an instrument track, the latter played by a synthesizer.
void createDrumAndBassProject(CSeq* seq);
/// A drum and an audio track.
void createGuitaristProject(CSeq* seq);

/// What a new project begins with, with or without a song: the loop is off.
void startUnlooped(CQV* host);

/// What a song is given to the user with: the loop is off, and the locators lie around all of it,
/// or around the first bar of an empty one.
void frameSong(CSeq* seq);

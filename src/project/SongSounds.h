#pragma once

#include "sequencer/midi/MidiImport.h"

class CQV;
class CSampler;
class CSeq;
class CSeqProg;
class CSongTrack;
class CStr;
class CTrack;
class CUndo;

/// How instruments come to the tracks of a song. Interface thread; each records in the step what it
/// made, or without one takes the graph for the moment in which it links that.

/// A new sequencer, linked to the host, with its first program.
CSeq* addSequencer(CQV* host);

/// A synthesizer with the factory programs, `program` (taken modulo their count) current, fed by
/// the track's output and cabled to the first audio out. Owned by the host.
CSampler* addSynthesizer(CSeq* seq, CTrack* track, int program, CUndo* undo = nullptr);

/// The same with the drum program alone.
CSampler* addSynthDrums(CSeq* seq, CTrack* track, CUndo* undo = nullptr);

/// Sets fader (0 to 1) and pan (-1 to 1) of an instrument at once, without a ramp.
void setStrip(CSampler* instrument, float fader, float pan);

enum class MidiSongResult {
    good,
    unreadable,
    notMidi,
    broken,    ///< a bad status byte in it
    truncated, ///< it ends too early
    silent,    ///< no track has notes
};

/// Imports a MIDI file into a song that has a program, from tick `tick` on, as one step of the
/// history. A track of several channels becomes one for each, and each whose notes would reach
/// nothing comes with an instrument, as by `giveSounds`. A song that held nothing is framed as a
/// new one is. What was readable of a broken file stays. `factory` of 0 or more: a factory program
/// that every track plays whatever it asks for, with its effects.
MidiSongResult openMidiSong(CSeq* seq, const CStr& path, int factory = -1);

/// The same as part of a step, without the instruments.
MidiSongResult addMidiFile(CSeq* seq, const CStr& path, CSongTrack* onto, int tick,
                           const MidiWay& way, CUndo* step);
/// Gives the tracks that a step brings notes to, and whose notes would reach nothing, instruments:
/// the factory program of the first program change, else the first; the drum program on channel 10;
/// without send effects; or all of them the factory program `factory` as it is. False when the step
/// brings no notes.
bool giveSounds(CSeq* seq, CUndo* step, int factory = -1);
/// Whether anything stands in the parts of a program.
bool hasContent(CSeqProg* prog);

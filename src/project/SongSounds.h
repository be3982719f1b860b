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
class SongSends;

/// How instruments come to the tracks of a song. Interface thread; each records in the step what it
/// made, or without one takes the graph for the moment in which it links that.

/// A new sequencer, linked to the host, with its first program.
CSeq* addSequencer(CQV* host);

/// A synthesizer with one factory program, `program` modulo their count, fed by the track's output
/// and cabled to the first audio out. Owned by the host.
CSampler* addSynthesizer(CSeq* seq, CTrack* track, int program, CUndo* undo = nullptr);

/// The same with the built-in kit, on the keys of General MIDI.
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
/// new one is. What was readable of a broken file stays.
MidiSongResult openMidiSong(CSeq* seq, const CStr& path, int factory = -1);
MidiSongResult openMidiSong(CSeq* seq, const CStr& path, int factory, const CStr& setFolder);

/// The same as part of a step, without the instruments.
MidiSongResult addMidiFile(CSeq* seq, const CStr& path, CSongTrack* onto, int tick,
                           const MidiWay& way, CUndo* step);
/// Gives the tracks that a step brings notes to, and whose notes would reach nothing, instruments:
/// the kit on channel 10, else the program of the General MIDI set in `setFolder` that is asked for
/// first, the first one where none is; without that set the factory program of the number. Volume,
/// pan, expression and sends of the file go to strips, lanes and two buses that all share. With
/// `factory` of 0 or more all play that factory program, whatever they ask for, with its effects.
/// `sends` is to settle when the step is done. False when the step brings no notes.
bool giveSounds(CSeq* seq, CUndo* step, SongSends& sends);
bool giveSounds(CSeq* seq, CUndo* step, SongSends& sends, int factory, const CStr& setFolder);
/// Whether anything stands in the parts of a program.
bool hasContent(CSeqProg* prog);

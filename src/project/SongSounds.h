#pragma once

class CQV;
class CSampler;
class CSeq;
class CStr;
class CTrack;

/// How instruments come to the tracks of a song. Interface thread; each takes the graph for the
/// moment in which it links what it made.

/// A new sequencer, linked to the host, with its first program.
CSeq* addSequencer(CQV* host);

/// A synthesizer with the factory programs, `program` (taken modulo their count) current, fed by
/// the track's output and cabled to the first audio out. Owned by the host.
CSampler* addSynthesizer(CSeq* seq, CTrack* track, int program);

/// The same with the drum program alone.
CSampler* addSynthDrums(CSeq* seq, CTrack* track);

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

/// Imports a MIDI file into the sequencer and gives each track with notes an instrument: the
/// factory program of its first program change, else the first; the drum program on channel 10;
/// without send effects.
/// What was readable of a broken file stays.
MidiSongResult openMidiSong(CSeq* seq, const CStr& path);

#pragma once

class CSeq;
class CSongTrack;
class CStr;
class CUndo;

enum class MidiImport {
    good,
    unreadable, ///< the file cannot be opened
    notMidi,    ///< another kind of file; nothing was added
    broken,     ///< a bad status byte; what came before it was added
    truncated,  ///< it ends too early; what there was was added
};

/// What becomes of the events of a track of the file.
enum class MidiTracks {
    asTold,    ///< they stay on one track, whatever their channels
    byChannel, ///< they come to a track for each channel, unless the file tells the track its own
};

/// How a file comes into the song.
struct MidiWay {
    MidiTracks tracks = MidiTracks::asTold;
    bool ontoParts = false; ///< the target takes what comes even if it has parts
    bool withPoints = true; ///< tempos and signatures come along
    int index = -1;         ///< of the first new track, -1 behind all others
};

/// Imports a standard MIDI file into the current program, at tick `position` (0 or more) of the
/// timeline. The first track with content goes to `target`, when it is given and has no parts;
/// others get new tracks, as many as the song has room for: what lies beyond joins the part of the
/// last one. Of several tracks, and by channel always, each takes the channel of its events, or
/// none when they are on several and nothing tells it. Everything is recorded in `undo`, which has
/// the effect `song`; the caller ends the step.
///
/// Shows "Not a MIDI file " with the id that was found, or "Invalid file format (3)".
MidiImport openMIDIFile(CSeq* seq, CSongTrack* target, const CStr& name, CUndo* undo, int position,
                        const MidiWay& way = {});

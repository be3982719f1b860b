#pragma once

class CSeq;
class CStr;

enum class MidiExport {
    good,
    notCreated, ///< the file cannot be made
    noRoom,     ///< not all of it could be written; nothing of it is left
};

enum class MidiRange {
    song,
    loop, ///< between the locators, where they are in order; else the song
};

/// Writes the current program as a standard MIDI file: a track of tempos, one of time signatures,
/// and one for each instrument and drum track that is not muted, nor silenced by the solo of
/// others. A range is written from tick 0 on. Drums become keys from 36 on. Tempos are cut to whole
/// beats per minute, but for those of a line, which becomes a step per sixteenth.
///
/// A file that is there already is replaced once the new one is complete. Interface thread.
MidiExport exportMIDIFile(CSeq* seq, const CStr& path, MidiRange range = MidiRange::song);

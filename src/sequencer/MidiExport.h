#pragma once

class CSeq;
class CStr;

enum class MidiExport {
    good,
    notCreated, ///< the file cannot be made
    noRoom,     ///< not all of it could be written; nothing of it is left
};

/// Writes the current program as a standard MIDI file: a track of tempos, one of time signatures,
/// and one for each instrument and drum track that is not muted, nor silenced by the solo of
/// others. While the loop is on and its locators are in order only what lies between them, from
/// tick 0 on. Drums become keys from 36 on. Tempos are cut to whole beats per minute.
///
/// A file that is there already is replaced once the new one is complete. Interface thread.
MidiExport exportMIDIFile(CSeq* seq, const CStr& path);

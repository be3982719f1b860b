#pragma once

#include <vector>

class CPart;
class CSeq;
struct CPartSummary;

/// Entries of the audio menu beside those of `processAudio`.
enum AudioEntry : int {
    entrySeparator = -1,
    entryOpenWith = 100,  ///< the text goes on with the name of the program that was used last
    entryOpenOther = 101, ///< asks for a program
    entryCrossfade = 102,
};

/// A row of a menu that processes the selected parts.
struct ProcessEntry {
    const char* text; ///< empty for a separator
    int mode;         ///< of `processAudio` or `processMIDI`, or an AudioEntry
};

// What the menus have to offer for a selection, in their order; empty if that is nothing.

/// With an audio part. `editorKnown`: the program that was used last is still there.
std::vector<ProcessEntry> audioProcessMenu(const CPartSummary& selection, bool editorKnown);
/// With a MIDI part and no audio part.
std::vector<ProcessEntry> midiProcessMenu(const CPartSummary& selection);
/// With drum parts alone: what does something to hits.
std::vector<ProcessEntry> drumProcessMenu(const CPartSummary& selection);
/// The audio part that is selected, whatever else is; null for none or several.
CPart* onlyAudioPart(CSeq* seq);

#pragma once

#include "base/CList.h"

class CPart;
class CSeq;
class CSongTrack;
class CTrack;
class ForgetSet;

/// What the selection holds; menus are built from it.
struct CPartSummary {
    int parts = 0;      ///< on selected tracks
    int selected = 0;   ///< parts
    int audio = 0;      ///< selected audio parts
    int multiclip = 0;  ///< of these
    int midi = 0;       ///< selected MIDI parts
    int drum = 0;       ///< selected drum parts
    int ghosts = 0;     ///< selected ghosts
    int monoEvents = 0; ///< events with a mono sample, among selected audio parts
    int stereoEvents = 0;
    int selStart = 0, selEnd = 0; ///< ticks selected in the part that a view edits; set by the view
};

/// The tracks and parts of a song that are selected. Parts know it by themselves, tracks too; the
/// tracks stand here as well, in the order of their selection. Interface thread.
class SongSelection {
public:
    ListOf<CSongTrack> tracks; ///< not owned

    explicit SongSelection(CSeq* of) : seq(of) {}
    SongSelection(const SongSelection&) = delete;
    SongSelection& operator=(const SongSelection&) = delete;

    void selectTrack(CSongTrack* songTrack, bool on);
    void unselectTracks();
    void unselectParts();
    void selectAll(); ///< of the current program
    /// The only selected part of the selected tracks, and its track, when that is open; else null.
    CPart* editPart(CTrack*& track);
    /// The first selected part of a class (PartType, 0 any) in the current program.
    CPart* firstPart(int type, CSongTrack** songTrack) const;
    void summarize(CPartSummary& summary);
    /// Drops tracks that no program has any more.
    void purge();
    void forget(const ForgetSet& gone);

private:
    CSeq* seq;
    unsigned purgedLists = 0; ///< versions of the lists that `purge` has been through
};

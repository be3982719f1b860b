#pragma once

#include "base/CStr.h"
#include "sequencer/edit/PointClipboard.h"

class CComp;
class CQV;
class CSeq;
class CTrack;
class CSeqProg;
class CSongTrack;
class SongRange;
class Workspace;
struct StoredValue;
struct TimeRange;

/// What the actions on the song and its parts do that need no view of them. Without a song they are
/// not ready, nor are edits of its parts while a take is recorded. Interface thread.
class SongCommands {
public:
    /// Binds them; outlives the table's use.
    SongCommands(Workspace& workspace, SongRange& range);

private:
    void bindAll();
    void bindParts();
    void bindClipboard();
    void copy(bool cuts);

    CSeq* seq() const;
    CSeqProg* prog() const; ///< null without a song

    void leftLocator();
    void rightLocator();
    void nextBeat();
    void priorBeat();
    void priorProg();
    void nextProg();
    void playSelection();
    void loopSelection();
    void exportRange();
    void mute();
    void solo();
    void addInstrument();
    void addAudio();
    void addDrums();
    void addFolder();
    void openComp();
    void addMarker();
    void deleteMarker();
    void priorMarker();
    void nextMarker();
    void addTimesig();
    void snap();
    void snapPrior();
    void snapNext();

    void addTrack(int kind);
    void toggle(StoredValue (*valueOf)(CSongTrack*));
    bool recording() const;
    bool shown() const; ///< there is a song, and its window is open
    void flip(const StoredValue& value);
    void editRange(CStr (*edit)(CSeq*, const TimeRange&));
    bool locateSelection();
    void stepProg(int by);
    void stepMarker(int by);
    int beatTicks(int tick) const;
    CTrack* shownTrack() const; ///< the first that is selected; null without one
    CComp* shownComp()
        const; ///< what the first selected track plays through, itself for a drum track; or null

    Workspace& workspace;
    SongRange& range;
    CQV* qv;
    PointClipboard points; ///< empty while parts were copied last
};

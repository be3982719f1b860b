#pragma once

#include "base/CStr.h"
#include "sequencer/song/Events.h"
#include "sequencer/take/Takes.h"

#include <cstdint>
#include <memory>
#include <vector>

class CObject;
class CPart;
class CQV;
class CSeq;
class CSeqProg;
class CSubTrack;
class CTrack;
class CUndo;
class ForgetSet;
struct RecEvent;
struct RecFile;

/// What a key, a note-on, plays on a drum track; owned by the caller.
CDrumEvent* drumHit(int msg);
/// Frames by which what a track records comes later than what was heard with it.
int64_t recordLatency(const CTrack* track);

/// The interface's side of a take on one track: makes parts, notes and points of automation of what
/// was played, and records all of it in the take's step. Interface thread.
class TrackTake {
public:
    explicit TrackTake(CTrack* owner) : track(owner) {}
    ~TrackTake() { forget(); }
    TrackTake(const TrackTake&) = delete;
    TrackTake& operator=(const TrackTake&) = delete;

    /// The track was armed.
    void begin();
    bool running() const { return active; }
    /// Takes over what came since. Without a step it waits, as during the count-in.
    void idle(CUndo* step);
    /// The take is over and `file`, null without audio, is nobody else's: takes over the rest.
    void finish(CUndo* step, RecFile* file);

    /// A parameter that this track plays was moved.
    void addParam(CObject* object, int param, float value);
    /// That object is about to be freed.
    void purge(const ForgetSet& gone);
    /// See `CTrack::recordAutomation`.
    void recordAutomation(int tick, CSubTrack* lane, float value, CUndo* step);
    /// What is recorded from now on replaces automation from a song tick on.
    void beginPass(int number, double from);

private:
    /// A moved parameter, with where the song was.
    struct Param {
        CObject* object;
        int param;
        float value;
        double tick;
        int pass;     ///< count of loop wraps
        double punch; ///< where the pass began
    };
    /// A note that waits for its end.
    struct Pending {
        CMIDIEvent* event; ///< owned
        int tick;          ///< of the part
        double heard;      ///< song tick at which it was played
        bool moved;        ///< counts as played at the beginning of the next pass
        int pass;          ///< of the loop
    };
    /// A copy of what has come into the part.
    struct Played {
        int pass;
        int tick;          ///< of the part
        CBaseEvent* event; ///< owned
    };
    /// Recording of one lane within one pass.
    struct LanePass {
        CSubTrack* lane;
        int lastTick;
    };

    CTrack* track;
    bool active = false;
    bool swapped = false; ///< the step has what the part held before
    int pass = 0;
    double punch = 0.0; ///< where the running pass began
    std::vector<Param> params;
    std::vector<Pending> pendingNotes;
    std::vector<Played> played;              ///< while passes become takes
    std::shared_ptr<const TakeNotes> former; ///< what the part had, from its own tick 0; or null
    std::vector<LanePass> lanes;             ///< recorded in the running pass

    CSeq* seq() const;
    CSeqProg* prog() const;
    void forget();
    void moveToSound(Param& p) const;
    void link(CPart* part, CUndo* step);
    void keepContent(CUndo* step);
    int tickOf(double songTick) const;

    void attachNotes(CUndo* step);
    void addEvents(CUndo* step);
    void addMessage(const RecEvent& e);
    void addDrum(const RecEvent& e);
    void endNote(const RecEvent& e);
    void endHeldNotes();
    void addToPart(int tick, CBaseEvent* event, int ofPass);
    bool keepsPasses() const;
    void placeNoteTakes();
    Takes::Take passTake(int index, int from, int to) const;
    void showRow(int note);

    void attachAudio(CUndo* step, RecFile* file);
    int64_t wantedFrames() const;
    std::unique_ptr<Takes> loopTakes(int first, int last) const;
    void placeTakes(std::unique_ptr<Takes> takes);
    void growAudio(int frames);
    void closeAudio(CUndo* step, RecFile* file);

    void addParams(CUndo* step);
    CSubTrack* laneOf(const Param& p, CUndo* step);
};

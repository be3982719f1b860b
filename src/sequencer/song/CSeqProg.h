#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "engine/CProgram.h"
#include "sequencer/song/CSongTrack.h"
#include "sequencer/song/TempoMap.h"

#include <cstdint>

class CMarkerPart;
class CPart;
class CSeq;
class CSongTrack;
class CTempoPart;
class CTimesigPart;
class CTrack;
class CUndo;

/// The markers visited since the start of play. The audio thread writes, the interface reads; a
/// pointer counts only while it still stands in the program's `markers`.
class MarkerSession {
public:
    static constexpr int capacity = 4096;

    void clear() { used.storeRelease(0); }
    /// Dropped when full.
    void add(CMarkerPart* marker);
    int count() const { return used.loadAcquire(); }
    CMarkerPart* at(int i) const { return visits[i]; }
    /// Takes out a marker that leaves the program.
    void purge(const CObject* marker);

private:
    Shared<CMarkerPart*> visits[capacity];
    Shared<int> used{0};
};

/// One arrangement of the song: parts per track, markers, signatures, tempos, and a transport of
/// its own.
class CSeqProg : public CProgram {
public:
    CSeq* seq;                     ///< the owner
    ListOf<CSongTrack> tracks;     ///< owned, in the order of `CSeq::tracks`
    ListOf<CMarkerPart> markers;   ///< owned
    ListOf<CTimesigPart> timesigs; ///< owned, in order of position
    ListOf<CTempoPart> tempos;     ///< owned, in order of position
    Shared<double> pos{0.0};       ///< ticks
    Shared<double> punchPos{0.0};  ///< ticks, where the present pass of a loop recording began
    Shared<double> prevPos{0.0};   ///< `pos` before the last block
    Shared<int64_t> samplePos{0};  ///< frames
    Stored<unsigned char> loop{1};
    Stored<int> leftLocator{0}, rightLocator{3840}; ///< ticks
    Shared<unsigned char> anySolo{0};
    Shared<unsigned char> playing{0};
    Shared<unsigned char> stopRequest{0}; ///< served by the next `process`
    Shared<bool> looping{false};          ///< `isLooping` as taken for this block
    Shared<int> loopCount{0};             ///< wraps since the start of play
    MarkerSession session;
    Shared<CMarkerPart*> activeMarker{nullptr};  ///< plays next
    Shared<CMarkerPart*> playingMarker{nullptr}; ///< plays now
    PlayRequests requests;                       ///< `requestSetup`: the position jumped

    explicit CSeqProg(CSeq* owner);
    ~CSeqProg() override;
    CSeqProg(const CSeqProg&) = delete;
    CSeqProg& operator=(const CSeqProg&) = delete;

    // Transport (SeqTransport.cpp). Graph holder.
    void play();
    void process(int frames, int offset);
    /// Flushes every song track at a frame of the block.
    void flush(int frame);
    bool isLooping();
    void updateSolo();
    /// A message arrived at a track; `tick` is the song position that it belongs to, in the pass of
    /// a loop that runs or in one before, `record` whether a take runs.
    void midiReceived(CSongTrack* songTrack, double tick, int msg, void* source, bool record,
                      int passesAgo = 0);

    // Marker arranger. A call of the interface thread waits for the next block while blocks come.
    /// Chooses the section that plays next; the first one also jumps there.
    void setMarker(CMarkerPart* marker);
    /// The same for the graph holder.
    void setMarkerNow(CMarkerPart* marker);
    /// One entry along the list, stopping at its ends; the first one when none is active.
    void priorMarker();
    void nextMarker();
    /// The marker that a white key stands for, note 36 the first; null for others.
    CMarkerPart* noteToMarker(int note);
    /// Forgets a marker that is about to leave. Graph holder.
    void purgeMarker(const CObject* marker);

    // Looking up. The first entry with `pos` <= tick < `pos` + `length`, null when none.
    CMarkerPart* getMarkerAtPos(int tick);
    CTimesigPart* getTimesigAtPos(int tick);
    CTimesigPart* timesigInForce(int tick); ///< the last one there or before, or null
    CTempoPart* getTempoAtPos(int tick);
    CSongTrack* songTrackOf(const CTrack* track);
    bool hasParts() const;
    /// Appends every selected part.
    void getSelectedParts(CList* list);
    CPart* getFirstSelectedPart();
    CPart* getLastSelectedPart();
    /// Largest end of a part in ticks.
    int duration();

    // Points. Taken over, and linked by the step, or at once under the graph hold.
    void addMarker(CMarkerPart* marker, CUndo* undo);
    /// Before the first entry at or after the new position.
    void addTimesig(CTimesigPart* point, CUndo* undo);
    /// Behind the last entry at or before the new position: of two at one tick the newer counts.
    void addTempo(CTempoPart* point, CUndo* undo);
    /// The tempos as they are now, by which all conversions go: one map for who holds the graph,
    /// and one for the interface thread. Good until a point comes, goes or changes.
    const TempoMap& tempoMap();
    /// There will be so many points, or as many as there are. With the graph, off the audio thread.
    void reserveTempos(int count = 0);
    void takeTempoRoom(TempoMap::Room& room) { heldTempos.takeRoom(room); } ///< graph holder

    // Grid.
    /// `tick` on a grid that begins anew at each time signature.
    int snapTo(int tick, int grid);
    /// `tick` on the beat of the signature in force, which is `num`/`den` before the first point.
    int snapToBeat(int tick, int num, int den);

private:
    TempoMap heldTempos, shownTempos;
    void stepMarker(int step);
};

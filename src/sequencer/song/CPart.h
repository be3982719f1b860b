#pragma once

#include "base/Atomic.h"
#include "base/CStr.h"
#include "engine/CUndo.h"
#include "sequencer/play/CPlayStruct.h"
#include "sequencer/song/Events.h"

#include <cstdint>

/// `CObject::category` of parts and points.
constexpr int categoryPart = 2;

/// `CObject::type` of parts and points.
enum PartType : int {
    partPlain = 0,
    partMIDI = 1,
    partAudio = 2,
    partDrum = 3,
    partMarker = 4,
    partTimesig = 5,
    partTempo = 6,
};

struct RowLoops;
class Takes;

/// Bits of a part's `flags`.
constexpr unsigned partSelected = 1;
constexpr unsigned partMuted = 4;

constexpr int maxSlots = 64; ///< envelopes of a part, and automation lanes of a track
constexpr int barTicks = 3840;
constexpr int quarterTicks = 960;

/// A stretch of the timeline with its events and envelopes. A ghost keeps no events: it shows and
/// plays those of a master, and whatever asks it for content is sent there.
///
/// An event at tick t of its list stands on the timeline at `pos + offset + t`. A part that plays
/// is edited by building a copy and swapping it in (`swapUndoPart`); `addEvent` and its kin are for
/// parts that are not linked yet.
class CPart : public CUndoContent {
public:
    Shared<int> colour{-1};              ///< -1 takes the track's
    Shared<CPart*> ghostOf{nullptr};     ///< in `CSeq::masterParts`, not owned
    Shared<int> ghostCount{0};           ///< of masters: how many parts point here
    Shared<CBaseEvent*> events{nullptr}; ///< owned list; use `getEvents`
    Shared<int> pos{0};                  ///< ticks
    Shared<int> offset{0};               ///< ticks
    Shared<int> length{barTicks};        ///< ticks; 0 counts as 960, see `CSeq::getTicks`
    Shared<Takes*> takes{nullptr};       ///< owned; the passes of a loop that it was recorded in
    int layer = 0;                       ///< row among overlapping parts, for drawing

    CPart();
    ~CPart() override;
    CPart(const CPart&) = delete;
    CPart& operator=(const CPart&) = delete;

    virtual CBaseEvent* getEvents();
    /// Envelope of a lane's slot, null when there is none or the slot is out of range.
    virtual CEnvEvent* getParam(int slot);
    /// A part of the same class, owned by the caller. Not a ghost, it has the events too and,
    /// unless `withoutParams`, the envelopes.
    virtual CPart* copy(int withoutParams = 0);
    /// Exchanges the events and envelopes, and nothing else. Both need slots for what the other has
    /// (see `swapUndoPart`). For parts that are not linked yet; those that are take `listWords`.
    void swap(CPart* other);
    void listWords(CUndoContent* other, WordChanges& words) override;

    /// "MIDI", "Audio" or "Drum", empty for other classes.
    CStr getId() const;
    bool selected() const { return hasFlag(partSelected); }
    bool muted() const { return hasFlag(partMuted); }
    void setSelected(bool on) { setFlag(partSelected, on); }
    void setMuted(bool on) { setFlag(partMuted, on); }

    /// Replace a list, which is taken; the old one is freed. Slots out of range free the new one.
    void setEvents(CBaseEvent* list);
    void setParam(int slot, CEnvEvent* list);
    /// Sets the points of a slot that has room; those before are not freed. Graph holder.
    void relinkParam(int slot, CEnvEvent* list);
    /// Takes the event and puts it at `tick`, behind those at the same tick.
    void addEvent(int tick, CBaseEvent* event);
    /// The same for a point, which goes before those at the same tick; but behind the first of all.
    /// Freed when the slot is out of range.
    void addEventParam(int tick, CEnvEvent* event, int slot);
    /// Cuts the selected events and points; the others stay where they are. Nothing on a ghost.
    void deleteSelected();
    /// Replaces the envelopes by copies of those of `source`.
    void copyParams(CPart* source);
    /// Master for a ghost, else the part itself.
    CPart* content() {
        CPart* master = ghostOf.loadAcquire();
        return master ? master->content() : this;
    }

    // Slots and play pointers. Both grow in chunks that never move, so that a part may play
    // meanwhile.
    /// Makes room for `slots` envelopes and as many play pointers beside the main one. Interface
    /// thread, before a lane or part is linked.
    void reserveSlots(int slots);
    int reservedSlots() const;
    /// Those whose envelope has points, a bit each; a ghost has those of its master.
    uint64_t usedSlots();
    Shared<int> numPlay{0}; ///< active play pointers, at most 64; graph holder
    /// Play pointer `i`; number 0 belongs to the main list. Null beyond the room.
    CPlayStruct* play(int i);
    /// The next play pointer, at its defaults, null when there is no room. Graph holder.
    CPlayStruct* addPlay();
    /// Whether the main pointer plays the part's present list in that pass of its song track.
    /// Graph holder.
    bool mainPlays(unsigned pass);
    /// No play pointer is active from then on. Graph holder.
    void dropPlay();
    /// The same for those of lanes. Graph holder.
    void dropLanePlay();

    // What playback keeps of a part. Graph holder.
    CPart* nextPlaying = nullptr; ///< in `CSongTrack::playingParts`
    unsigned playPass = 0;        ///< of its song track, in which it was set up last
    int clipTicks = 0;            ///< length of a single clip, as it was worked out
    unsigned clipChanges = 0;     ///< at that count of the song,
    float clipTempo = 0.0f;       ///< and that tempo before its first point; 0 not yet

protected:
    explicit CPart(PartType type);
    void copyHeader(CPart* target) const;
    void copyTakesTo(CPart* target) const;

private:
    static constexpr int chunkSlots = 8;
    struct Chunk {
        Shared<CEnvEvent*> params[chunkSlots]; ///< owned lists
        CPlayStruct play[chunkSlots];
    };
    Shared<CEnvEvent*>* slot(int index);         ///< null beyond the room
    Shared<CEnvEvent*>* slotWithRoom(int index); ///< null out of range

    Shared<Chunk*> chunks[maxSlots / chunkSlots]; ///< owned, made in order
    CPlayStruct mainPlay;
};

class CMIDIPart : public CPart {
public:
    CMIDIPart() : CPart(partMIDI) {}
    CPart* copy(int withoutParams = 0) override;
};

class CDrumPart : public CPart {
public:
    Shared<RowLoops*> rows{nullptr}; ///< owned; null while all rows are as long as the part

    CDrumPart() : CPart(partDrum) {}
    ~CDrumPart() override;
    CDrumPart(const CDrumPart&) = delete;
    CDrumPart& operator=(const CDrumPart&) = delete;

    CPart* copy(int withoutParams = 0) override;
    void listWords(CUndoContent* other, WordChanges& words) override;
};

class CAudioPart : public CPart {
public:
    Shared<int> multiclip{0}; ///< 1: several clips, edited one by one
    int chs = 1;

    CAudioPart() : CPart(partAudio) {}
    CPart* copy(int withoutParams = 0) override;
    /// 1 or 2, of the master for a ghost.
    int getChs();
};

/// Records that the content of `original` is exchanged with that of `edited`, a copy of it, which
/// the step owns from now on. A ghost's master is meant by passing the master itself.
void swapUndoPart(CUndo* undo, CPart* original, CPart* edited);
/// The same for the events alone, which are all that `edited` holds: the envelopes stay.
void swapUndoEvents(CUndo* undo, CPart* original, CPart* edited);

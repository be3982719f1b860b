#include "sequencer/edit/MidiProcess.h"

#include "base/Numbers.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <memory>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

const char* const tooManyPieces = "Too many pieces";

namespace {

constexpr const char* texts[midiProcessCount] = {
    "Quantize length", "Legato",     "Slice",        "Fixed length", "Reverse",
    "Delete doubles",  "Half tempo", "Double tempo", "Random"};

/// An event, owned, and its tick.
struct Placed {
    int tick;
    CBaseEvent* event;
};

int key(const CBaseEvent* event) {
    return asByte1(asMessage(event)->data);
}

/// The events of one part on their way through a process.
class Process {
public:
    Process(CSeq* song, CPart* of, int how, int step)
        : seq(song), part(of), type(of->type), mode(how), grid(step), all(!hasSelectedEvents(of)) {
        eachEvent(of->getEvents(), [this](const CBaseEvent* e, int tick) {
            events.push_back({tick, copyEvent(type, e)});
        });
    }
    ~Process() {
        for (const Placed& p : events) freeEvent(p.event);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// False for too many pieces.
    bool run() {
        if (mode == midiRandom) {
            shuffle();
            return true;
        }
        if (type == partDrum && (mode < midiReverse || mode == midiDeleteDoubles)) return true;
        if (mode == midiSlice) return slice();
        if (mode == midiLegato) joinNotes();
        if (mode == midiDeleteDoubles) dropDoubles();
        for (Placed& p : events)
            if (concerns(p.event)) treat(p);
        return true;
    }

    /// What came of the part, null if it is the same.
    std::unique_ptr<CPart> result() {
        EventCollector placed;
        for (const Placed& p : events) placed.add(p.tick, p.event);
        events.clear();
        std::unique_ptr<CPart> edited(part->content()->copy(0));
        edited->setEvents(placed.takeList());
        if (sameContent(edited.get(), part->content())) return nullptr;
        return edited;
    }

private:
    CSeq* seq;
    CPart* part;
    const int type, mode, grid;
    const bool all;
    std::vector<Placed> events;

    bool concerns(const CBaseEvent* event) const { return all || (event->flags & eventSelected); }

    void treat(Placed& p) {
        int* length = eventLength(type, p.event);
        switch (mode) {
        case midiQuantizeLength:
            if (length) *length = asMax(snapped(grid, *length, true), grid);
            break;
        case midiFixedLength:
            if (length) *length = grid;
            break;
        case midiReverse: {
            const int64_t end = int64_t(p.tick) + (length ? *length : 0);
            p.tick = limitTicks(seq->getTicks(part) - 2 * int64_t(part->offset) - end);
            break;
        }
        case midiHalfTempo:
            p.tick = limitTicks(int64_t(p.tick) * 2);
            if (length) *length = limitTicks(int64_t(*length) * 2);
            break;
        case midiDoubleTempo:
            p.tick /= 2;
            if (length) *length = asMax(*length / 2, 1);
            break;
        default:
            break;
        }
    }

    void joinNotes() {
        const int end = saturate(int64_t(seq->getTicks(part)) - part->offset);
        int later = end, here = end; // the next tick with a note behind that of `p`, and its own
        for (auto p = events.rbegin(); p != events.rend(); ++p) {
            if (!isNote(type, p->event)) continue;
            if (p->tick != here) later = std::exchange(here, p->tick);
            if (concerns(p->event) && later > p->tick)
                *eventLength(type, p->event) = later - p->tick;
        }
    }

    bool slice() {
        std::vector<Placed> pieces;
        for (const Placed& p : events) {
            const int length =
                isNote(type, p.event) && concerns(p.event) ? *eventLength(type, p.event) : 0;
            const int64_t count = std::max(int64_t(1), (int64_t(length) + grid - 1) / grid);
            if (int64_t(pieces.size()) + count > int64_t(events.size()) + maxPieces) {
                for (const Placed& made : pieces) freeEvent(made.event);
                return false;
            }
            for (int i = 0; i < int(count); i++) {
                CBaseEvent* piece = copyEvent(type, p.event);
                if (length) *eventLength(type, piece) = grid;
                pieces.push_back({limitTicks(p.tick + int64_t(i) * grid), piece});
            }
        }
        events.swap(pieces);
        for (const Placed& old : pieces) freeEvent(old.event);
        return true;
    }

    void dropDoubles() {
        std::set<std::pair<int, int>> later;
        std::vector<Placed> kept;
        for (auto p = events.rbegin(); p != events.rend(); ++p) {
            const bool twice =
                isNote(type, p->event) && !later.insert({p->tick, key(p->event)}).second;
            if (twice && concerns(p->event))
                freeEvent(p->event);
            else
                kept.push_back(*p);
        }
        std::reverse(kept.begin(), kept.end());
        events.swap(kept);
    }

    void shuffle() {
        std::vector<Placed*> chosen;
        for (Placed& p : events)
            if (concerns(p.event)) chosen.push_back(&p);
        const double last = double(chosen.size()) - 1.0;
        if (last < 1.0) return;
        const auto pick = [&] { return chosen[size_t(asRound(asRand() * last))]; };
        for (size_t i = 0; i < chosen.size(); i++) {
            Placed* one = pick();
            std::swap(one->tick, pick()->tick);
        }
    }
};

} // namespace

const char* midiProcessText(int mode) {
    return mode >= 0 && mode < midiProcessCount ? texts[mode] : "";
}

CStr processMIDI(CSeq* seq, int mode) {
    if (mode < 0 || mode >= midiProcessCount) return "";
    const int grid = seq->snap->val();
    std::unordered_set<const CPart*> done;
    std::vector<std::pair<CPart*, std::unique_ptr<CPart>>> results;
    for (const PlacedPart& p : selectedParts(seq)) {
        const bool midi = p.part->type == partMIDI || p.part->type == partDrum;
        if (!midi || !done.insert(p.part->content()).second) continue;
        Process process(seq, p.part, mode, grid);
        if (!process.run()) return tooManyPieces;
        if (std::unique_ptr<CPart> edited = process.result())
            results.emplace_back(p.part->content(), std::move(edited));
    }
    CUndo* undo = seq->host->undoStart(texts[mode], seq, {.seq = SeqNotice::parts});
    for (auto& [content, edited] : results) swapUndoPart(undo, content, edited.release());
    seq->host->undoEnd(undo, false);
    return "";
}

#include "sequencer/play/PlayedNotes.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <map>
#include <optional>

void PlayedNotes::note(const Event& event) {
    const int64_t at = written;
    Slot& slot = slots[size_t(at % capacity)];
    slot.frame.storeRelease(event.frame); // who finds one of them new sees `written` as it is
    slot.tick.storeRelease(event.tick);
    slot.where.storeRelease(event.where);
    slot.run.storeRelease(event.run);
    slot.msg.storeRelease(event.msg);
    written.storeRelease(at + 1);
    if (noteOn(event.msg)) lastNote = event.frame + 1;
}

std::vector<PlayedNotes::Event> PlayedNotes::since(int64_t frame) const {
    const int64_t end = written.loadAcquire();
    int64_t at = std::max<int64_t>(0, end - capacity);
    const int64_t first = at;
    std::vector<Event> all;
    for (; at < end; at++) {
        const Slot& slot = slots[size_t(at % capacity)];
        all.push_back({slot.frame.loadAcquire(), slot.tick.loadAcquire(), slot.where.loadAcquire(),
                       slot.run.loadAcquire(), slot.msg.loadAcquire()});
    }
    // What was written meanwhile has taken the places of the oldest, one of which it may be at.
    const int64_t whole = written + 1 - capacity;
    if (whole > first) all.erase(all.begin(), all.begin() + std::min(whole, end) - first);
    std::erase_if(all, [frame](const Event& e) { return e.frame < frame; });
    return all;
}

namespace {

using Event = PlayedNotes::Event;

int64_t keptFrom(const CSeq* seq) {
    return seq->playedTime.frames - keptSeconds * asInt64(double(seq->host->rate));
}

CSongTrack* trackToKeep(CSeq* seq) {
    CSeqProg* prog = seq->getProg();
    if (!prog) return nullptr;
    for (auto* t : prog->tracks) {
        const CTrack* track = t->track;
        if (track->played && track->selected() && !track->locked &&
            track->played->anySince(keptFrom(seq)))
            return t;
    }
    return nullptr;
}

/// Finds the places of events in the song.
class Placing {
public:
    explicit Placing(double position) : standing(position) {}

    int64_t operator()(const Event& e) {
        if (e.where >= 0.0) {
            const auto [run, isNew] = runs.try_emplace(e.run, e.where - e.tick);
            return asRound64(run->second + e.tick);
        }
        if (!stoodFrom) stoodFrom = e.tick;
        return asRound64(standing + e.tick - *stoodFrom);
    }

private:
    const double standing;
    std::optional<double> stoodFrom;
    std::map<unsigned, double> runs; ///< from `PlayedTime::ticks` to the song
};

/// Makes a part of what was played.
class Keeping {
public:
    Keeping(CSeq* song, CTrack* of)
        : track(of), place(song->getPos()), now(song->playedTime.ticks) {}

    std::unique_ptr<CPart> make(const std::vector<Event>& events) {
        for (const Event& e : events) take(e);
        while (!held.empty()) endNote(held.begin(), now);
        if (placed.empty()) return nullptr;
        std::unique_ptr<CPart> part;
        if (track->kind == trackDrum)
            part = std::make_unique<CDrumPart>();
        else
            part = std::make_unique<CMIDIPart>();
        part->id = track->id;
        part->pos = int(first / quarterTicks * quarterTicks);
        part->length = limitTicks((last - part->pos) / quarterTicks * quarterTicks + quarterTicks);
        EventCollector list;
        for (const auto& [at, event] : placed) list.add(limitTicks(at - part->pos), event);
        part->setEvents(list.takeList());
        part->setSelected(true);
        return part;
    }

private:
    struct Held {
        int msg;
        double tick;
        CMIDIEvent* event; ///< in `placed`
        int64_t at;        ///< song tick
    };
    CTrack* track;
    Placing place;
    const double now;
    std::vector<Held> held;
    std::vector<std::pair<int64_t, CBaseEvent*>> placed;
    int64_t first = maxTicks, last = 0;

    void put(int64_t at, CBaseEvent* event) {
        placed.emplace_back(at, event);
        first = std::min(first, at);
        last = std::max(last, at);
    }

    void take(const Event& e) {
        if (track->kind == trackDrum) {
            if (noteOn(e.msg)) put(place(e), drumHit(e.msg));
            return;
        }
        if (noteOff(e.msg)) {
            const auto on = std::ranges::find_if(held, [&e](const Held& h) {
                return asByte1(h.msg) == asByte1(e.msg) && chByte(h.msg) == chByte(e.msg);
            });
            if (on != held.end()) endNote(on, e.tick);
            return;
        }
        CMIDIEvent* event = createMIDIEvent();
        event->data = e.msg;
        const int64_t at = place(e);
        put(at, event);
        if (noteOn(e.msg)) held.push_back({e.msg, e.tick, event, at});
    }

    void endNote(std::vector<Held>::iterator note, double tick) {
        note->event->length = std::max(1, asRound(tick - note->tick));
        last = std::max(last, note->at + note->event->length - 1);
        held.erase(note);
    }
};

} // namespace

bool canKeepPlayed(CSeq* seq) {
    return trackToKeep(seq) != nullptr;
}

void keepPlayed(CSeq* seq) {
    CSongTrack* on = trackToKeep(seq);
    if (!on) return;
    Keeping keeping(seq, on->track);
    std::unique_ptr<CPart> part = keeping.make(on->track->played->since(keptFrom(seq)));
    if (!part) return;
    CUndo* undo =
        seq->host->undoStart("Keep what I played", seq, {.song = true, .seq = SeqNotice::parts});
    seq->unselectParts();
    on->addPart(part.release(), undo);
    seq->host->undoEnd(undo, false);
}

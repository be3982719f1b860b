#include "sequencer/edit/RangeEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/edit/Ripple.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"
#include "sequencer/take/Takes.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

constexpr StepEffects rangeEffects{.song = true, .seq = SeqNotice::parts | SeqNotice::cuts};

const char* const refused = "A track does not take these parts";
const char* const outside = "There are no such tracks";

/// What lies in the range of a part: the part itself, or a piece of it.
struct Inside {
    CSongTrack* songTrack;
    int row;
    CPart* whole;                 ///< null for a piece
    std::unique_ptr<CPart> piece; ///< owned until it comes to a track

    CPart* part() const { return whole ? whole : piece.get(); }
};

/// One edit under way: what it cuts and makes is collected, and recorded at the end.
class RangeEdit {
public:
    RangeEdit(CSeq* song, const TimeRange& chosen) : seq(song), range(chosen) {}

    /// Collects what is inside. With `cut` the rest of the parts comes in place of them; else they
    /// stay as they are.
    void collect(bool cut) {
        if (!ready()) return;
        int row = 0;
        for (auto* songTrack : seq->getProg()->tracks) {
            const bool meant = std::ranges::count(range.tracks, songTrack) > 0;
            if (meant && !songTrack->track->locked)
                for (auto* part : songTrack->parts) add(songTrack, row, part, cut);
            row++;
        }
        if (!range.markers) return;
        for (auto* marker : seq->getProg()->markers)
            if (marker->pos >= range.from && marker->pos < range.to) markers.push_back(marker);
    }
    bool ready() const { return seq->getProg() && range.from < range.to; }
    bool empty() const { return inside.empty() && markers.empty(); }

    /// Why what is inside can't go there; empty if it can.
    CStr whyNot(int ticks, int rows) const {
        if (int64_t(range.to) + ticks > maxTicks) return songTooLong;
        for (const Inside& in : inside) {
            const CSongTrack* target = targetOf(in, rows);
            if (!target) return outside;
            if (!target->takesEdits(in.part())) return refused;
        }
        return "";
    }
    CSongTrack* targetOf(const Inside& in, int rows) const {
        return seq->getProg()->tracks.items(in.row + rows);
    }

    /// Runs `act(undo)` as a step of that title, and has what was cut follow.
    template <class F>
    void record(const char* title, F&& act) {
        record(title, false, act);
    }
    template <class F>
    void record(const char* title, bool more, F&& act) {
        if (empty() && !more) return;
        seq->unselectParts();
        CUndo* undo = seq->host->undoStart(title, seq, rangeEffects);
        act(undo);
        change.record(undo);
        seq->host->undoEnd(undo, false);
    }
    /// What is inside is selected, and pieces come to a track.
    void place(Inside& in, CSongTrack* on) {
        in.part()->setSelected(true);
        if (in.piece) change.add(on, std::move(in.piece));
    }

    CStr copy(int ticks, int rows, const char* title) {
        collect(false);
        CStr why = whyNot(ticks, rows);
        if (!why.empty()) return why;
        record(title, [&](CUndo* undo) {
            for (Inside& in : inside) {
                if (in.whole) in.piece.reset(std::exchange(in.whole, nullptr)->copy(0));
                in.piece->pos = in.piece->pos + ticks;
                place(in, targetOf(in, rows));
            }
            for (CMarkerPart* marker : markers) {
                auto* copied = static_cast<CMarkerPart*>(marker->copy());
                copied->pos = marker->pos + ticks;
                copied->colourIndex = marker->colourIndex;
                copied->flag = marker->flag;
                seq->getProg()->addMarker(copied, undo);
            }
        });
        return "";
    }

    CSeq* seq;
    const TimeRange& range;
    std::vector<Inside> inside;
    std::vector<CMarkerPart*> markers;
    std::vector<CPart*> rests; ///< what is left behind the range of parts that are cut
    PartChange change;

private:
    void add(CSongTrack* songTrack, int row, CPart* part, bool cut) {
        const int length = seq->getTicks(part);
        const int from = nearestCut(seq, part, saturate(int64_t(range.from) - part->pos));
        const int to = nearestCut(seq, part, saturate(int64_t(range.to) - part->pos));
        if (from >= to) return;
        if (from == 0 && to == length) {
            inside.push_back({songTrack, row, part, nullptr});
            return;
        }
        inside.push_back({songTrack, row, nullptr, partPiece(seq, part, from, to)});
        if (!cut) return;
        change.remove(songTrack, part);
        if (from > 0) change.add(songTrack, partPiece(seq, part, 0, from));
        if (to == length) return;
        std::unique_ptr<CPart> rest = partPiece(seq, part, to, length);
        rests.push_back(rest.get());
        change.add(songTrack, std::move(rest));
    }
};

/// How far a range can go back.
int notBeforeSong(const TimeRange& range, int ticks) {
    return asMax(ticks, -asMax(range.from, 0));
}

/// Scales ticks, `from` of which become `to`.
struct TimeScale {
    int64_t from, to;
    int of(int64_t ticks) const {
        return limitTicks(asRound64(double(ticks) * double(to) / double(from)));
    }
    int length(int64_t ticks) const { return asMax(of(ticks), 1); }
};

void stretchEvent(CSeq* seq, CPart* part, const TimeScale& scale, CBaseEvent* event, int tick) {
    if (part->type != partAudio) {
        if (int* length = eventLength(part->type, event)) *length = scale.length(*length);
        return;
    }
    auto* clip = asClip(event);
    const int songTick = saturate(int64_t(part->pos) + part->offset + tick);
    clip->ticks = scale.length(sampleAsTicks2(seq, clip, songTick));
    if (clip->mode == playRepitch) clip->mode = playStretch;
}

/// An own copy of a part, with all its time scaled from its start on.
std::unique_ptr<CPart> stretched(CSeq* seq, CPart* part, const TimeScale& scale) {
    std::unique_ptr<CPart> made = ownCopy(part);
    if (takesOf(made.get())) // they are as they were recorded
        delete made->takes.exchange(nullptr);
    made->length = scale.length(seq->getTicks(part));
    made->offset = 0;
    const auto place = [&](int tick) { return scale.of(int64_t(part->offset) + tick); };
    EventCollector events;
    CBaseEvent* head = made->events;
    made->events = nullptr;
    moveList(head, events, [&](CBaseEvent* e, int tick) {
        stretchEvent(seq, part, scale, e, tick);
        return place(tick);
    });
    made->setEvents(events.takeList());
    for (int slot = 0; slot < made->reservedSlots(); slot++) {
        EventCollector points;
        CBaseEvent* first = made->getParam(slot);
        made->relinkParam(slot, nullptr);
        moveList(first, points, [&](CBaseEvent*, int tick) { return place(tick); });
        putPoints(made.get(), slot, points);
    }
    return made;
}

} // namespace

CStr splitRange(CSeq* seq, const TimeRange& range) {
    RangeEdit edit(seq, range);
    edit.collect(true);
    edit.record("Split", [&](CUndo*) {
        for (Inside& in : edit.inside) edit.place(in, in.songTrack);
    });
    return "";
}

CStr moveRange(CSeq* seq, const TimeRange& range, int deltaTicks, int deltaTracks) {
    const int ticks = notBeforeSong(range, deltaTicks);
    if (!ticks && !deltaTracks) return "";
    RangeEdit edit(seq, range);
    edit.collect(true);
    CStr why = edit.whyNot(ticks, deltaTracks);
    if (!why.empty()) return why;
    edit.record("Move", [&](CUndo* undo) {
        for (Inside& in : edit.inside) {
            CSongTrack* target = edit.targetOf(in, deltaTracks);
            if (in.whole)
                recordTransfer(undo, in.whole, in.songTrack, target, ticks);
            else
                in.piece->pos = in.piece->pos + ticks;
            edit.place(in, target);
        }
        for (CMarkerPart* marker : edit.markers)
            if (ticks) recordMove(undo, marker, ticks);
    });
    return "";
}

CStr copyRange(CSeq* seq, const TimeRange& range, int deltaTicks, int deltaTracks) {
    return RangeEdit(seq, range).copy(notBeforeSong(range, deltaTicks), deltaTracks, "Copy");
}

CStr duplicateRange(CSeq* seq, const TimeRange& range) {
    return RangeEdit(seq, range).copy(saturate(int64_t(range.to) - range.from), 0, "Duplicate");
}

CStr deleteRange(CSeq* seq, const TimeRange& range) {
    return deleteRange(seq, range, Ripple::off);
}

CStr deleteRange(CSeq* seq, const TimeRange& range, Ripple ripple) {
    RangeEdit edit(seq, range);
    edit.collect(true);
    const int gap = range.from - range.to;
    const std::vector<RippleShift> shifts =
        rippleOfInsert(seq, ripple, range.tracks, range.to, edit.ready() ? gap : 0);
    if (ripple != Ripple::off)
        for (CPart* rest : edit.rests) rest->pos = rest->pos + gap;
    edit.record("Delete", !shifts.empty(), [&](CUndo* undo) {
        for (const Inside& in : edit.inside)
            if (in.whole) undo->asRemove(in.whole, &in.songTrack->parts);
        for (CMarkerPart* marker : edit.markers) undo->asRemove(marker, &seq->getProg()->markers);
        recordRipple(undo, shifts);
    });
    return "";
}

CStr muteRange(CSeq* seq, const TimeRange& range) {
    RangeEdit edit(seq, range);
    edit.collect(true);
    const bool mute =
        !std::ranges::all_of(edit.inside, [](const Inside& in) { return in.part()->muted(); });
    edit.record("Mute part", [&](CUndo* undo) {
        for (Inside& in : edit.inside) {
            if (in.piece)
                in.piece->setMuted(mute);
            else if (in.whole->muted() != mute)
                recordMuteToggle(undo, in.whole);
            edit.place(in, in.songTrack);
        }
    });
    return "";
}

CStr stretchRange(CSeq* seq, const TimeRange& range, int ticks) {
    const TimeScale scale{int64_t(range.to) - range.from, asMax(ticks, 1)};
    if (scale.from == scale.to) return "";
    if (int64_t(range.from) + scale.to > maxTicks) return songTooLong;
    RangeEdit edit(seq, range);
    edit.collect(true);
    edit.record("Stretch", [&](CUndo* undo) {
        for (Inside& in : edit.inside) {
            std::unique_ptr<CPart> made = stretched(seq, in.part(), scale);
            made->pos = range.from + scale.of(int64_t(in.part()->pos) - range.from);
            if (in.whole) edit.change.remove(in.songTrack, std::exchange(in.whole, nullptr));
            in.piece = std::move(made);
            edit.place(in, in.songTrack);
        }
        for (CMarkerPart* marker : edit.markers) {
            const int pos = range.from + scale.of(int64_t(marker->pos) - range.from);
            recordMove(undo, marker, pos - marker->pos);
            recordGrow(undo, marker, scale.length(marker->length) - marker->length);
        }
    });
    return "";
}

#include "sequencer/edit/Ripple.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <unordered_map>

namespace {

constexpr StepEffects rippleEffects{.song = true, .seq = SeqNotice::parts};

using Shifts = std::vector<RippleShift>;

/// By how many ticks what begins at a tick of a track goes along; null for points.
using ShiftOf = std::function<int(const CSongTrack* songTrack, int tick)>;

/// All that goes along; with `stays` parts that do not.
Shifts collect(CSeq* seq, Ripple ripple, bool selectedStay, const ShiftOf& shiftOf) {
    Shifts shifts;
    CSeqProg* prog = seq->getProg();
    if (!prog || ripple == Ripple::off) return shifts;
    const auto offer = [&](CPart* part, const CSongTrack* songTrack) {
        if (const int ticks = shiftOf(songTrack, part->pos)) shifts.push_back({part, ticks});
    };
    for (auto* songTrack : prog->tracks) {
        if (songTrack->track->locked) continue;
        for (auto* part : songTrack->parts)
            if (!selectedStay || !part->selected()) offer(part, songTrack);
    }
    if (ripple == Ripple::all)
        for (const auto& points : viewsOf<CPart>(prog->markers, prog->tempos, prog->timesigs))
            for (auto* point : points) offer(point, nullptr);
    return shifts;
}

/// Times that are taken out of a track.
class Gaps {
public:
    void add(int from, int to) { spans.push_back({from, to}); }
    /// Ticks that are missing before a tick: those of whole gaps, or with `partly` of what has
    /// passed of the one that it lies in as well.
    int before(int tick, bool partly) const {
        int64_t sum = 0, reached = std::numeric_limits<int>::min();
        for (const Span& s : spans) {
            if (s.to > tick && !partly) continue;
            const int64_t from = std::max(int64_t(s.from), reached), to = std::min(s.to, tick);
            sum += std::max(int64_t(0), to - from);
            reached = std::max(reached, to);
        }
        return saturate(sum);
    }
    void sort() {
        std::ranges::sort(spans, {}, [](const Span& s) { return s.from; });
    }

private:
    struct Span {
        int from, to;
    };
    std::vector<Span> spans;
};

bool fits(CSeq* seq, const Shifts& shifts) {
    return std::ranges::none_of(shifts, [seq](const RippleShift& s) {
        return int64_t(s.part->pos) + s.ticks + seq->getTicks(s.part) > maxTicks;
    });
}

bool allTaken(CSeq* seq, int rows) {
    const auto& tracks = seq->getProg()->tracks;
    return std::ranges::all_of(selectedParts(seq), [&](const PlacedPart& p) {
        const auto* target = tracks.items(p.row + rows);
        return target && target->takesEdits(p.part);
    });
}

} // namespace

std::vector<RippleShift> rippleOfMove(CSeq* seq, Ripple ripple, int deltaTicks) {
    const MoveRange range = moveRange(seq);
    const int ticks = asMinMax(deltaTicks, range.minTicks, range.maxTicks);
    std::unordered_map<const CSongTrack*, int> firsts;
    int firstOfAll = maxTicks;
    for (const PlacedPart& p : selectedParts(seq)) {
        int& first = firsts.try_emplace(p.songTrack, maxTicks).first->second;
        first = std::min(first, int(p.part->pos));
        firstOfAll = std::min(firstOfAll, first);
    }
    if (firsts.empty()) return {};
    return collect(seq, ripple, true, [&](const CSongTrack* songTrack, int tick) {
        const auto own = firsts.find(songTrack);
        if (ripple == Ripple::all) return tick >= firstOfAll ? ticks : 0;
        return own != firsts.end() && tick >= own->second ? ticks : 0;
    });
}

std::vector<RippleShift> rippleOfDelete(CSeq* seq, Ripple ripple) {
    std::unordered_map<const CSongTrack*, Gaps> gaps;
    for (const PlacedPart& p : selectedParts(seq))
        gaps[ripple == Ripple::all ? nullptr : p.songTrack].add(
            p.part->pos, limitTicks(int64_t(p.part->pos) + seq->getTicks(p.part)));
    for (auto& [songTrack, of] : gaps) of.sort();
    return collect(seq, ripple, true, [&](const CSongTrack* songTrack, int tick) {
        const auto own = gaps.find(ripple == Ripple::all ? nullptr : songTrack);
        return own == gaps.end() ? 0 : -own->second.before(tick, !songTrack);
    });
}

std::vector<RippleShift> rippleOfInsert(CSeq* seq, Ripple ripple,
                                        const std::vector<CSongTrack*>& tracks, int tick,
                                        int ticks) {
    return collect(seq, ripple, false, [&](const CSongTrack* on, int at) {
        const bool meant = ripple == Ripple::all || std::ranges::count(tracks, on) > 0;
        if (!on && at < tick) return asMin(saturate(int64_t(tick) + ticks - at), 0);
        return at >= tick && meant ? ticks : 0;
    });
}

void recordRipple(CUndo* undo, const Shifts& shifts) {
    for (const RippleShift& s : shifts) recordMove(undo, s.part, s.ticks);
}

CStr moveParts(CSeq* seq, int deltaTicks, int deltaTracks, Ripple ripple) {
    const MoveRange range = moveRange(seq);
    const int rows = asMinMax(deltaTracks, range.minTracks, range.maxTracks);
    const Shifts shifts = rippleOfMove(seq, ripple, deltaTicks);
    if (!fits(seq, shifts)) return songTooLong;
    if (ripple != Ripple::off && seq->getProg() && !allTaken(seq, rows))
        return "A track does not take these parts";
    CUndo* undo = seq->host->undoStart("Move", seq, rippleEffects);
    recordMoves(seq, undo, deltaTicks, deltaTracks);
    recordRipple(undo, shifts);
    seq->host->undoEnd(undo, false);
    return "";
}

CStr deleteParts(CSeq* seq, Ripple ripple) {
    const Shifts shifts = rippleOfDelete(seq, ripple);
    CUndo* undo = seq->host->undoStart("Delete", seq, rippleEffects);
    for (const PlacedPart& p : selectedParts(seq)) undo->asRemove(p.part, &p.songTrack->parts);
    recordRipple(undo, shifts);
    seq->host->undoEnd(undo, false);
    return "";
}

CStr insertPart(CSeq* seq, CSongTrack* songTrack, const PartPlace& place, Ripple ripple,
                CPart*& made) {
    const Shifts shifts = rippleOfInsert(seq, ripple, {songTrack}, place.pos, place.length);
    if (!fits(seq, shifts)) return songTooLong;
    CUndo* undo = seq->host->undoStart("Insert part", seq, rippleEffects);
    if (CPart* part = recordInsert(seq, undo, songTrack, place)) {
        made = part;
        recordRipple(undo, shifts);
    }
    seq->host->undoEnd(undo, false);
    return "";
}

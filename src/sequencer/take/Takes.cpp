#include "sequencer/take/Takes.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <unordered_set>

namespace {

/// So many fades lie two pieces under each other. As a fade is the square of a line, what is alike
/// in both stays as loud within a tenth or two: at once they would leave a hole.
constexpr double overlap = 1.4;

} // namespace

bool Takes::choose(int take, int from, int to) {
    if (take < 0 || size_t(take) >= takes.size()) return false;
    from = std::max(from, takes[size_t(take)].at);
    to = std::min(to, takes[size_t(take)].to());
    if (from >= to) return false;
    std::vector<Piece> pieces;
    for (const Piece& p : comp) {
        if (p.from < from) pieces.push_back({p.take, p.from, std::min(p.to, from)});
        if (p.to > to) pieces.push_back({p.take, std::max(p.from, to), p.to});
    }
    pieces.push_back({take, from, to});
    std::ranges::sort(pieces, {}, &Piece::from);
    std::vector<Piece> joined;
    for (const Piece& p : pieces)
        if (!joined.empty() && joined.back().take == p.take && joined.back().to == p.from)
            joined.back().to = p.to;
        else
            joined.push_back(p);
    const bool changed = joined != comp;
    comp = std::move(joined);
    return changed;
}

void Takes::chooseLast() {
    comp.clear();
    int end = 0;
    for (const Take& t : takes) end = std::max(end, t.to());
    for (size_t i = 0; i < takes.size(); i++)
        if (takes[i].to() == end) choose(int(i), takes[i].at, end);
}

bool Takes::dropUnused() {
    std::vector<int> places(takes.size(), -1);
    for (const Piece& p : comp) places[size_t(p.take)] = 0;
    std::vector<Take> kept;
    for (size_t i = 0; i < takes.size(); i++) {
        if (places[i] < 0) continue;
        places[i] = int(kept.size());
        kept.push_back(takes[i]);
    }
    for (Piece& p : comp) p.take = places[size_t(p.take)];
    const bool changed = kept.size() != takes.size();
    takes = std::move(kept);
    return changed;
}

void Takes::shift(int ticks) {
    const auto move = [ticks](int& tick) { tick = limitTicks(int64_t(tick) + ticks); };
    for (Take& t : takes) move(t.at);
    for (Piece& p : comp) {
        move(p.from);
        move(p.to);
    }
}

TakeNotes::~TakeNotes() {
    freeEvents(list);
}

const Takes* takesOf(CPart* part) {
    const Takes* takes = part->content()->takes;
    return takes && !takes->takes.empty() ? takes : nullptr;
}

void playNotes(CPart* part, const Takes::Take& take, int from, int to) {
    EventCollector placed, before;
    takeEvents(part, before);
    CBaseEvent* list = before.takeList();
    for (int tick = 0; CBaseEvent* e = list;) {
        list = e->next;
        tick += e->delta;
        if (tick >= from && tick < to)
            freeEvent(e);
        else
            placed.add(tick, e);
    }
    eachEvent(take.notes ? take.notes->list : nullptr, [&](const CBaseEvent* e, int offset) {
        const int tick = saturate(int64_t(take.at) + offset);
        if (tick < from || tick >= to) return;
        CBaseEvent* copied = copyEvent(part->type, e);
        if (int* length = eventLength(part->type, copied))
            *length = std::max(1, std::min(*length, to - tick));
        placed.add(tick, copied);
    });
    part->setEvents(placed.takeList());
}

void playComp(CSeq* seq, CAudioPart* part, int pos) {
    const Takes* takes = part->takes;
    const auto* like = firstClip(part);
    if (!takes || !like || !like->sample || like->sample->frames < 1) return;
    const int rate = tunedRate(like->sample, like->semitones + double(like->fine));
    const auto frames = [&](const Takes::Take& t, int tick) {
        const int songTick = saturate(int64_t(pos) + t.at);
        return asRound(seq->ticksToFrames(songTick, tick - t.at, rate));
    };
    const int shownFrom = -part->offset, shownTo = saturate(int64_t(shownFrom) + part->length);
    const int under =
        asRound(overlap * double(Takes::fadeMs) * fadeFramesPerMs * rate / double(seq->host->rate));
    EventCollector clips;
    for (const Takes::Piece& piece : takes->comp) {
        const Takes::Take& t = takes->takes[size_t(piece.take)];
        const int from = std::max(piece.from, shownFrom), to = std::min(piece.to, shownTo);
        if (from >= to) continue;
        CAudioEvent* clip = createAudioEvent(like);
        const int last = std::min(t.end, like->sample->frames - 1);
        clip->start = asMinMax(saturate(int64_t(t.start) + frames(t, from)), 0, last);
        const bool goesOn = &piece != &takes->comp.back() && (&piece)[1].from == piece.to;
        const int64_t end = to == t.to() ? last : int64_t(t.start) + frames(t, to) - 1;
        clip->end =
            asMinMax(saturate(end + (goesOn ? under : 0)), clip->start, like->sample->frames - 1);
        clip->ticks = to - from;
        clip->fadeInMs = clip->fadeOutMs = Takes::fadeMs;
        clips.add(from, clip);
    }
    part->setEvents(clips.takeList());
}

namespace {

/// A copy of what a part shows, in which `change(takes)` is made and sound is played; null where
/// that changes nothing.
template <class F>
std::unique_ptr<CPart> edited(CSeq* seq, CPart* part, F&& change) {
    if (!takesOf(part)) return nullptr;
    std::unique_ptr<CPart> copied(part->content()->copy(0));
    if (!change(*copied->takes.load())) return nullptr;
    if (copied->type == partAudio)
        playComp(seq, asAudio(copied.get()), saturate(int64_t(part->pos) + part->offset));
    return copied;
}

} // namespace

bool compTake(CSeq* seq, CPart* part, int take, int from, int to) {
    if (seq->isLocked(part)) return false;
    const auto own = [part](int tick) {
        return saturate(int64_t(tick) - part->pos - part->offset);
    };
    std::unique_ptr<CPart> changed =
        edited(seq, part, [&](Takes& t) { return t.choose(take, own(from), own(to)); });
    if (!changed) return false;
    if (changed->type != partAudio) {
        const Takes::Take& chosen = changed->takes.load()->takes[size_t(take)];
        playNotes(changed.get(), chosen, std::max(own(from), chosen.at),
                  std::min(own(to), chosen.to()));
    }
    CUndo* undo = seq->host->undoStart("Comp", seq, {.seq = SeqNotice::parts});
    swapUndoPart(undo, part->content(), changed.release());
    seq->host->undoEnd(undo, false);
    return true;
}

void deleteUnusedTakes(CSeq* seq) {
    if (!seq->getProg()) return;
    CUndo* undo = seq->host->undoStart("Delete unused takes", seq, {.seq = SeqNotice::parts});
    std::unordered_set<const CPart*> done;
    for (CPart* part : selectedParts(seq->getProg())) {
        if (!done.insert(part->content()).second) continue;
        std::unique_ptr<CPart> changed =
            edited(seq, part, [](Takes& takes) { return takes.dropUnused(); });
        if (changed) swapUndoPart(undo, part->content(), changed.release());
    }
    seq->host->undoEnd(undo, false);
}

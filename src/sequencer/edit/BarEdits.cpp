#include "sequencer/edit/BarEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

namespace {

/// One edit under way.
class BarEdit {
public:
    BarEdit(CSeq* song, CUndo* step)
        : seq(song), prog(song->getProg()), undo(step), left(prog->leftLocator),
          right(prog->rightLocator), span(limitTicks(int64_t(right) - left)) {}

    void insert() {
        eachScale([this](SongScales::Change& c) {
            if (c.tick >= left)
                undo->asGrow(seq, c.tick, limitTicks(int64_t(c.tick) + span) - c.tick);
        });
        eachPart([this](CSongTrack* t, CPart* part) { insertInto(t, part); });
        for (const auto& points : viewsOf<CPart>(prog->tempos, prog->timesigs))
            for (auto* point : points)
                if (point->pos >= left) recordMove(undo, point, span);
        for (auto* marker : prog->markers) {
            if (marker->pos >= left)
                recordMove(undo, marker, span);
            else if (marker->endTick() > left)
                recordGrow(undo, marker, span);
        }
    }

    void remove() {
        eachScale([this](SongScales::Change& c) {
            if (c.tick < left) return;
            const int to = c.tick >= right ? c.tick - span : SongScales::never;
            undo->asGrow(seq, c.tick, to - c.tick);
        });
        eachPart([this](CSongTrack* t, CPart* part) { removeFrom(t, part); });
        removeFrom(prog->tempos);
        removeFrom(prog->timesigs);
        for (auto* marker : prog->markers) shrink(marker);
    }

private:
    CSeq* seq;
    CSeqProg* prog;
    CUndo* undo;
    const int left, right, span;
    PartChange change;

    template <class F>
    void eachPart(F edit) {
        for (auto* songTrack : prog->tracks) {
            if (songTrack->track->locked) continue;
            for (auto* part : songTrack->parts) edit(songTrack, part);
        }
        change.record(undo);
    }

    template <class F>
    void eachScale(F edit) {
        for (SongScales::Change& c : seq->scales.changes)
            if (&c != seq->scales.changes && c.tick != SongScales::never) edit(c);
    }

    void cut(CSongTrack* songTrack, CPart* part, int tick, int gap, int mode) {
        cutPart(seq, songTrack, part, saturate(int64_t(tick) - part->pos), gap, mode, change);
    }

    void insertInto(CSongTrack* songTrack, CPart* part) {
        if (part->pos < left)
            cut(songTrack, part, left, span, splitApart);
        else
            recordMove(undo, part, span);
    }

    void removeFrom(CSongTrack* songTrack, CPart* part) {
        const int pos = part->pos;
        const int64_t end = int64_t(pos) + seq->getTicks(part);
        if (end <= left) return;
        if (pos >= right)
            recordMove(undo, part, -span);
        else if (pos >= left && end <= right)
            change.remove(songTrack, part);
        else if (pos >= left)
            cut(songTrack, part, right, span, splitKeepRight);
        else if (end <= right)
            cut(songTrack, part, left, 0, splitKeepLeft);
        else
            cut(songTrack, part, left, span, splitCutOut);
    }

    /// The last point of the span goes on to hold, from the left locator, unless one stands where
    /// the span ends.
    template <class T>
    void removeFrom(ListOf<T>& points) {
        const T* last = nullptr;
        bool followed = false;
        for (auto* point : points) {
            if (point->pos >= left && point->pos < right) last = point;
            followed |= point->pos == right;
        }
        for (auto* point : points) {
            if (point->pos >= right)
                recordMove(undo, point, -span);
            else if (point == last && !followed && point->pos == left)
                continue;
            else if (point == last && !followed)
                recordMove(undo, point, left - point->pos);
            else if (point->pos >= left)
                undo->asRemove(point, &points);
        }
    }

    int afterRemoval(int tick) const {
        return tick < left ? tick : tick < right ? left : tick - span;
    }

    void shrink(CMarkerPart* marker) {
        const int from = afterRemoval(marker->pos), to = afterRemoval(marker->endTick());
        if (marker->pos >= left && marker->endTick() <= right)
            undo->asRemove(marker, &prog->markers);
        else if (from != marker->pos || to - from != marker->length) {
            recordMove(undo, marker, from - marker->pos);
            recordGrow(undo, marker, to - from - marker->length);
        }
    }
};

void edit(CSeq* seq, const char* title, void (BarEdit::*run)()) {
    CSeqProg* prog = seq->getProg();
    if (!prog || prog->leftLocator >= prog->rightLocator) return;
    CUndo* undo = seq->host->undoStart(title, seq, {.song = true, .seq = SeqNotice::parts});
    {
        BarEdit bars(seq, undo);
        (bars.*run)();
    }
    seq->host->undoEnd(undo, false);
}

} // namespace

void insertBars(CSeq* seq) {
    edit(seq, "Insert bars", &BarEdit::insert);
}

void removeBars(CSeq* seq) {
    edit(seq, "Remove bars", &BarEdit::remove);
}

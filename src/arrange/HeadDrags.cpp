#include "arrange/HeadDrags.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/HeadSwitch.h"
#include "arrange/RowHead.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CDrag.h"
#include "gui/Keys.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"

#include <algorithm>
#include <vector>

namespace {

class SwitchDrag : public DragHandler {
public:
    SwitchDrag(HeadList& over, TrackSwitch which, CSongTrack* pressed)
        : list(over), kind(which), first(pressed),
          to(switchOf(which, pressed).get()[0] != 0.0 ? 0.0 : 1.0) {}

    void dragClick(const DragPoint&) override { list.toggle(kind, first); }
    void dragBegin(const DragPoint& point) override {
        list.door()->begin();
        for (CSongTrack* track : list.together(first)) set(track);
        lastY = point.anchor.y;
    }
    /// All rows from the last place on, as the pointer may be quick.
    void dragMove(const DragPoint& point) override {
        const int from = asMin(lastY, point.at.y), end = asMax(lastY, point.at.y);
        lastY = point.at.y;
        if (!list.door()->dragging()) return;
        for (int y = from; y <= end;) {
            const ArrangeRow* row = list.rowAt(y);
            if (!row) {
                y++;
                continue;
            }
            if (row->ofTrack()) set(row->songTrack);
            y = list.topOf(*row) + row->height;
        }
    }
    void dragEnd(const DragPoint&) override { list.door()->end(); }
    void dragCancel() override { list.door()->cancel(); }

private:
    void set(CSongTrack* track) {
        const bool folder = track->track->kind == trackFolder;
        if (!folder || kind == TrackSwitch::mute || kind == TrackSwitch::solo)
            list.door()->set(switchOf(kind, track), to);
    }

    HeadList& list;
    const TrackSwitch kind;
    CSongTrack* const first;
    const double to;
    int lastY = 0;
};

class SizeDrag : public DragHandler {
public:
    SizeDrag(HeadList& over, const RowHead& head) : list(over) {
        if (CSubTrack* lane = head.shownLane())
            sized.push_back({head.songTrack()->track, lane, head.height});
        else
            for (CSongTrack* t : list.together(head.songTrack()))
                sized.push_back({t->track, nullptr, heightOf(t->track)});
    }

    void dragMove(const DragPoint& point) override {
        const int by = point.at.y - point.anchor.y;
        for (const Sized& s : sized) set(s, s.before + by);
        list.state.rowsChanged();
    }
    void dragCancel() override {
        for (const Sized& s : sized) set(s, s.before);
        list.state.rowsChanged();
    }

private:
    struct Sized {
        CTrack* track;
        CSubTrack* lane; ///< null: the track itself
        int before;
    };

    int heightOf(const CTrack* track) const {
        const auto& all = list.state.rows.all();
        const auto row = std::find_if(all.begin(), all.end(), [track](const ArrangeRow& r) {
            return r.songTrack->track == track && r.ofTrack();
        });
        return row == all.end() ? track->getRowHeight() : row->height;
    }
    /// An undo in the middle of it may have taken the track away.
    void set(const Sized& s, int pixels) const {
        const CSeq* seq = list.state.seq();
        if (!seq || !seq->tracks.contains(s.track)) return;
        const int height = asMinMax(pixels, CTrack::leastRow, CTrack::mostRow);
        if (!s.lane)
            s.track->setRowHeight(height);
        else if (s.track->subTracks.contains(s.lane))
            s.lane->height = height;
    }

    HeadList& list;
    std::vector<Sized> sized;
};

class MoveDrag : public DragHandler {
public:
    MoveDrag(HeadList& over, CSongTrack* pressed, bool stripe)
        : list(over), track(pressed), onStripe(stripe) {}

    void dragClick(const DragPoint&) override {
        if (onStripe)
            list.askColour();
        else if (stands())
            list.choose(track, 0);
    }
    void dragBegin(const DragPoint&) override {
        for (CSongTrack* t : list.together(track)) moved.push_back(t->track);
    }
    void dragMove(const DragPoint& point) override {
        at = point.at.y;
        findTarget();
    }
    void dragEnd(const DragPoint&) override {
        list.showMark(-1, false);
        if (stands() && found) moveTracksTo(list.state.seq(), moved, target);
    }
    void dragCancel() override { list.showMark(-1, false); }
    CPoint dragScroll(CPoint by) override {
        const int before = list.state.edit.scrollY;
        list.state.scrollTo(list.state.axis().scroll(), before + by.y);
        return asPoint(0, list.state.edit.scrollY - before);
    }

private:
    bool stands() const {
        const CSeq* seq = list.state.seq();
        return seq && seq->tracks.contains(track->track);
    }
    /// Into a folder over the middle of its row; else before or behind the row, whichever is
    /// nearer.
    void findTarget() {
        const ArrangeRow* row = list.rowAt(at);
        const auto& rows = list.state.rows.all();
        found = !rows.empty();
        if (!found) return;
        if (!row) row = at < 0 ? &rows.front() : &rows.back();
        CTrack* over = row->songTrack->track;
        const int top = list.topOf(*row), quarter = row->height / 4;
        const bool folder = over->kind == trackFolder;
        if (folder && at >= top + quarter && at < top + row->height - quarter) {
            target = {nullptr, over};
            list.showMark(top, true);
        } else if (at < top + row->height / 2 && row->ofTrack()) {
            target = {over, over->folder};
            list.showMark(top, false);
        } else {
            target = behind(*row);
            list.showMark(top + row->height, false);
        }
        if (!canMoveTracksTo(moved, target)) {
            found = false;
            list.showMark(-1, false);
        }
    }
    TrackTarget behind(const ArrangeRow& row) const {
        CTrack* over = row.songTrack->track;
        const auto& all = list.state.seq()->tracks;
        auto* next = all.next(over);
        const bool first = over->kind == trackFolder && over->open();
        if (first || over->kind != trackFolder) return {next, first ? over : over->folder.load()};
        while (next && isInside(next, over)) next = all.next(next);
        return {next, over->folder};
    }

    HeadList& list;
    CSongTrack* const track;
    const bool onStripe;
    std::vector<CTrack*> moved;
    TrackTarget target{};
    bool found = false;
    int at = 0;
};

} // namespace

std::unique_ptr<DragHandler> switchDrag(HeadList& list, TrackSwitch which, CSongTrack* first) {
    return std::make_unique<SwitchDrag>(list, which, first);
}

std::unique_ptr<DragHandler> sizeDrag(HeadList& list, const RowHead& head) {
    return std::make_unique<SizeDrag>(list, head);
}

std::unique_ptr<DragHandler> moveDrag(HeadList& list, CSongTrack* track, bool onStripe) {
    return std::make_unique<MoveDrag>(list, track, onStripe);
}

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeView.h"
#include "arrange/HeadList.h"
#include "arrange/Overview.h"
#include "arrange/RulerBars.h"
#include "arrange/SongRange.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <cmath>

/// What of the song the view shows, and how large.

namespace {

constexpr double zoomStep = 1.25;
constexpr int fitMargin = 16;        ///< pixels beside what is zoomed or turned to
constexpr double leastFactor = 1.02; ///< of the rows' zoom: finer steps wait for others
constexpr size_t mostPlaces = 64;    ///< that can be zoomed back to

int scaled(int pixels, double factor) {
    return asMinMax(asRound(pixels * factor), CTrack::leastRow, CTrack::mostRow);
}

} // namespace

// Scrolling.

void ArrangeView::moveTo(int64_t x, int y) {
    const int64_t before = edit.axis.scroll();
    const int beforeY = edit.scrollY;
    edit.axis.scrollTo(std::min(x, std::max(before, songWidth() - gridWidth())));
    edit.scrollY = asMinMax(y, 0, mostScrollY());
    const int64_t dx =
        std::clamp<int64_t>(before - edit.axis.scroll(), -TimeAxis::farX, TimeAxis::farX);
    const int dy = beforeY - edit.scrollY;
    if (dx == 0 && dy == 0) return;
    grid->scrolled(int(dx), dy);
    if (dx != 0) ruler->scrolled(int(dx));
    if (dy != 0) heads->place();
    showRange();
}

void ArrangeView::scrollTo(int64_t x, int y) {
    const int64_t before = edit.axis.scroll();
    moveTo(x, y);
    if (edit.axis.scroll() != before) following.stray();
}

/// Not while the mouse drags something.
void ArrangeView::followPlay() {
    const int64_t at = seq() ? edit.axis.wideX(seq()->getPos()) : 0;
    const bool plays = qv->playing && !qv->renderMode && seq();
    const int64_t by = following.shift(plays, at - edit.axis.scroll(), gridWidth());
    if (by && !win->app->drag.of(grid)) moveTo(edit.axis.scroll() + by, edit.scrollY);
}

// Zoom along the song.

void ArrangeView::zoomAtPos(int x, double perQuarter) {
    edit.axis.zoomAt(x, perQuarter);
    following.stray();
    zoomed();
}

/// The song remembers it.
void ArrangeView::zoomed() {
    if (CSeq* song = seq()) song->options.setZoom(float(edit.axis.zoom()));
    grid->redraw();
    ruler->redraw();
    showRange();
    // The position lies elsewhere by this: it has not moved, and nothing is to be followed.
    grid->refresh();
    ruler->refresh();
}

void ArrangeView::zoom(double perQuarter) {
    const int middle = gridWidth() / 2;
    if (qv->playing && seq()) moveTo(edit.axis.wideX(seq()->getPos()) - middle, edit.scrollY);
    edit.axis.zoomAt(middle, perQuarter);
    zoomed();
}

ArrangeView::Place ArrangeView::place() const {
    return {edit.axis.zoom(), edit.axis.scroll(), edit.scrollY};
}

void ArrangeView::zoomTo(int from, int to, int y) {
    const Place before = place();
    TimeAxis& axis = edit.axis;
    axis.setZoom(asMax(1, gridWidth() - 2 * fitMargin) * 960.0 / asMax(1, to - from));
    axis.scrollTo(axis.wideX(from) - fitMargin);
    edit.scrollY = asMinMax(y, 0, mostScrollY());
    heads->place();
    zoomed();
    if (place() == before) return;
    if (zoomedFrom.size() == mostPlaces) zoomedFrom.erase(zoomedFrom.begin());
    zoomedFrom.push_back(before);
}

/// The range, else the selected parts, else the song. The first row of it comes into view.
void ArrangeView::zoomToSelection() {
    if (const TimeRange* chosen = range.get())
        return zoomTo(chosen->from, chosen->to, edit.scrollY);
    int from = maxTicks, to = 0, y = edit.scrollY;
    bool any = false;
    for (const ArrangeRow& row : rows.all()) {
        if (!row.ofTrack()) continue;
        for (auto* part : row.songTrack->parts) {
            if (!part->selected()) continue;
            if (!any) y = asMinMax(y, row.bottom() - gridHeight(), row.top);
            any = true;
            from = asMin(from, part->pos);
            to = asMax(to, limitTicks(int64_t(part->pos) + seq()->getTicks(part)));
        }
    }
    if (from < to)
        zoomTo(from, to, y);
    else
        zoomToSong();
}

void ArrangeView::zoomToSong() {
    zoomTo(0, asMax(barTicks, seq()->renderDuration()), edit.scrollY);
}

void ArrangeView::zoomBack() {
    const Place to = zoomedFrom.back();
    zoomedFrom.pop_back();
    edit.axis.setZoom(to.zoom);
    edit.axis.scrollTo(to.x);
    edit.scrollY = asMinMax(to.y, 0, mostScrollY());
    heads->place();
    zoomed();
}

// Zoom of the rows.

void ArrangeView::zoomRowsAt(int y, double factor) {
    rowFactor *= factor;
    const ArrangeRow* under = rows.nearest(y + edit.scrollY);
    if (!under || std::abs(std::log(rowFactor)) < std::log(leastFactor)) return;
    const ArrangeRow before = *under;
    for (const ArrangeRow& row : rows.all()) {
        CTrack* track = row.songTrack->track;
        const bool flat = track->kind == trackFolder && !track->ownRowHeight();
        if (row.lane)
            row.lane->height = scaled(row.height, rowFactor);
        else if (row.ofTrack() && !flat)
            track->setRowHeight(scaled(row.height, rowFactor));
    }
    rowFactor = 1;
    rows.build(seq());
    for (const ArrangeRow& row : rows.all()) {
        if (row.songTrack != before.songTrack || row.lane != before.lane || row.take != before.take)
            continue;
        const double within = double(y + edit.scrollY - before.top) / before.height;
        edit.scrollY = row.top + asRound(within * row.height) - y;
    }
    rowsChanged();
}

/// Around the selected track, where it is in view.
void ArrangeView::zoomRows(double factor) {
    int y = gridHeight() / 2;
    for (const ArrangeRow& row : rows.all()) {
        const int at = row.top - edit.scrollY;
        if (!row.songTrack->track->selected() || !row.ofTrack() || at < 0 || at >= gridHeight())
            continue;
        y = at;
        break;
    }
    zoomRowsAt(y, factor);
}

// The wheel beside the grid.

/// In the strip of the whole song at the time that is pressed there.
CPoint ArrangeView::overGrid(CPoint at) const {
    int x = at.x - grid->left;
    if (at.y >= overview->top && at.y < overview->top + overview->height)
        x = edit.axis.xOf(x * overview->total() / asMax(1, overview->width));
    return asPoint(asMinMax(x, 0, gridWidth() - 1),
                   asMinMax(at.y - gridTop(), 0, gridHeight() - 1));
}

bool ArrangeView::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CGroup::mouseWheel(x, y, btn, dy, dx)) return true;
    const CPoint at = overGrid(asPoint(x, y));
    return seq() && grid->mouseWheel(at.x, at.y, btn, dy, dx);
}

bool ArrangeView::touch(int x, int y, int btn, const TouchStep& step) {
    const CPoint at = overGrid(asPoint(x, y));
    return seq() && grid->touch(at.x, at.y, btn, step);
}

void ArrangeView::bindZoom() {
    const auto withSong = [this] { return seq() != nullptr; };
    actions.bind(
        "zoomin", [this] { zoom(edit.axis.zoom() * zoomStep); }, withSong);
    actions.bind(
        "zoomout", [this] { zoom(edit.axis.zoom() / zoomStep); }, withSong);
    actions.bind(
        "zoomselection", [this] { zoomToSelection(); }, withSong);
    actions.bind(
        "zoomsong", [this] { zoomToSong(); }, withSong);
    actions.bind(
        "zoomback", [this] { zoomBack(); },
        [this] { return seq() != nullptr && !zoomedFrom.empty(); });
    actions.bind(
        "rowshigher", [this] { zoomRows(zoomStep); }, withSong);
    actions.bind(
        "rowslower", [this] { zoomRows(1 / zoomStep); }, withSong);
    actions.bind(
        "autoscroll", [this] { following.follows.toggle(); }, withSong,
        [this] { return following.follows.on(); });
    actions.bind(
        "glide", [this] { following.glides.toggle(); },
        [this] { return seq() != nullptr && following.follows.on(); },
        [this] { return following.glides.on(); });
}

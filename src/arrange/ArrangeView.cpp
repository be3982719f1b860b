#include "arrange/ArrangeView.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeKeys.h"
#include "arrange/HeadCorner.h"
#include "arrange/HeadList.h"
#include "arrange/ObjectBar.h"
#include "arrange/Overview.h"
#include "arrange/RulerBars.h"
#include "arrange/SnapBar.h"
#include "arrange/SongRange.h"
#include "arrange/TrackCommands.h"
#include "arrange/TrackHead.h"
#include "arrange/TrackNotes.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CRangebar.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"
#include "ui/Invitation.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <initializer_list>

namespace {

constexpr int barWidth = 14;
constexpr int headWidth = TrackHead::headWidth;
constexpr int gridLeft = headWidth + 1;
constexpr double room = 1.25;  ///< that can be scrolled through, in lengths of the song
constexpr int leastBars = 64;  ///< of it
constexpr int spareBelow = 44; ///< pixels under the last row
constexpr const char* emptyText = "No tracks yet. Add one, bring in a file, or drop files here.";
const std::vector<Invitation::Way> emptyWays = {{"addtrack", "Add instrument"},
                                                {"addaudio", "Add audio track"},
                                                {"adddrum", "Add drum track"},
                                                {"importaudio", "Import audio..."},
                                                {"importmidi", "Import MIDI file..."}};

} // namespace

ArrangeView::ArrangeView(CWin* owner, Workspace& space, SongRange& songRange)
    : CGroup(owner, "song", 0, 0, owner->clientGroup->width, owner->clientGroup->height),
      ArrangeState(space, songRange), drops(*this), objectsShown(space.host(), "object-bar", 1),
      following(space.host()), snapBar(new SnapBar(win, *this)),
      objectBar(new ObjectBar(win, *this)), corner(new HeadCorner(win, *this)),
      heads(new HeadList(win, *this)), overview(new Overview(win, *this)),
      ruler(new RulerBars(win, *this)), grid(new ArrangeGrid(win, *this)),
      empty(new Invitation(win, space, "empty")),
      across(new CRangebar(win, "across", 0, 0, 1, barWidth)),
      down(new CRangebar(win, "down", 0, 0, barWidth, 1)) {
    setAlign(alignWidth | alignHeight, 0, 0);
    empty->set("Empty song", emptyText, emptyWays);
    for (CCtrl* part : std::initializer_list<CCtrl*>{snapBar, objectBar, corner, heads, overview,
                                                     ruler, grid, empty, across, down})
        addControl(part);
    down->vertical = true;
    across->hint = "Drag to scroll, drag an end to zoom";
    across->spokenName = "Scroll along the song";
    down->spokenName = "Scroll the tracks";
    across->onChange = new _COnChange<ArrangeView>(this, &ArrangeView::acrossMoved);
    overview->onChange = new _COnChange<ArrangeView>(this, &ArrangeView::overviewMoved);
    down->onChange = new _COnChange<ArrangeView>(this, &ArrangeView::downMoved);
    onDragOver = new _COnMouse<ArrangeView>(this, &ArrangeView::dragOver);
    grid->drops = &drops;
    NoticeRouter& notices = workspace.notices();
    links = {notices.on({.host = HostNotice::graph, .song = SeqNotice::tracks},
                        [this] { songChanged(); }),
             notices.on({.host = HostNotice::peaks | HostNotice::takes, .song = SeqNotice::parts},
                        [this] { partsChanged(); }),
             notices.on({.host = HostNotice::step}, [this] { heads->cablesChanged(); })};
    bindCommands();
    ArrangeState& shared = *this;
    trackCommands = std::make_unique<TrackCommands>(shared, *heads);
    range.onChange = [this] { gridChanged(); };
    songChanged();
}

ArrangeView::~ArrangeView() = default;

void ArrangeView::onMenus(COnChange* headMenu, COnChange* partsMenu) {
    heads->onHeadMenu = headMenu;
    grid->onPartsMenu = partsMenu;
}

void ArrangeView::songChanged() {
    if (win->app->drag.of(grid)) win->app->drag.cancel();
    if (CSeq* song = seq(); song && song != shownSong) {
        shownSong = song;
        edit.axis = TimeAxis();
        edit.axis.setZoom(song->options.zoom());
        edit.scrollY = 0;
        zoomedFrom.clear();
    }
    range.keepTracksOf(seq());
    rows.build(seq());
    measureSong();
    heads->songChanged();
    overview->songChanged();
    grid->songChanged();
    layout();
}

void ArrangeView::measureSong() {
    songTicks = seq() ? seq()->renderDuration() : 0;
}

void ArrangeView::partsChanged() {
    if (RowLayout now; now.build(seq()), now.all().size() != rows.all().size()) rowsChanged();
    measureSong();
    overview->songChanged();
    grid->songChanged();
    ruler->redraw();
    showRange();
}

bool ArrangeView::refresh() {
    followPlay();
    bool changed = ruler->refresh();
    changed = grid->refresh() || changed;
    return heads->followSound() || changed;
}

void ArrangeView::idle() {
    if (objectBar->visible != objectsShown.on()) layout();
    drops.idle();
    ruler->idle();
    snapBar->refresh();
    if (objectBar->CCtrl::shown()) objectBar->refresh(); // it walks the parts of the song
    grid->idle();
    heads->refresh();
}

// Layout.

int ArrangeView::gridTop() const {
    return snapBar->height + overview->height + ruler->wantedHeight();
}

int ArrangeView::gridWidth() const {
    return asMax(1, width - gridLeft - barWidth);
}

int ArrangeView::gridHeight() const {
    return asMax(1, height - gridTop() - barWidth);
}

int ArrangeView::mostScrollY() const {
    return asMax(0, rows.total() + spareBelow - gridHeight());
}

int64_t ArrangeView::songWidth() const {
    return asInt64(edit.axis.pixelsIn(std::max(songTicks * room, double(leastBars) * barTicks))) +
           gridWidth();
}

void ArrangeView::layout() {
    const int w = gridWidth(), h = gridHeight();
    const int barHeight = snapBar->height;
    objectBar->visible = objectsShown.on();
    snapBar->setBounds(0, 0, objectBar->visible ? int(SnapBar::barWidth) : width, barHeight);
    objectBar->setBounds(SnapBar::barWidth, 0, asMax(1, width - SnapBar::barWidth), barHeight);
    objectBar->resized();
    corner->setBounds(0, barHeight, headWidth, gridTop() - barHeight);
    corner->resized();
    heads->setBounds(0, gridTop(), headWidth, h + barWidth);
    overview->setBounds(gridLeft, barHeight, w, overview->height);
    ruler->setBounds(gridLeft, barHeight + overview->height, w + barWidth, ruler->wantedHeight());
    ruler->resized();
    grid->setBounds(gridLeft, gridTop(), w, h);
    empty->setBounds(gridLeft, gridTop(), w, h);
    empty->resized();
    showEmpty();
    across->setBounds(gridLeft, gridTop() + h, w, barWidth);
    down->setBounds(gridLeft + w, gridTop(), barWidth, h);
    edit.scrollY = asMinMax(edit.scrollY, 0, mostScrollY());
    heads->place();
    showRange();
    redraw();
}

/// The bars count in ticks and in pixels of rows.
void ArrangeView::showRange() {
    const TimeAxis& axis = edit.axis;
    const double seen = axis.ticksIn(gridWidth());
    const double whole = std::max(axis.ticksIn(double(songWidth())), axis.ticksAt(gridWidth()));
    across->setContent(whole, std::min(whole, double(gridWidth()) * 960 / TimeAxis::mostZoom));
    across->setRange(axis.ticksAt(0), seen);
    overview->setContent(whole, std::min(whole, double(gridWidth()) * 960 / TimeAxis::mostZoom));
    overview->setRange(axis.ticksAt(0), seen);
    const int all = asMax(gridHeight(), rows.total() + spareBelow);
    down->setContent(all, gridHeight());
    down->setRange(edit.scrollY, gridHeight());
}

void ArrangeView::acrossMoved(CObject*) {
    showSpan(*across);
}

void ArrangeView::overviewMoved(CObject*) {
    showSpan(*overview);
}

void ArrangeView::showSpan(const CRangebar& bar) {
    TimeAxis& axis = edit.axis;
    axis.setZoom(gridWidth() * 960.0 / bar.span());
    axis.scrollTo(asRound64(axis.pixelsIn(bar.from())));
    zoomed();
}

void ArrangeView::downMoved(CObject*) {
    scrollTo(edit.axis.scroll(), asRound(down->from()));
}

void ArrangeView::rowsChanged() {
    rows.build(seq());
    grid->redraw();
    layout();
}

void ArrangeView::gridChanged() {
    grid->redraw();
}

void ArrangeView::resized() {
    CGroup::resized();
    layout();
}

void ArrangeView::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(headWidth, 0, headWidth + 1, height));
    CGroup::paint(g, rect);
}

// For the program around.

void ArrangeView::addTargets(CPopup* popup) {
    if (seq()) heads->addTargets(popup);
}

bool ArrangeView::isForNotes(const CStr& action) const {
    return ::isForNotes(*this, action);
}

bool ArrangeView::runOnNotes(const CStr& action) {
    return ::runOnNotes(*this, action);
}

bool ArrangeView::arrowKey(int key, int mods) {
    if (notesKey(*this, key, mods)) return true;
    if (editKey(*this, key, mods)) return true;
    return mods == 0 && (key == ::keyUp || key == ::keyDown) &&
           heads->stepTrack(key == ::keyUp ? -1 : 1);
}

int ArrangeView::tickAt(int x) const {
    return asMinMax(asInt(edit.axis.ticksAt(x - gridLeft)), 0, maxTicks);
}

// Drops.

/// Also told when the pointer has gone elsewhere.
void ArrangeView::dragOver(CObject*, int x, int y, int btn) {
    const CApp* app = win->app;
    if (app->dragOverCtrl == this && app->dragList)
        drops.over(*app->dragList, asPoint(x - gridLeft, y - gridTop()), btn);
    else
        drops.leave();
    showEmpty();
}

DropPlan ArrangeView::dropsAt(int x, int y, int btn) {
    DropPlan plan = drops.take(*win->app->dragList, asPoint(x - gridLeft, y - gridTop()), btn);
    showEmpty();
    return plan;
}

/// Files that hover are shown on the grid.
void ArrangeView::showEmpty() {
    const bool shown = seq() && rows.all().empty() && !drops.hovering();
    if (shown == empty->visible && grid->visible != shown) return;
    empty->visible = shown;
    grid->visible = !shown;
    redraw();
}

void ArrangeView::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Song";
}

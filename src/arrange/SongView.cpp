#include "arrange/SongView.h"

#include "arrange/CTimeline.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CScrollbar.h"
#include "sequencer/CSeq.h"
#include "sequencer/SongValues.h"
#include "ui/CMeter.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/TrackPalette.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int gap = 4;
constexpr int margin = 8;
constexpr int stripe = 4; ///< of a track's colour at the left of its row
constexpr int barWidth = 14;
constexpr int barSteps = 4; ///< of the scroll bar, for a row

/// The channel that makes a track heard: that of the first component which its output feeds.
COutputChannel* soundOf(CQV* qv, CTrack* track) {
    if (COutputChannel* own = track->output()) return own;
    for (CComp* c : each<CComp>(qv->comps))
        if (c->output() && fedBy(c, track->outPort())) return c->output();
    return nullptr;
}

} // namespace

CTrackRow::CTrackRow(CWin* owner, CQV* host, CSongTrack* shown, int h, int c)
    : CGroup(owner, "track", 0, 0, rowWidth, h), qv(host), track(shown), colour(c) {
    constexpr int buttonSize = 20, meterHeight = 9;
    int x = rowWidth - 2 * (buttonSize + gap) - gap;
    muteButton = new CButton(owner, "mute", "M", x, gap, buttonSize, buttonSize);
    soloButton = new CButton(owner, "solo", "S", x + buttonSize + gap, gap, buttonSize, buttonSize);
    muteButton->skin = &clTrackMute;
    muteButton->litSkin = &clTrackMutePushed;
    soloButton->skin = &clTrackSolo;
    soloButton->litSkin = &clTrackSoloPushed;
    muteButton->hint = "Mute the track";
    soloButton->hint = "Play only this track and others with solo";
    muteButton->onChange = new _COnChange<CTrackRow>(this, &CTrackRow::muteClicked);
    soloButton->onChange = new _COnChange<CTrackRow>(this, &CTrackRow::soloClicked);
    meter = new CMeter(owner, margin + stripe, h - meterHeight - margin,
                       rowWidth - 2 * margin - stripe, meterHeight);
    meter->item = &clTrackLed;
    meter->hint = "Level of the track's instrument";
    const CStr& name = track->track->id;
    muteButton->spokenName = "Mute, " + name;
    soloButton->spokenName = "Solo, " + name;
    meter->spokenName = "Level, " + name;
    for (CCtrl* ctrl : stops())
        if (ctrl != this) addControl(ctrl);
    findSound();
}

std::array<CCtrl*, CTrackRow::stopCount> CTrackRow::stops() {
    return {this, muteButton, soloButton, meter};
}

void CTrackRow::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const CGuiItem2& look = shownSelected ? clTrackSelected : clTrack;
    drawGuiItem(g, clientRect(), &look, drawBackground);
    g->fillRect(colour, asRect(0, 0, stripe, height - 1));
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    CRect name = asRect(margin + stripe, gap, muteButton->left - gap, gap + 20);
    if (shownFrozen) {
        g->drawText(colours.accent, "frozen", name, textRight);
        name.right -= g->textWidth("frozen") + gap;
    }
    g->drawText(look.textCol, track->track->id, name, textLeft);
    if (hasKeyFocus()) g->frameRect(colours.accent, asRect(0, 0, width, height - 1));
    CGroup::paint(g, rect);
}

void CTrackRow::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    // The menu of the right button is about what is selected.
    const bool forMenu = (btn & modRight) && !track->track->selected();
    if (!(btn & modLeft) && !forMenu) return;
    CSeq* seq = track->track->seq;
    const bool add = (btn & modControl) != 0;
    const bool on = !add || !track->track->selected();
    if (!add) seq->unselectTracks();
    seq->selectTrack(track, on);
}

void CTrackRow::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) static_cast<SongView*>(parent)->contextMenu();
}

void CTrackRow::muteClicked(CObject*) {
    qv->values->set(mutedOf(track), track->muted() ? 0.0 : 1.0);
}

void CTrackRow::soloClicked(CObject*) {
    qv->values->set(soloedOf(track), track->soloed() ? 0.0 : 1.0);
}

bool CTrackRow::refresh() {
    const bool selected = track->track->selected(), frozen = !track->freezeItems.empty();
    if (selected != shownSelected || frozen != shownFrozen) {
        shownSelected = selected;
        shownFrozen = frozen;
        redraw();
    }
    muteButton->setLit(track->muted());
    soloButton->setLit(track->soloed());
    return meter->refresh();
}

void CTrackRow::findSound() {
    meter->channel = soundOf(qv, track->track);
}

SongView::SongView(Workspace& workspace, int t, int w, int h)
    : CGroup(workspace.mainWindow(), "song", 0, t, w, h), qv(workspace.host()) {
    setAlign(alignWidth | alignHeight, 0, 0);
    NoticeRouter& notices = workspace.notices();
    links = {notices.on({.host = HostNotice::graph | HostNotice::peaks | HostNotice::takes,
                         .song = SeqNotice::tracks | SeqNotice::parts},
                        [this] { songChanged(); }),
             notices.on({.host = HostNotice::step}, [this] {
                 for (CTrackRow* row : rows) row->findSound();
             })};
    songChanged();
}

SongView::~SongView() {
    delete onHeadMenu;
}

void SongView::forgetSong() {
    rows.clear();
    timeline = nullptr;
    bar = nullptr;
    clear();
    redraw();
}

void SongView::songChanged() {
    const Place focus = focusPlace();
    forgetSong();
    timeline = new CTimeline(win, qv, CTrackRow::rowWidth + 1, 0, 1, height, rowHeight);
    addControl(timeline);
    bar = new CScrollbar(win, "scroll", 0, CTimeline::rulerHeight, barWidth, 1);
    bar->onChange = new _COnChange<SongView>(this, &SongView::barMoved);
    addControl(bar);
    if (CSeq* seq = playableSongOf(qv))
        for (auto* t : each<CSongTrack>(seq->getProg()->tracks)) {
            rows.push_back(new CTrackRow(win, qv, t, rowHeight, trackColour(int(rows.size()))));
            addControl(rows.back());
        }
    layout();
    focusOn(focus);
}

// The keys.

SongView::Place SongView::focusPlace() const {
    for (size_t i = 0; i < rows.size(); i++) {
        const auto stops = rows[i]->stops();
        const auto found = std::find(stops.begin(), stops.end(), win->keyCtrl);
        if (found != stops.end()) return {int(i), int(found - stops.begin())};
    }
    return {};
}

void SongView::focusOn(Place place) {
    if (place.row < 0 || rows.empty()) return;
    CTrackRow* row = rows[size_t(asMin(place.row, int(rows.size()) - 1))];
    win->setKeyCtrl(row->stops()[size_t(place.stop)]);
    markStops();
}

/// Of the row with the focus, else of the first one selected, else of the first one shown.
void SongView::markStops() {
    const Place focus = focusPlace();
    const CTrackRow* current = focus.row >= 0 ? rows[size_t(focus.row)] : nullptr;
    for (const bool any : {false, true})
        for (const CTrackRow* row : rows)
            if (!current && row->visible && (any || row->songTrack()->track->selected()))
                current = row;
    for (CTrackRow* row : rows)
        for (CCtrl* stop : row->stops()) stop->tabStop = row == current;
}

bool SongView::keyInside(int key, int mods) {
    const Place focus = focusPlace();
    if (focus.row < 0 || (mods & ~modShift)) return false;
    if (key == ::keyUp || key == ::keyDown) {
        const int by = key == ::keyUp ? -1 : 1, next = focus.row + by;
        if (next < 0 || next >= int(rows.size())) return true;
        selectRow(next, mods & modShift);
        focusOn({next, focus.stop});
        return true;
    }
    if (mods || (key != keyLeft && key != keyRight)) return false;
    const int stop = focus.stop + (key == keyLeft ? -1 : 1);
    focusOn({focus.row, asMinMax(stop, 0, CTrackRow::stopCount - 1)});
    return true;
}

bool SongView::contextMenu() {
    if (onHeadMenu) (*onHeadMenu)(this);
    return onHeadMenu;
}

int SongView::roomForRows() const {
    return asMax(1, (height - CTimeline::rulerHeight) / rowHeight);
}

void SongView::layout() {
    if (!timeline) return;
    const int count = int(rows.size()), room = roomForRows();
    firstRow = asMinMax(firstRow, 0, asMax(0, count - room));
    bar->visible = count > room;
    bar->setBounds(width - barWidth, CTimeline::rulerHeight, barWidth,
                   height - CTimeline::rulerHeight);
    bar->setRange(count * barSteps, room * barSteps);
    if (bar->scrollMode == 0) bar->setPos(firstRow * barSteps);
    const int start = CTrackRow::rowWidth + 1;
    timeline->setBounds(start, 0, width - start - (bar->visible ? barWidth : 0), height);
    timeline->setFirstRow(firstRow);
    for (int i = 0; i < count; i++) {
        const int y = CTimeline::rulerHeight + (i - firstRow) * rowHeight;
        rows[size_t(i)]->visible = i >= firstRow && y < height;
        rows[size_t(i)]->setBounds(0, y, CTrackRow::rowWidth, rowHeight);
    }
    redraw();
}

void SongView::scrollTo(int row) {
    const int before = firstRow;
    firstRow = row;
    layout();
    if (firstRow != before) timeline->songChanged();
}

void SongView::barMoved(CObject*) {
    scrollTo((bar->pos + barSteps / 2) / barSteps);
}

bool SongView::mouseWheel(int, int, int, int dy, int) {
    if (!timeline || !dy || !bar->visible) return false;
    scrollTo(firstRow + (dy > 0 ? -1 : 1));
    return true;
}

bool SongView::stepTrack(int by) {
    const int count = int(rows.size());
    int chosen = -1;
    for (int i = 0; i < count; i++)
        if (rows[size_t(i)]->songTrack()->track->selected() && (chosen < 0 || by > 0)) chosen = i;
    const int next = chosen < 0 ? 0 : chosen + by;
    if (next < 0 || next >= count) return false;
    selectRow(next, false);
    return true;
}

/// `besides`: those that are selected stay so.
void SongView::selectRow(int index, bool besides) {
    CSongTrack* track = rows[size_t(index)]->songTrack();
    CSeq* seq = track->track->seq;
    if (!besides) seq->unselectTracks();
    seq->selectTrack(track, true);
    scrollTo(asMinMax(firstRow, index - roomForRows() + 1, index));
}

CSongTrack* SongView::trackAt(int y) const {
    for (const CTrackRow* row : rows)
        if (row->visible && y >= row->top && y < row->top + row->height) return row->songTrack();
    return nullptr;
}

bool SongView::onTimeline(int x) const {
    return timeline && x >= timeline->left;
}

int SongView::tickAt(int x) const {
    return timeline ? timeline->tickAt(x - timeline->left) : 0;
}

void SongView::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const int heads = CTrackRow::rowWidth; // beside them the timeline covers all
    g->fillRect(colours.panel, clientRect());
    g->fillLine(colours.frame,
                asRect(0, CTimeline::rulerHeight - 1, heads, CTimeline::rulerHeight));
    g->fillLine(colours.frame, asRect(heads, 0, heads + 1, height));
    CGroup::paint(g, rect);
}

void SongView::resized() {
    CGroup::resized();
    layout();
    if (timeline) timeline->songChanged();
}

bool SongView::refresh() {
    bool changed = timeline && timeline->refresh();
    for (CTrackRow* row : rows)
        if (row->visible) changed = row->refresh() || changed;
    markStops();
    return changed;
}

void CTrackRow::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = track->track->id.asChar();
    d.action = "select";
    d.set(stateSelectable, true);
    d.set(stateSelected, shownSelected);
}

bool CTrackRow::pressPart(int) {
    CSeq* seq = track->track->seq;
    seq->unselectTracks();
    seq->selectTrack(track, true);
    return true;
}

void SongView::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Song";
}

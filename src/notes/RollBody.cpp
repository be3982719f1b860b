#include "notes/RollBody.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Selections.h"
#include "gui/controls/CRangebar.h"
#include "gui/controls/CScrollbar.h"
#include "instruments/CDrumSound.h"
#include "notes/CEventList.h"
#include "notes/DrumStrip.h"
#include "notes/KeyStrip.h"
#include "notes/LaneStack.h"
#include "notes/LaneView.h"
#include "notes/NoteEdits.h"
#include "notes/NoteGrid.h"
#include "notes/NoteObjects.h"
#include "notes/NoteRuler.h"
#include "notes/TransformBar.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "ui/ActionItems.h"
#include "ui/NoteDrawing.h"
#include "ui/PlaceText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int barWidth = 14;
constexpr int fitMargin = 24; ///< pixels before the part when it is shown first
constexpr double room = 2.0;  ///< that can be scrolled through, in lengths of the song
constexpr int zoomPixels = 2; ///< of a key, a step
constexpr double zoomStep = 1.25;
constexpr const char* heightKey = "editor-noteh"; ///< a setting of the program
constexpr int storedHeight = 8;
constexpr int leastGrid = 80; ///< pixels that lanes leave to the notes
constexpr int rowsAround = 2; ///< above and below what is fitted

} // namespace

RollBody::RollBody(CWin* owner, Workspace& space)
    : EditorBody(owner, "roll"), NoteState(space), objectsShown(qv, "object-bar", 1),
      listShown(qv, "event-list", 0), othersShown(qv, "other-notes", 0), foldOn(qv, "fold-rows", 0),
      coloursOn(qv, "note-colours", colourVelocity), togetherOn(qv, "edit-together", 1),
      following(qv), objects(new NoteObjects(owner, *this)),
      transform(new TransformBar(owner, *this)), list(new CEventList(owner, *this)),
      ruler(new NoteRuler(owner, *this)), keys(new KeyStrip(owner, *this)),
      drums(new DrumStrip(owner, *this)), grid(new NoteGrid(owner, *this)),
      lanes(new LaneStack(owner, *this)), across(new CRangebar(owner, "across", 0, 0, 1, barWidth)),
      down(new CScrollbar(owner, "down", 0, 0, barWidth, 1)) {
    noteHeight = asMinMax(qv->settings.getInt(heightKey, storedHeight), int(EventRows::leastHeight),
                          int(EventRows::mostHeight));
    for (CCtrl* child : std::initializer_list<CCtrl*>{objects, transform, list, ruler, keys, drums,
                                                      grid, lanes, across, down})
        addControl(child);
    across->spokenName = "Scroll along the part";
    down->spokenName = "Scroll the keys";
    across->onChange = new _COnChange<RollBody>(this, &RollBody::acrossMoved);
    down->onChange = new _COnChange<RollBody>(this, &RollBody::downMoved);
    onDragOver = new _COnMouse<RollBody>(this, &RollBody::gridDragOver);
    onDrop = new _COnMouse<RollBody>(this, &RollBody::gridDrop);
    lanes->onSized = new _COnChange<RollBody>(this, &RollBody::lanesSized);
    transform->visible = false;
    transform->onClosed = new _COnChange<RollBody>(this, &RollBody::transformClosed);
}

RollBody::~RollBody() = default;

CCtrl* RollBody::keyCtrl() {
    return grid;
}

// What is shown.

bool RollBody::onFrame() {
    if (!part || !seq()) return false;
    followPlay();
    return grid->refresh();
}

/// As long as it is within the part.
void RollBody::followPlay() {
    const double at = seq()->getPos();
    const bool plays = qv->playing && !qv->renderMode && at >= part->pos &&
                       at < double(part->pos) + seq()->getTicks(part);
    const int64_t x = edit.axis.wideX(at) - edit.axis.scroll();
    const int64_t by = following.shift(plays, x, gridWidth());
    if (by && !drags()) moveTo(edit.axis.scroll() + by, edit.scrollY);
}

bool RollBody::drags() const {
    return win->app->drag.of(grid) || lanes->dragged();
}

/// Whether what is dragged was made from the content that the parts have now.
bool RollBody::dragStands() const {
    const LaneView* lane = lanes->dragged();
    return lane ? lane->dragStands() : grid->dragStands();
}

void RollBody::songChanged() {
    if (drags() && !dragStands()) win->app->drag.cancel();
    songTicks = seq() ? seq()->renderDuration() : 0;
    followOthers();
    layout();
    list->contentChanged();
    shownChanged();
}

bool RollBody::shows(const CPart* wanted) const {
    return wanted->type == partMIDI || wanted->type == partDrum;
}

void RollBody::setPart(CPart* wanted, CTrack* on) {
    if (drags()) win->app->drag.cancel();
    const bool stays = wanted && std::ranges::find(others, wanted) != others.end();
    if (wanted != part) {
        if (transform->visible) transformClosed(nullptr);
        objects->callOff();
        list->callOff();
    }
    part = wanted;
    track = on;
    forgetOthers();
    songTicks = seq() ? seq()->renderDuration() : 0;
    lanes->setPart();
    followOthers();
    layout();
    if (part && !stays) fitPart();
    list->contentChanged();
    shownChanged();
}

void RollBody::idle() {
    if (objects->visible != objectsShown.on() || list->visible != listShown.on()) showBars();
    list->dropField();
    drums->idle();
    objects->dropField();
    transform->dropField();
    followSwitches();
    if (std::exchange(seq()->editorComp->transformAsked, false) && !transform->visible)
        openTransform();
    scrollInViewStepCursor();
}

void RollBody::followSwitches() {
    if (selectedBeside() != chosen || togetherOn.on() != alongOn) followOthers();
    const int gridNow = part && seq() ? shownGrid() : 0;
    if (folded == foldOn.on() && shownColours == coloursOn.get() && gridDrawn == gridNow) return;
    gridDrawn = gridNow;
    folded = foldOn.on();
    shownColours = coloursOn.get();
    scrollTo(edit.axis.scroll(), edit.scrollY);
    shownChanged();
}

int RollBody::colours() const {
    return shownColours;
}

/// Whether its notes have rows among those of the part.
bool RollBody::showsBeside(CPart* other) const {
    if (other == part || other->type != part->type) return false;
    return part->type == partMIDI || seq()->partToTrack(other) == track;
}

PartList RollBody::selectedBeside() const {
    PartList found;
    if (!part || !seq()) return found;
    for (const auto* t : seq()->getProg()->tracks)
        for (auto* p : t->parts)
            if (p->selected() && p->type == part->type && p != part) found.push_back(p);
    return found;
}

/// The selected parts, or with the switch all that sound while this one does.
PartList RollBody::beside() const {
    constexpr size_t most = 64;
    PartList found;
    if (!part || !seq()) return found;
    for (const auto* t : seq()->getProg()->tracks)
        for (auto* p : t->parts) {
            const auto meets = [&] {
                return p->pos < part->pos + seq()->getTicks(part) &&
                       p->pos + seq()->getTicks(p) > part->pos;
            };
            const bool wanted = p->selected() || (othersShown.on() && meets());
            if (wanted && showsBeside(p) && found.size() < most) found.push_back(p);
        }
    return found;
}

/// Of those beside it the selected ones are edited along, if it is selected too.
void RollBody::followOthers() {
    chosen = selectedBeside();
    alongOn = togetherOn.on();
    PartList now = beside(), along;
    for (CPart* p : now)
        if (alongOn && part->selected() && p->selected() && !seq()->isLocked(p)) along.push_back(p);
    if (now == others && along == together) return;
    if (drags()) win->app->drag.cancel();
    others = std::move(now);
    together = std::move(along);
    shownChanged();
}

void RollBody::turnTo(CPart* other) {
    workspace.openPart(other);
}

void RollBody::openTransform() {
    if (transform->visible) return transformClosed(nullptr);
    transform->visible = true;
    layout();
    redraw();
    win->setKeyCtrl(transform->firstCtrl());
    transform->open();
}

/// What was done stays.
void RollBody::transformClosed(CObject*) {
    transform->keep();
    transform->visible = false;
    layout();
    redraw();
    win->setKeyCtrl(grid);
}

void RollBody::scrollInViewStepCursor() {
    const CStepRec& steps = seq()->recorder.stepRec;
    const int now = steps.getPart() == part ? steps.getPos() : -1;
    if (now == shownStep) return;
    shownStep = now;
    if (now >= 0) scrollInView(now - part->offset, asMin(steps.note, rows().count() - 1));
    shownChanged();
}

void RollBody::showBars() {
    if (!listShown.on() && list->visible && win->keyCtrl == list) win->setKeyCtrl(grid);
    layout();
    list->contentChanged();
    shownChanged();
    redraw();
}

/// The part from side to side, and its notes in the middle.
void RollBody::fitPart() {
    const double ticks = asMax(barTicks, seq()->getTicks(part));
    edit.axis.setZoom(asMax(1, gridWidth() - 2 * fitMargin) * 960.0 / ticks);
    int low = EventRows::keys, high = -1;
    const std::vector<bool>& used = place().events->rows();
    for (int row = 0; row < int(used.size()); row++) {
        if (!used[size_t(row)]) continue;
        low = asMin(low, row);
        high = row;
    }
    const EventRows shownRows = rows();
    constexpr int middleKey = 60;
    const int middle = high >= 0 ? (low + high) / 2 : middleKey;
    const int y = shownRows.drums() ? 0 : shownRows.top(middle) - gridHeight() / 2;
    moveTo(edit.axis.wideX(part->pos) - fitMargin, y);
    shownChanged();
}

/// What is selected, or all there is, with keys as high as that allows.
void RollBody::fitNotes() {
    const bool all = !anySelected(parts());
    int from = maxTicks, to = 0, low = EventRows::keys, high = -1;
    for (CPart* p : parts())
        eachEvent(p->getEvents(), [&](CBaseEvent* e, int tick) {
            const NoteFacts facts = factsOf(p, e, tick);
            if (facts.length == 0 || (!all && !isSelected(e))) return;
            const int at = saturate(int64_t(p->pos) + p->offset + tick);
            from = asMin(from, at);
            to = asMax(to, saturate(int64_t(at) + facts.length));
            low = asMin(low, facts.row);
            high = asMax(high, facts.row);
        });
    if (high < 0) return fitPart();
    edit.axis.setZoom(asMax(1, gridWidth() - 2 * fitMargin) * 960.0 / asMax(1, to - from));
    if (part->type == partMIDI && !folded)
        setKeyHeight(gridHeight() / (high - low + 1 + 2 * rowsAround));
    const EventRows shownRows = rows();
    const int upper = asMin(shownRows.top(low), shownRows.top(high));
    const int lower = asMax(shownRows.top(low) + shownRows.height(low),
                            shownRows.top(high) + shownRows.height(high));
    scrollTo(edit.axis.wideX(from) - fitMargin, (upper + lower - gridHeight()) / 2);
    shownChanged();
}

/// The locators to the sides of the view, and the song loops between them.
void RollBody::loopVisible() {
    CSeqProg* prog = seq()->getProg();
    const double from = fLimit(edit.axis.ticksAt(0), 0.0, double(maxTicks));
    const double to = fLimit(edit.axis.ticksAt(gridWidth()), 0.0, double(maxTicks));
    if (to - from < 1) return;
    qv->values->set(locatorsOf(prog), {std::floor(from), std::floor(to)});
    if (prog->loop == 0 || qv->loop == 0) qv->values->set(loopOf(prog), {1.0, 1.0});
    workspace.setStatus("The song loops what is visible");
}

void RollBody::lanesSized(CObject*) {
    layout();
    redraw();
}

CPart* RollBody::shownPart(CPart* of) const {
    CPart* draft = grid->shownPart(of);
    if (!draft) draft = lanes->shownPart(of);
    return draft ? draft : of;
}

void RollBody::shownChanged() {
    draftChanged();
    grid->redraw();
    lanes->redrawLanes();
    side()->redraw();
    ruler->redraw();
    if (list->visible) list->redraw();
    objects->refresh();
    grid->refresh(); // the position may lie elsewhere, but has not moved
}

// Layout.

void RollBody::resized() {
    CGroup::resized();
    layout();
}

void RollBody::layout() {
    objects->visible = objectsShown.on();
    list->visible = listShown.on();
    const int barTop = objects->visible ? int(NoteObjects::barHeight) : 0;
    const int above = barTop + (transform->visible ? int(TransformBar::barHeight) : 0);
    const int gridTop = above + NoteRuler::rulerHeight;
    const int listed = list->visible ? asMin(int(CEventList::listWidth), width / 2) : 0;
    const int beside = leftWidth(), gridLeft = listed + beside;
    keys->visible = !part || part->type != partDrum;
    drums->visible = !keys->visible;
    const int wide = asMax(1, width - gridLeft - barWidth);
    const int room = asMax(0, height - gridTop - barWidth - leastGrid);
    const int below = asMin(lanes->wantedHeight(), room);
    const int high = asMax(1, height - gridTop - below - barWidth);
    objects->setBounds(0, 0, width, NoteObjects::barHeight);
    transform->setBounds(0, barTop, width, TransformBar::barHeight);
    list->setBounds(0, above, asMax(1, listed), asMax(1, height - above));
    ruler->setBounds(gridLeft, above, wide, NoteRuler::rulerHeight);
    side()->setBounds(listed, gridTop, beside, high);
    grid->setBounds(gridLeft, gridTop, wide, high);
    down->setBounds(gridLeft + wide, gridTop, barWidth, high);
    lanes->setBeside(beside);
    lanes->setBounds(listed, gridTop + high, beside + wide, below);
    for (CGroup* group : std::initializer_list<CGroup*>{objects, transform, list, lanes})
        group->resized();
    across->setBounds(gridLeft, height - barWidth, wide, barWidth);
    moveTo(edit.axis.scroll(), edit.scrollY);
}

CCtrl* RollBody::side() const {
    return drums->visible ? static_cast<CCtrl*>(drums) : keys;
}

int RollBody::leftWidth() const {
    return part && part->type == partDrum ? int(DrumStrip::stripWidth) : int(KeyStrip::stripWidth);
}

int RollBody::gridWidth() const {
    return grid->width;
}

int RollBody::gridHeight() const {
    return grid->height;
}

int RollBody::mostScrollY() const {
    return part && seq() ? asMax(0, rows().total() - gridHeight()) : 0;
}

int64_t RollBody::shownTicks() const {
    return int64_t(asMax(songTicks, barTicks) * room);
}

void RollBody::showRange() {
    across->setContent(double(shownTicks()), edit.axis.ticksIn(1));
    across->setRange(edit.axis.ticksAt(0), edit.axis.ticksIn(gridWidth()));
    down->setRange(part && seq() ? rows().total() : 1, gridHeight());
    down->setPos(edit.scrollY);
    down->redraw();
}

void RollBody::scrollTo(int64_t x, int y) {
    const int64_t before = edit.axis.scroll();
    moveTo(x, y);
    if (edit.axis.scroll() != before) following.stray();
}

void RollBody::moveTo(int64_t x, int y) {
    const int64_t beforeX = edit.axis.scroll();
    const int beforeY = edit.scrollY;
    const int64_t most = asInt64(edit.axis.pixelsIn(double(shownTicks())));
    edit.axis.scrollTo(std::min(x, most));
    edit.scrollY = asMinMax(y, 0, mostScrollY());
    const int dx = saturate(beforeX - edit.axis.scroll()), dy = beforeY - edit.scrollY;
    showRange();
    if (dx == 0 && dy == 0) return;
    grid->scrolled(dx, dy);
    if (dy != 0) side()->redraw();
    if (dx == 0) return;
    lanes->scrolled(dx);
    ruler->redraw();
}

void RollBody::scrollInView(int tick, int row) {
    const NotePlace at = place();
    const int x = at.xOf(edit.axis, tick), y = at.rows.top(row);
    const int64_t scroll = edit.axis.scroll();
    const bool aside = x < fitMargin || x > gridWidth() - 2 * fitMargin;
    const int high = at.rows.height(row);
    scrollTo(aside ? scroll + x - gridWidth() / 3 : scroll,
             asMinMax(edit.scrollY, y + high - gridHeight(), y));
}

void RollBody::zoomAtPos(int x, double zoom) {
    edit.axis.zoomAt(x, zoom);
    moveTo(edit.axis.scroll(), edit.scrollY);
    following.stray();
    shownChanged();
}

void RollBody::setKeyHeight(int pixels) {
    noteHeight = asMinMax(pixels, int(EventRows::leastHeight), int(EventRows::mostHeight));
    qv->settings.setInt(heightKey, noteHeight);
}

void RollBody::setVertZoom(int y, int keyHeight) {
    if (!part || part->type == partDrum) return;
    const double rowsAbove = double(edit.scrollY + y) / noteHeight;
    setKeyHeight(keyHeight);
    scrollTo(edit.axis.scroll(), asRound(rowsAbove * noteHeight) - y);
    shownChanged();
}

void RollBody::scrollOctaves(int by) {
    if (part) scrollTo(edit.axis.scroll(), edit.scrollY - by * EventRows::octave * noteHeight);
}

void RollBody::acrossMoved(CObject*) {
    edit.axis.setZoom(gridWidth() * 960.0 / across->span());
    scrollTo(asInt64(edit.axis.pixelsIn(across->from())), edit.scrollY);
    shownChanged();
}

void RollBody::downMoved(CObject*) {
    scrollTo(edit.axis.scroll(), down->pos);
}

// Files.

/// Beside the grid they come to the beginning of the part.
PartSpot RollBody::dropPlace(int x, int y) const {
    PartSpot at{seq(), track, part};
    const int snap = place().grid.snap;
    const int tick = asMinMax(asInt(edit.axis.ticksAt(x - grid->left)), 0, maxTicks);
    at.tick = x < grid->left ? int(part->pos) : asMax(int(part->pos), snapped(snap, tick, false));
    if (drums->visible && y >= drums->top) at.row = drums->rowAt(y - drums->top);
    return at;
}

void RollBody::gridDragOver(CObject*, int x, int y, int) {
    if (!part || !seq()) return;
    CStr told = "This part takes none of these files";
    for (auto* item : *win->app->dragList) {
        const SongFile kind = item->type == dropFile ? songFileOf(item->path) : SongFile::none;
        if (!partTakes(part, kind)) continue;
        const PartSpot at = dropPlace(x, y);
        const CDrumSound* sound = at.row < 0 ? nullptr : track->drumSound(at.row);
        if (kind != SongFile::audio)
            told = "Drop brings the notes in at " + placeText(seq(), at.tick);
        else
            told = sound ? "Drop makes it the sample of " + sound->getId() : "Drop adds a sound";
        break;
    }
    if (track->locked) told = "The track is locked";
    workspace.setStatus(told);
}

void RollBody::gridDrop(CObject*, int x, int y, int) {
    if (!part || !seq()) return;
    std::vector<CStr> paths;
    for (auto* item : *win->app->dragList)
        if (item->type == dropFile) paths.push_back(item->path);
    const CStr unread = dropOnPart(dropPlace(x, y), paths);
    if (!unread.empty())
        showMsg(workspace.mainWindow(), "Error", "Could not read " + extractFileName(unread));
    shownChanged();
}

// Actions and menus.

void RollBody::fillPart(CPopup* popup) {
    addActionItems(
        popup, workspace,
        {"transform", "quantize", "mutenotes", "glue", "splitatcursor", "insertnote", "steprec"});
    addActionItems(popup, workspace, {"painttool", "knifetool", "gluetool"});
    addActionItems(popup, workspace, {"loopvisible", "playlastbar"});
    addActionItems(popup, workspace,
                   {"zoomcontent", "octup", "octdown", "trackzoomin", "trackzoomout"});
}

void RollBody::fillOptions(CPopup* popup) {
    addActionItems(popup, workspace,
                   {"eventlist", "objectbar", "othernotes", "edittogether", "foldrows",
                    "computerkeys", "preview", "notenames", "notelength"});
    addActionItems(popup, workspace, {"colourvelocity", "colourchannel", "colourpitch"});
    addActionItems(popup, workspace, {"scalesnap", "outofscale"});
    addActionItems(popup, workspace, {"addlane", "removelane"});
}

bool RollBody::knowsAction(const CStr& name) const {
    if (name == "addlane") return lanes->canAdd();
    if (name == "removelane") return lanes->canRemove();
    if (name == "zoomcontent" || name == "loopvisible" || name == "playlastbar") return true;
    return name == "transform" || isEditAction(name);
}

/// What is the view's own, then what is done to the part.
bool RollBody::runAction(const CStr& name) {
    const auto zoom = [this](double factor) {
        zoomAtPos(gridWidth() / 2, edit.axis.zoom() * factor);
    };
    if (!part) return false;
    if (name == "transform")
        openTransform();
    else if (name == "octup" || name == "octdown")
        scrollOctaves(name == "octup" ? 1 : -1);
    else if (name == "trackzoomin" || name == "trackzoomout")
        setVertZoom(gridHeight() / 2,
                    noteHeight + (name == "trackzoomin" ? zoomPixels : -zoomPixels));
    else if (name == "zoomin" || name == "zoomout")
        zoom(name == "zoomin" ? zoomStep : 1 / zoomStep);
    else if (name == "zoomselection")
        fitPart();
    else if (name == "zoomcontent")
        fitNotes();
    else if (name == "loopvisible")
        loopVisible();
    else if (name == "addlane")
        lanes->add(lanes->count() - 1);
    else if (name == "removelane")
        lanes->removeAt(lanes->count() - 1);
    else
        return editAction(*this, name);
    return true;
}

#include "notes/RollBody.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CRangebar.h"
#include "gui/controls/CScrollbar.h"
#include "notes/CEventList.h"
#include "notes/DrumStrip.h"
#include "notes/KeyStrip.h"
#include "notes/LaneView.h"
#include "notes/NoteEdits.h"
#include "notes/NoteGrid.h"
#include "notes/NoteObjects.h"
#include "notes/NoteRuler.h"
#include "notes/TransformBar.h"
#include "sequencer/CSeq.h"
#include "sequencer/EventEdits.h"
#include "sequencer/PartEdits.h"
#include "ui/ActionItems.h"

#include <algorithm>

namespace {

constexpr int barWidth = 14;
constexpr int fitMargin = 24; ///< pixels before the part when it is shown first
constexpr double room = 2.0;  ///< that can be scrolled through, in lengths of the song
constexpr int zoomPixels = 2; ///< of a key, a step
constexpr double zoomStep = 1.25;
constexpr const char* heightKey = "editor-noteh"; ///< a setting of the program
constexpr int storedHeight = 8;
constexpr int plainLanes[] = {laneVelocity,  laneChance,     laneRepeats,  laneFlam,
                              lanePitchBend, laneAftertouch, lanePressure, laneProgram};
constexpr int controllers = 128;

} // namespace

RollBody::RollBody(CWin* owner, Workspace& space)
    : EditorBody(owner, "roll"), NoteState(space), objectsShown(qv, "object-bar", 1),
      listShown(qv, "event-list", 0), othersShown(qv, "other-notes", 0),
      objects(new NoteObjects(owner, *this)), transform(new TransformBar(owner, *this)),
      list(new CEventList(owner, *this)), ruler(new NoteRuler(owner, *this)),
      keys(new KeyStrip(owner, *this)), drums(new DrumStrip(owner, *this)),
      grid(new NoteGrid(owner, *this)), lane(new LaneView(owner, *this)),
      lanes(
          new CDropdown(owner, "lane", 0, 0, KeyStrip::stripWidth - 2, CDropdown::itemHeight + 4)),
      across(new CRangebar(owner, "across", 0, 0, 1, barWidth)),
      down(new CScrollbar(owner, "down", 0, 0, barWidth, 1)) {
    noteHeight = asMinMax(qv->settings.getInt(heightKey, storedHeight), int(EventRows::leastHeight),
                          int(EventRows::mostHeight));
    for (CCtrl* child : std::initializer_list<CCtrl*>{objects, transform, list, ruler, keys, drums,
                                                      grid, lane, lanes, across, down})
        addControl(child);
    across->spokenName = "Scroll along the part";
    down->spokenName = "Scroll the keys";
    lanes->spokenName = "Lane";
    lanes->hint = "What the lane shows";
    across->onChange = new _COnChange<RollBody>(this, &RollBody::acrossMoved);
    down->onChange = new _COnChange<RollBody>(this, &RollBody::downMoved);
    lanes->onChange = new _COnChange<RollBody>(this, &RollBody::laneChosen);
    transform->visible = false;
    transform->onClosed = new _COnChange<RollBody>(this, &RollBody::transformClosed);
    lane->onMenu = new _COnChange<RollBody>(this, &RollBody::laneMenu);
}

RollBody::~RollBody() = default;

CCtrl* RollBody::keyCtrl() {
    return grid;
}

// What is shown.

bool RollBody::onFrame() {
    return part && grid->refresh();
}

bool RollBody::drags() const {
    return win->app->drag.of(grid) || win->app->drag.of(lane);
}

/// Whether what is dragged was made from the content that the part has now.
bool RollBody::dragStands() const {
    return part && part->getEvents() == edit.editEvents;
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
    if (wanted != part && transform->visible) transformClosed(nullptr);
    part = wanted;
    track = on;
    forgetOthers();
    songTicks = seq() ? seq()->renderDuration() : 0;
    fillLanes();
    layout();
    followOthers();
    if (part && !stays) fitContent();
    list->contentChanged();
    shownChanged();
}

void RollBody::idle() {
    if (objects->visible != objectsShown.on() || list->visible != listShown.on()) showBars();
    list->dropField();
    drums->idle();
    objects->refresh();
    transform->dropField();
    followOthers();
    scrollInViewStepCursor();
}

/// The selected parts, or with the switch all that sound while this one does.
void RollBody::followOthers() {
    constexpr size_t most = 64;
    std::vector<CPart*> now;
    if (part && seq() && part->type == partMIDI)
        for (const auto* t : each<CSongTrack>(seq()->getProg()->tracks))
            for (auto* p : each<CPart>(t->parts)) {
                const bool meets = p->pos < part->pos + seq()->getTicks(part) &&
                                   p->pos + seq()->getTicks(p) > part->pos;
                const bool wanted = p->selected() || (othersShown.on() && meets);
                if (wanted && p != part && p->type == partMIDI && now.size() < most)
                    now.push_back(p);
            }
    if (now == others) return;
    others = std::move(now);
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
    const CStepRec& steps = seq()->stepRec;
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
void RollBody::fitContent() {
    const double ticks = asMax(barTicks, seq()->getTicks(part));
    edit.axis.setZoom(asMax(1, gridWidth() - 2 * fitMargin) * 960.0 / ticks);
    int low = EventRows::keys, high = -1;
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        const NoteFacts facts = factsOf(part, e, tick);
        if (facts.length == 0) return;
        low = asMin(low, facts.row);
        high = asMax(high, facts.row);
    });
    const EventRows shownRows = rows();
    constexpr int middleKey = 60;
    const int middle = high >= 0 ? (low + high) / 2 : middleKey;
    const int y = shownRows.drums() ? 0 : shownRows.top(middle) - gridHeight() / 2;
    scrollTo(edit.axis.wideX(part->pos) - fitMargin, y);
    shownChanged();
}

void RollBody::fillLanes() {
    lanes->items.clear();
    choices.clear();
    if (!part) return;
    for (const int kind : plainLanes)
        if (part->type == partMIDI || EventLane{kind, 0}.ofNotes()) choices.push_back({kind, 0});
    for (int i = 0; i < controllers && part->type == partMIDI; i++)
        choices.push_back({laneController, i});
    int chosen = 0; // the same as before, if this part has it
    for (const EventLane& choice : choices) {
        if (choice.kind == lane->lane.kind && choice.number == lane->lane.number)
            chosen = lanes->count();
        lanes->add(laneTitle(choice));
    }
    lane->lane = choices[size_t(chosen)];
    lanes->setIndex(chosen);
    lanes->redraw();
}

void RollBody::laneChosen(CObject*) {
    if (lanes->index < 0 || lanes->index >= int(choices.size())) return;
    lane->lane = choices[size_t(lanes->index)];
    lane->redraw();
}

void RollBody::laneMenu(CObject*) {
    lanes->drop();
}

CPart* RollBody::shownPart() const {
    CPart* draft = grid->shownPart();
    if (!draft) draft = lane->shownPart();
    return draft ? draft : part;
}

void RollBody::shownChanged() {
    draftChanged();
    grid->redraw();
    lane->redraw();
    side()->redraw();
    ruler->redraw();
    if (list->visible) list->redraw();
    objects->refresh();
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
    const int high = asMax(1, height - gridTop - laneHeight - barWidth);
    objects->setBounds(0, 0, width, NoteObjects::barHeight);
    transform->setBounds(0, barTop, width, TransformBar::barHeight);
    list->setBounds(0, above, asMax(1, listed), asMax(1, height - above));
    ruler->setBounds(gridLeft, above, wide, NoteRuler::rulerHeight);
    side()->setBounds(listed, gridTop, beside, high);
    grid->setBounds(gridLeft, gridTop, wide, high);
    down->setBounds(gridLeft + wide, gridTop, barWidth, high);
    lanes->setBounds(listed + 1, gridTop + high + 2, beside - 3, lanes->height);
    lane->setBounds(gridLeft, gridTop + high, wide, laneHeight);
    across->setBounds(gridLeft, height - barWidth, wide, barWidth);
    scrollTo(edit.axis.scroll(), edit.scrollY);
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
    lane->scrolled(dx);
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
    scrollTo(edit.axis.scroll(), edit.scrollY);
    shownChanged();
}

void RollBody::setVertZoom(int y, int keyHeight) {
    const int high = asMinMax(keyHeight, int(EventRows::leastHeight), int(EventRows::mostHeight));
    if (high == noteHeight || !part || part->type == partDrum) return;
    const double rowsAbove = double(edit.scrollY + y) / noteHeight;
    noteHeight = high;
    qv->settings.setInt(heightKey, high);
    scrollTo(edit.axis.scroll(), asRound(rowsAbove * high) - y);
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

// Actions and menus.

void RollBody::fillPart(CPopup* popup) {
    addActionItems(popup, workspace, {"transform", "quantize", "glue", "insertnote", "steprec"});
    addActionItems(popup, workspace, {"octup", "octdown", "trackzoomin", "trackzoomout"});
}

void RollBody::fillOptions(CPopup* popup) {
    addActionItems(popup, workspace,
                   {"eventlist", "objectbar", "othernotes", "computerkeys", "preview", "notenames",
                    "notelength"});
}

bool RollBody::knowsAction(const CStr& name) const {
    return name == "transform" || isNoteAction(name);
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
        fitContent();
    else
        return noteAction(*this, name);
    return true;
}

#include "notes/CEditorWin.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CRangebar.h"
#include "gui/controls/CScrollbar.h"
#include "notes/EditorBar.h"
#include "notes/KeyStrip.h"
#include "notes/LaneView.h"
#include "notes/NoteEdits.h"
#include "notes/NoteGrid.h"
#include "notes/NoteRuler.h"
#include "sequencer/CEditorComp.h"
#include "sequencer/CSeq.h"
#include "sequencer/EventEdits.h"
#include "sequencer/PartEdits.h"
#include "ui/ActionItems.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <initializer_list>

namespace {

constexpr int windowWidth = 900, windowHeight = 560;
constexpr int barWidth = 14;
constexpr int leftWidth = KeyStrip::stripWidth;
constexpr int fitMargin = 24; ///< pixels before the part when it is shown first
constexpr double room = 2.0;  ///< that can be scrolled through, in lengths of the song
constexpr int zoomPixels = 2; ///< of a key, a step
constexpr double zoomStep = 1.25;
constexpr const char* heightKey = "editor-noteh"; ///< a setting of the program
constexpr int storedHeight = 8;
constexpr int plainLanes[] = {laneVelocity, lanePitchBend, lanePressure, laneProgram};
constexpr int controllers = 128;

} // namespace

CEditorWin::CEditorWin(Workspace& space, CEditorComp& edited)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), edited.id, 200, 200, windowWidth,
                  windowHeight, winCaption | winSizable | winDockable, &edited, &space.commands()),
      NoteState(space), editor(edited), bar(new EditorBar(this, *this)),
      ruler(new NoteRuler(this, *this)), keys(new KeyStrip(this, *this)),
      grid(new NoteGrid(this, *this)), lane(new LaneView(this, *this)),
      lanes(new CDropdown(this, "lane", 0, 0, leftWidth - 2, CDropdown::itemHeight + 4)),
      across(new CRangebar(this, "across", 0, 0, 1, barWidth)),
      down(new CScrollbar(this, "down", 0, 0, barWidth, 1)) {
    editorType = groupArrange;
    noteHeight = asMinMax(qv->settings.getInt(heightKey, storedHeight), int(EventRows::leastHeight),
                          int(EventRows::mostHeight));
    for (CCtrl* child :
         std::initializer_list<CCtrl*>{bar, ruler, keys, grid, lane, lanes, across, down})
        addControl(child);
    across->spokenName = "Scroll along the part";
    down->spokenName = "Scroll the keys";
    lanes->spokenName = "Lane";
    lanes->hint = "What the lane shows";
    across->onChange = new _COnChange<CEditorWin>(this, &CEditorWin::acrossMoved);
    down->onChange = new _COnChange<CEditorWin>(this, &CEditorWin::downMoved);
    lanes->onChange = new _COnChange<CEditorWin>(this, &CEditorWin::laneChosen);
    lane->onMenu = new _COnChange<CEditorWin>(this, &CEditorWin::laneMenu);
    links = {workspace.notices().on(
        {.host = HostNotice::graph, .song = SeqNotice::tracks | SeqNotice::parts},
        [this] { songChanged(); })};
    app->follow(this);
    layout();
    setKeyCtrl(grid);
}

CEditorWin::~CEditorWin() = default;

// What is shown.

bool CEditorWin::onFrame() {
    if (!visible) return false;
    const CSeq* song = seq();
    if (!song || song->songNotices.raised(SeqNotice::tracks | SeqNotice::parts) ||
        qv->hostNotices.raised(HostNotice::graph | HostNotice::step))
        return false;
    return part && grid->refresh();
}

void CEditorWin::idle() {
    if (editor.part() != part) songChanged();
    bar->refresh();
}

/// Whether what is dragged was made from the content that the part has now.
bool CEditorWin::dragStands() const {
    return part && part->getEvents() == edit.editEvents;
}

void CEditorWin::songChanged() {
    const bool drags = app->drag.of(grid) || app->drag.of(lane);
    if (drags && !dragStands()) app->drag.cancel();
    songTicks = seq() ? seq()->renderDuration() : 0;
    if (editor.part() && (!seq() || !seq()->partToTrack(editor.part()))) editor.setPart(nullptr);
    if (editor.part() != part)
        showPart(editor.part());
    else
        layout();
    shownChanged();
}

void CEditorWin::showPart(CPart* wanted) {
    if (app->drag.of(grid) || app->drag.of(lane)) app->drag.cancel();
    const bool fits = wanted && (wanted->type == partMIDI || wanted->type == partDrum);
    part = fits ? wanted : nullptr;
    track = part ? seq()->partToTrack(part) : nullptr;
    fillLanes();
    layout();
    if (part) fitContent();
}

/// The part from side to side, and its notes in the middle.
void CEditorWin::fitContent() {
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

void CEditorWin::fillLanes() {
    lanes->items.clear();
    if (!part) return;
    for (const int kind : plainLanes)
        if (kind == laneVelocity || part->type == partMIDI) lanes->add(laneTitle({kind, 0}));
    for (int i = 0; i < controllers && part->type == partMIDI; i++)
        lanes->add(laneTitle({laneController, i}));
    if (part->type != partMIDI) lane->lane = {laneVelocity, 0};
    lanes->setIndex(asMax(0, lanes->index < lanes->count() ? lanes->index : 0));
    lanes->redraw();
}

void CEditorWin::laneChosen(CObject*) {
    constexpr int plain = int(std::size(plainLanes));
    const int index = lanes->index;
    if (index < 0) return;
    lane->lane =
        index < plain ? EventLane{plainLanes[index], 0} : EventLane{laneController, index - plain};
    lane->redraw();
}

void CEditorWin::laneMenu(CObject*) {
    lanes->drop();
}

CPart* CEditorWin::shownPart() const {
    CPart* draft = grid->shownPart();
    if (!draft) draft = lane->shownPart();
    return draft ? draft : part;
}

void CEditorWin::shownChanged() {
    grid->redraw();
    lane->redraw();
    keys->redraw();
    ruler->redraw();
}

// Layout.

void CEditorWin::resized() {
    CCompEditor::resized();
    layout();
}

void CEditorWin::layout() {
    const int w = clientGroup->width, h = clientGroup->height;
    const int gridTop = EditorBar::barHeight + NoteRuler::rulerHeight;
    const int wide = asMax(1, w - leftWidth - barWidth);
    const int high = asMax(1, h - gridTop - laneHeight - barWidth);
    bar->setBounds(0, 0, w, EditorBar::barHeight);
    ruler->setBounds(leftWidth, EditorBar::barHeight, wide, NoteRuler::rulerHeight);
    keys->setBounds(0, gridTop, leftWidth, high);
    grid->setBounds(leftWidth, gridTop, wide, high);
    down->setBounds(leftWidth + wide, gridTop, barWidth, high);
    lanes->setBounds(1, gridTop + high + 2, leftWidth - 3, lanes->height);
    lane->setBounds(leftWidth, gridTop + high, wide, laneHeight);
    across->setBounds(leftWidth, h - barWidth, wide, barWidth);
    scrollTo(edit.axis.scroll(), edit.scrollY);
}

int CEditorWin::gridWidth() const {
    return grid->width;
}

int CEditorWin::gridHeight() const {
    return grid->height;
}

int CEditorWin::mostScrollY() const {
    return part && seq() ? asMax(0, rows().total() - gridHeight()) : 0;
}

int64_t CEditorWin::shownTicks() const {
    return int64_t(asMax(songTicks, barTicks) * room);
}

void CEditorWin::showRange() {
    across->setContent(double(shownTicks()), edit.axis.ticksIn(1));
    across->setRange(edit.axis.ticksAt(0), edit.axis.ticksIn(gridWidth()));
    down->setRange(part && seq() ? rows().total() : 1, gridHeight());
    down->setPos(edit.scrollY);
    down->redraw();
}

void CEditorWin::scrollTo(int64_t x, int y) {
    const int64_t beforeX = edit.axis.scroll();
    const int beforeY = edit.scrollY;
    const int64_t most = asInt64(edit.axis.pixelsIn(double(shownTicks())));
    edit.axis.scrollTo(std::min(x, most));
    edit.scrollY = asMinMax(y, 0, mostScrollY());
    const int dx = saturate(beforeX - edit.axis.scroll()), dy = beforeY - edit.scrollY;
    showRange();
    if (dx == 0 && dy == 0) return;
    grid->scrolled(dx, dy);
    if (dy != 0) keys->redraw();
    if (dx == 0) return;
    lane->redraw();
    ruler->redraw();
}

void CEditorWin::scrollInView(int tick, int row) {
    const NotePlace at = place();
    const int x = at.xOf(edit.axis, tick), y = at.rows.top(row);
    const int64_t scroll = edit.axis.scroll();
    const bool aside = x < fitMargin || x > gridWidth() - 2 * fitMargin;
    const int high = at.rows.height(row);
    scrollTo(aside ? scroll + x - gridWidth() / 3 : scroll,
             asMinMax(edit.scrollY, y + high - gridHeight(), y));
}

void CEditorWin::zoomAtPos(int x, double zoom) {
    edit.axis.zoomAt(x, zoom);
    scrollTo(edit.axis.scroll(), edit.scrollY);
    shownChanged();
}

void CEditorWin::setVertZoom(int y, int keyHeight) {
    const int high = asMinMax(keyHeight, int(EventRows::leastHeight), int(EventRows::mostHeight));
    if (high == noteHeight || !part || part->type == partDrum) return;
    const double rowsAbove = double(edit.scrollY + y) / noteHeight;
    noteHeight = high;
    qv->settings.setInt(heightKey, high);
    scrollTo(edit.axis.scroll(), asRound(rowsAbove * high) - y);
    shownChanged();
}

void CEditorWin::scrollOctaves(int by) {
    if (part) scrollTo(edit.axis.scroll(), edit.scrollY - by * EventRows::octave * noteHeight);
}

void CEditorWin::acrossMoved(CObject*) {
    edit.axis.setZoom(gridWidth() * 960.0 / across->span());
    scrollTo(asInt64(edit.axis.pixelsIn(across->from())), edit.scrollY);
    shownChanged();
}

void CEditorWin::downMoved(CObject*) {
    scrollTo(edit.axis.scroll(), down->pos);
}

// Keys and actions.

bool CEditorWin::canRun(const CAction* action) const {
    return part && knowsAction(action->name);
}

void CEditorWin::mergeMenu(CMenu* bars) {
    bars->add("Part", new _COnChange<CEditorWin>(this, &CEditorWin::fillPart));
    bars->add("Options", new _COnChange<CEditorWin>(this, &CEditorWin::fillOptions));
}

void CEditorWin::fill(CObject* popup, std::initializer_list<const char*> names) {
    auto* entries = static_cast<CPopup*>(static_cast<CCtrl*>(popup));
    entries->addSeparator();
    for (const char* name : names) addActionItem(entries, workspace, name);
}

void CEditorWin::fillPart(CObject* popup) {
    fill(popup, {"quantize", "insertnote"});
    fill(popup, {"octup", "octdown", "trackzoomin", "trackzoomout"});
}

void CEditorWin::fillOptions(CObject* popup) {
    fill(popup, {"preview", "notenames", "notelength"});
    fill(popup, {"snap", "snaprelative", "snapadaptive", "snapPrior", "snapNext"});
}

/// What is the view's own; then what is done to the part, and then what the program does anywhere.
bool CEditorWin::onAction(CAction* action) {
    if (viewAction(action->name)) return true;
    return noteAction(*this, action->name) || workspace.commands().run(action);
}

bool CEditorWin::viewAction(const CStr& name) {
    const auto zoom = [this](double factor) {
        zoomAtPos(gridWidth() / 2, edit.axis.zoom() * factor);
    };
    if (!part) return false;
    if (name == "octup" || name == "octdown")
        scrollOctaves(name == "octup" ? 1 : -1);
    else if (name == "trackzoomin" || name == "trackzoomout")
        setVertZoom(gridHeight() / 2,
                    noteHeight + (name == "trackzoomin" ? zoomPixels : -zoomPixels));
    else if (name == "zoomin" || name == "zoomout")
        zoom(name == "zoomin" ? zoomStep : 1 / zoomStep);
    else if (name == "zoomselection")
        fitContent();
    else
        return false;
    return true;
}

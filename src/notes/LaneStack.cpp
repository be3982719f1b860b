#include "notes/LaneStack.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CSplit.h"
#include "notes/LaneView.h"
#include "notes/NoteState.h"
#include "sequencer/song/CPart.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>

namespace {

constexpr int usualHeight = 96, leastHeight = 32, mostHeight = 400;
constexpr int gap = 2, buttonSize = 18;
constexpr int controllers = 128;
constexpr int plainLanes[] = {laneVelocity,  laneChance,     laneRepeats,  laneFlam,
                              lanePitchBend, laneAftertouch, lanePressure, laneProgram};
constexpr const char* section = "options";

const char* keyOf(int partType) {
    return partType == partDrum ? "drum-lanes" : "note-lanes";
}

bool same(const EventLane& a, const EventLane& b) {
    return a.kind == b.kind && a.number == b.number;
}

} // namespace

LaneStack::LaneStack(CWin* owner, NoteState& shared)
    : CGroup(owner, "lanes", 0, 0, 1, 1), state(shared) {
    partType = partMIDI;
    fillChoices();
    read();
}

LaneStack::~LaneStack() {
    delete onSized;
}

void LaneStack::setPart() {
    if (!state.part || state.part->type == partType) return;
    partType = state.part->type;
    fillChoices();
    drop();
    read();
}

// Which there are.

/// Velocities at the least.
void LaneStack::read() {
    std::istringstream kept(CIniFile(inifile).readString(section, keyOf(partType), "").asChar());
    for (std::string one; int(lanes.size()) < mostLanes && std::getline(kept, one, ';');) {
        EventLane lane;
        int high = 0;
        if (std::sscanf(one.c_str(), "%d,%d,%d", &lane.kind, &lane.number, &high) != 3) continue;
        if (std::ranges::any_of(choices, [&](const EventLane& c) { return same(c, lane); }))
            put(lane, high, int(lanes.size()));
    }
    if (lanes.empty()) put({laneVelocity, 0}, usualHeight, 0);
}

void LaneStack::keep() {
    if (!state.qv->settingsEnabled) return;
    CStr text;
    for (const Lane& l : lanes)
        text += asStr(l.view->lane.kind) + "," + asStr(l.view->lane.number) + "," +
                asStr(l.view->height) + ";";
    CIniFile(inifile).writeString(section, keyOf(partType), text);
}

void LaneStack::fillChoices() {
    choices.clear();
    for (const int kind : plainLanes)
        if (partType == partMIDI || EventLane{kind, 0}.ofNotes()) choices.push_back({kind, 0});
    for (int i = 0; i < controllers && partType == partMIDI; i++)
        choices.push_back({laneController, i});
}

void LaneStack::put(EventLane lane, int high, int at) {
    Lane made{};
    made.view = new LaneView(win, state);
    made.view->lane = lane;
    made.view->height = asMinMax(high, leastHeight, mostHeight);
    made.view->onMenu = new _COnChange<LaneStack>(this, &LaneStack::laneMenu);
    made.chooser = new CDropdown(win, "lane", 0, 0, 1, CDropdown::itemHeight + 4);
    made.chooser->spokenName = "Lane";
    made.chooser->hint = "What the lane shows";
    made.chooser->onChange = new _COnChange<LaneStack>(this, &LaneStack::laneChosen);
    made.more = addButton("+", "Another lane below", &LaneStack::moreClicked);
    made.less = addButton("-", "Takes the lane away", &LaneStack::lessClicked);
    made.edge = new CSplit(win, "laneedge", 0, 0, 1, edgeHeight);
    made.edge->horizontal = false;
    made.edge->minSize = -mostHeight; // it never closes
    made.edge->maxSize = leastHeight;
    made.edge->target = made.view;
    made.edge->spokenName = "Height of the lane";
    made.edge->onChange = new _COnChange<LaneStack>(this, &LaneStack::edgeMoved);
    for (CCtrl* c :
         std::initializer_list<CCtrl*>{made.view, made.chooser, made.more, made.less, made.edge})
        addControl(c);
    lanes.insert(lanes.begin() + at, made);
    fill(lanes[size_t(at)]);
}

CButton* LaneStack::addButton(const char* sign, const char* tip,
                              void (LaneStack::*pressed)(CObject*)) {
    auto* made = new CButton(win, tip, sign, 0, 0, buttonSize, buttonSize);
    made->hint = made->spokenName = tip;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->onChange = new _COnChange<LaneStack>(this, pressed);
    return made;
}

void LaneStack::fill(Lane& lane) {
    lane.chooser->items.clear();
    for (const EventLane& choice : choices) {
        if (same(choice, lane.view->lane)) lane.chooser->index = lane.chooser->count();
        lane.chooser->add(laneTitle(choice));
    }
    lane.chooser->setIndex(lane.chooser->index);
}

void LaneStack::drop() {
    if (dragged()) win->app->drag.cancel();
    lanes.clear();
    clear();
}

void LaneStack::add(int behind) {
    if (!canAdd()) return;
    const auto shows = [this](const EventLane& choice) {
        return std::ranges::any_of(lanes,
                                   [&](const Lane& l) { return same(l.view->lane, choice); });
    };
    const auto next = std::ranges::find_if_not(choices, shows);
    if (next == choices.end()) return;
    put(*next, usualHeight, asMinMax(behind, -1, count() - 1) + 1);
    changed();
}

/// The others are made anew in their places: a control leaves only with its whole group.
void LaneStack::removeAt(int index) {
    if (!canRemove() || index < 0 || index >= count()) return;
    std::vector<std::pair<EventLane, int>> staying;
    for (int i = 0; i < count(); i++)
        if (const LaneView* v = lanes[size_t(i)].view; i != index)
            staying.emplace_back(v->lane, v->height);
    drop();
    for (const auto& [lane, high] : staying) put(lane, high, count());
    changed();
}

void LaneStack::changed() {
    keep();
    if (onSized) (*onSized)(this);
    resized();
    redraw();
}

// Layout.

int LaneStack::wantedHeight() const {
    int high = 0;
    for (const Lane& l : lanes) high += l.view->height + edgeHeight;
    return high;
}

void LaneStack::setBeside(int pixels) {
    beside = pixels;
}

void LaneStack::resized() {
    CGroup::resized();
    int y = 0;
    for (const Lane& l : lanes) {
        l.view->height = asMinMax(l.view->height, leastHeight, mostHeight);
        l.edge->setBounds(0, y, width, edgeHeight);
        y += edgeHeight;
        const int high = l.view->height;
        l.view->setBounds(beside, y, asMax(1, width - beside), high);
        l.chooser->setBounds(1, y + 1, beside - 3, l.chooser->height);
        const int below = y + 1 + l.chooser->height + gap;
        const bool under = below + buttonSize <= y + high;
        l.more->visible = l.less->visible = under;
        l.more->setBounds(1, below, buttonSize, buttonSize);
        l.less->setBounds(1 + buttonSize + gap, below, buttonSize, buttonSize);
        l.more->enabled = canAdd();
        l.less->enabled = canRemove();
        y += high;
    }
}

void LaneStack::edgeMoved(CObject*) {
    changed();
}

// What is done to them.

int LaneStack::laneOf(const CObject* ctrl) const {
    for (int i = 0; i < count(); i++) {
        const Lane& l = lanes[size_t(i)];
        for (const CObject* own :
             std::initializer_list<const CObject*>{l.view, l.chooser, l.more, l.less, l.edge})
            if (own == ctrl) return i;
    }
    return -1;
}

void LaneStack::laneChosen(CObject* sender) {
    const int at = laneOf(sender);
    if (at < 0) return;
    const Lane& l = lanes[size_t(at)];
    if (l.chooser->index < 0 || l.chooser->index >= int(choices.size())) return;
    l.view->lane = choices[size_t(l.chooser->index)];
    l.view->redraw();
    keep();
}

void LaneStack::laneMenu(CObject* sender) {
    const int at = laneOf(sender);
    if (at >= 0) lanes[size_t(at)].chooser->drop();
}

void LaneStack::moreClicked(CObject* sender) {
    add(laneOf(sender));
}

void LaneStack::lessClicked(CObject* sender) {
    removeAt(laneOf(sender));
}

void LaneStack::redrawLanes() {
    for (const Lane& l : lanes) l.view->redraw();
}

void LaneStack::scrolled(int dx) {
    for (const Lane& l : lanes) l.view->scrolled(dx);
}

LaneView* LaneStack::dragged() const {
    for (const Lane& l : lanes)
        if (win->app->drag.of(l.view)) return l.view;
    return nullptr;
}

CPart* LaneStack::shownPart(const CPart* of) const {
    const LaneView* view = dragged();
    return view ? view->shownPart(of) : nullptr;
}

void LaneStack::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Lanes";
}

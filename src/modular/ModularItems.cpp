// What the keys act on, and what is told of it.
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/ObjectKinds.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "modular/CompGlyphs.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/ModularView.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int moveStep = 8, farStep = 64; ///< pixels of a key
constexpr int cableBox = 12;              ///< the side of what stands for a cable

CPoint centre(const CRect& area) {
    return asPoint((area.left + area.right) / 2, (area.top + area.bottom) / 2);
}

constexpr int goLeft = Key::keyLeft, goRight = Key::keyRight, goUp = Key::keyUp,
              goDown = Key::keyDown; // which in a control are what handles keys

/// How far a point lies in a direction, with what lies aside counted more; -1 for the other way.
int distanceAlong(CPoint from, CPoint to, int key) {
    const int dx = to.x - from.x, dy = to.y - from.y;
    const int along = key == goLeft ? -dx : key == goRight ? dx : key == goUp ? -dy : dy;
    const int aside = std::abs(key == goLeft || key == goRight ? dy : dx);
    return along <= 0 ? -1 : along + 2 * aside;
}

bool isArrow(int key) {
    return key == goLeft || key == goRight || key == goUp || key == goDown;
}

} // namespace

// Parts: boxes, ports and cables, one behind the other.

int ModularView::partOf(const CObject* item) const {
    if (!item) return -1;
    const int boxes = int(model.boxes.size()), ports = int(model.ports.size());
    if (item->category == categoryComp) return model.boxOf(item);
    if (item->category != categoryCable) {
        const int port = model.portOf(item);
        return port < 0 ? -1 : boxes + port;
    }
    const int cable = model.cableOf(item);
    return cable < 0 ? -1 : boxes + ports + cable;
}

CObject* ModularView::itemOf(int part) const {
    const int boxes = int(model.boxes.size()), ports = int(model.ports.size());
    if (part < 0 || part >= accessParts()) return nullptr;
    if (part < boxes) return model.boxes[size_t(part)].comp;
    if (part < boxes + ports) return model.ports[size_t(part - boxes)].io;
    return model.cables[size_t(part - boxes - ports)].cable;
}

/// On the graph.
CRect ModularView::partArea(int part) const {
    const int boxes = int(model.boxes.size()), ports = int(model.ports.size());
    if (part < boxes) return model.boxes[size_t(part)].area;
    if (part < boxes + ports) return model.ports[size_t(part - boxes)].area();
    const auto middle = curveOf(model, model.cables[size_t(part - boxes - ports)]).at(0.5);
    const int x = asRound(middle.x), y = asRound(middle.y);
    return asRect(x - cableBox / 2, y - cableBox / 2, x + cableBox / 2, y + cableBox / 2);
}

/// None for as long as they may be gone.
int ModularView::accessParts() const {
    if (stale()) return 0;
    return int(model.boxes.size() + model.ports.size() + model.cables.size());
}

int ModularView::partAround(int part) const {
    const int boxes = int(model.boxes.size()), ports = int(model.ports.size());
    const bool port = part >= boxes && part < boxes + ports;
    return port ? model.ports[size_t(part - boxes)].box : wholeCtrl;
}

int ModularView::focusedPart() const {
    return stale() ? wholeCtrl : partOf(shown.focus);
}

CStr ModularView::spoken(int part) const {
    const int boxes = int(model.boxes.size()), ports = int(model.ports.size());
    if (part < boxes) {
        const CComp* comp = model.boxes[size_t(part)].comp;
        return boxName(comp) + ", " + compKindName(comp->type);
    }
    if (part >= boxes + ports) {
        const int cable = part - boxes - ports;
        const auto& c = model.cables[size_t(cable)];
        return CStr(c.midi ? "MIDI" : "Audio") + " cable " + cableName(model, cable) +
               (c.loops ? ", closes a loop" : "") + (isMuted(c.cable) ? ", muted" : "") +
               (watch.listened() == c.cable ? ", listened to" : "");
    }
    const int port = part - boxes;
    int joined = 0;
    for (const auto& cable : model.cables) joined += cable.from == port || cable.to == port;
    const CStr count = joined == 0   ? CStr("no cable")
                       : joined == 1 ? CStr("1 cable")
                                     : asStr(joined) + " cables";
    return fullPortName(model, port) + ", " + portKindName(model.ports[size_t(port)]) + ", " +
           count;
}

void ModularView::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::canvas : Role::item;
    if (part == wholeCtrl || part >= accessParts()) return;
    const CRect area = partArea(part);
    const CPoint corner = toControl(asPoint(area.left, area.top)),
                 end = toControl(asPoint(area.right, area.bottom));
    const CRect bounds = asRect(corner.x, corner.y, end.x, end.y);
    d.name = spoken(part).asChar();
    d.action = "select";
    d.bounds = intersect(bounds, clientRect());
    d.set(stateShowing, !d.bounds.empty());
    d.set(stateFocusable, true);
    d.set(stateFocused, hasKeyFocus() && part == focusedPart());
    d.set(stateSelectable, part < int(model.boxes.size()));
    d.set(stateSelected,
          part < int(model.boxes.size()) && model.boxes[size_t(part)].comp->hasFlag(compSelected));
}

bool ModularView::pressPart(int part) {
    CObject* item = itemOf(part);
    if (!item) return false;
    win->setKeyCtrl(this);
    if (CComp* box = asComp(item)) selectOnly(host(), box);
    setItem(item);
    redraw();
    return true;
}

void ModularView::setItem(CObject* item) {
    if (item == shown.focus) return;
    shown.focus = item;
    const int part = partOf(item);
    if (part >= 0) {
        reveal(partArea(part));
        if (hasKeyFocus()) tell(spoken(part));
    }
    redraw();
}

void ModularView::goTo(CComp* comp) {
    selectOnly(host(), comp);
    win->setKeyCtrl(this);
    setItem(comp);
    redraw();
}

// Keys.

bool ModularView::keyDown(int key, int mods) {
    if (closed) return false;
    if (stale()) rebuild();
    return (linking && linkKey(key, mods)) || moveKey(key, mods) || itemKey(key, mods) ||
           CCanvas::keyDown(key, mods);
}

/// A cable that the keys lead: arrows step through the ports that it can take, the nearest first.
bool ModularView::linkKey(int key, int mods) {
    if (mods != 0) return false;
    if (key == keyEscape) {
        linking = false;
        showLink(-1, -1);
        return true;
    }
    if (isArrow(key)) {
        stepLink(key == goRight || key == goDown ? 1 : -1);
        return true;
    }
    if (key != keyReturn) return false;
    linking = false;
    CIO* from = model.ports[size_t(shown.fromPort)].io;
    CIO* to = shown.toPort < 0 ? nullptr : model.ports[size_t(shown.toPort)].io;
    showLink(-1, -1);
    if (to) toggleCable(from, to);
    rebuild();
    return true;
}

void ModularView::stepLink(int by) {
    const int from = shown.fromPort;
    const CPoint at = model.ports[size_t(from)].corner;
    std::vector<int> fitting;
    for (size_t i = 0; i < model.ports.size(); i++)
        if (model.ports[i].box != model.ports[size_t(from)].box &&
            fits(model.ports[size_t(from)].kind, model.ports[i].kind))
            fitting.push_back(int(i));
    std::ranges::stable_sort(fitting, {}, [&](int port) {
        const CPoint c = model.ports[size_t(port)].corner;
        return std::abs(c.x - at.x) + std::abs(c.y - at.y);
    });
    if (fitting.empty()) return tell("There is no port that a cable from here fits");
    const auto now = std::ranges::find(fitting, shown.toPort);
    const int count = int(fitting.size());
    const int index = now == fitting.end() ? 0 : (int(now - fitting.begin()) + by + count) % count;
    const int to = fitting[size_t(index)];
    showLink(from, to);
    reveal(model.ports[size_t(to)].area());
    const bool joined = areJoined(model.ports[size_t(from)].io, model.ports[size_t(to)].io);
    tell((joined ? "Return parts it from " : "Return joins it to ") + fullPortName(model, to) +
         " (" + portKindName(model.ports[size_t(to)]) + ")");
}

/// Arrows walk from box to box, with Shift they select these too, and with Control they move what
/// is selected. From a port they walk along its box, and along the cables.
bool ModularView::moveKey(int key, int mods) {
    if (!isArrow(key) && key != keyHome && key != keyEnd) return false;
    if ((mods & modControl) && isArrow(key)) {
        if (selectedComps(host()).empty()) return false;
        const int step = mods & modShift ? farStep : moveStep;
        const int dx = key == goLeft ? -step : key == goRight ? step : 0;
        const int dy = key == goUp ? -step : key == goDown ? step : 0;
        moveComps(host(), asPoint(dx, dy));
        rebuild();
        return true;
    }
    if (mods & ~modShift) return false;
    CObject* next = neighbour(key);
    if (!next) return isArrow(key);
    if (CComp* box = asComp(next)) {
        if (!(mods & modShift)) selectOnly(host(), box);
        next->setFlag(compSelected, true);
    }
    setItem(next);
    redraw();
    return true;
}

CObject* ModularView::neighbour(int key) const {
    if (model.boxes.empty()) return nullptr;
    if (key == keyHome || !shown.focus || partOf(shown.focus) < 0) return model.boxes.front().comp;
    if (key == keyEnd) return model.boxes.back().comp;
    if (shown.focus->category == categoryCable) {
        const auto& cable = model.cables[size_t(model.cableOf(shown.focus))];
        if (key == goUp) return model.ports[size_t(cable.from)].io;
        if (key == goDown) return model.ports[size_t(cable.to)].io;
        return otherCable(key == goRight ? 1 : -1);
    }
    if (shown.focus->category != categoryComp) return besidePort(key);
    const CPoint from = centre(partArea(partOf(shown.focus)));
    CObject* nearest = nullptr;
    int least = 0;
    for (const auto& box : model.boxes) {
        const int distance = distanceAlong(from, centre(box.area), key);
        if (distance < 0 || (nearest && distance >= least)) continue;
        least = distance;
        nearest = box.comp;
    }
    return nearest;
}

/// Left and Right along the ports of the box, Up and Down to a cable that ends there.
CObject* ModularView::besidePort(int key) const {
    const int port = model.portOf(shown.focus);
    const auto& box = model.boxes[size_t(model.ports[size_t(port)].box)];
    if (key == goLeft || key == goRight) {
        const int next = port + (key == goRight ? 1 : -1);
        const bool within = next >= box.firstPort && next < box.firstPort + box.portCount;
        return within ? model.ports[size_t(next)].io : nullptr;
    }
    const bool output = isOutput(model.ports[size_t(port)].kind);
    if ((key == goDown) != output) return box.comp;
    for (const auto& cable : model.cables)
        if (cable.from == port || cable.to == port) return cable.cable;
    return nullptr;
}

/// The next one of those that begin at the same port.
CObject* ModularView::otherCable(int by) const {
    const int now = model.cableOf(shown.focus), from = model.cables[size_t(now)].from;
    std::vector<int> all;
    for (size_t i = 0; i < model.cables.size(); i++)
        if (model.cables[i].from == from) all.push_back(int(i));
    const int count = int(all.size());
    const int at = int(std::ranges::find(all, now) - all.begin());
    return model.cables[size_t(all[size_t((at + by + count) % count)])].cable;
}

/// Return opens a box, leads a cable from a port, and goes from a cable to where it leads; "p" goes
/// to the ports of a box; Escape goes back to the box, and then to nothing.
bool ModularView::itemKey(int key, int mods) {
    CObject* now = shown.focus;
    if (mods != 0 || !now || partOf(now) < 0) return false;
    const bool box = now->category == categoryComp, cable = now->category == categoryCable;
    if (key == keyEscape) {
        setItem(box || cable ? nullptr : model.boxes[size_t(partAround(partOf(now)))].comp);
        return true;
    }
    if (key == 'p' && box) {
        const auto& of = model.boxes[size_t(partOf(now))];
        if (of.portCount > 0) setItem(model.ports[size_t(of.firstPort)].io);
        return true;
    }
    if (key != keyReturn) return false;
    if (box) {
        asComp(now)->edit(true);
    } else if (cable) {
        setItem(model.ports[size_t(model.cables[size_t(model.cableOf(now))].to)].io);
    } else {
        linking = true;
        showLink(model.portOf(now), -1);
        stepLink(1);
    }
    return true;
}

#include "gui/access/LiveTree.h"

#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Scale.h"
#include "gui/Utf8.h"
#include "gui/controls/CMDI.h"
#include "gui/controls/CTabs.h"

#include <poll.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace {

Description describedBy(const CCtrl* ctrl, int part) {
    Description d;
    ctrl->describe(d, part);
    return d;
}

/// The text of the label beside it.
std::string labelOf(const CCtrl* ctrl) {
    if (!ctrl->parent) return {};
    for (const CCtrl* beside : ctrl->parent->controls) {
        const auto* label = dynamic_cast<const CLabel*>(beside);
        if (label && label->field == ctrl) return label->text.asChar();
    }
    return {};
}

/// Without the colon of a label, or the dots of a command that opens a dialog.
std::string spoken(std::string text) {
    while (!text.empty() && (text.back() == ':' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text;
}

} // namespace

LiveTree::LiveTree(CApp* application) : app(application) {
}

LiveTree::~LiveTree() {
    outlet.reset(); // it may ask the tree
}

AccessId LiveTree::idOf(const CCtrl* ctrl, int part) {
    const Node node{const_cast<CCtrl*>(ctrl), part};
    const auto [at, isNew] = ids.try_emplace(node, last + 1);
    if (isNew) nodes[++last] = node;
    return at->second;
}

LiveTree::Node LiveTree::nodeOf(AccessId id) const {
    const auto at = nodes.find(id);
    return at == nodes.end() ? Node() : at->second;
}

/// A part may have gone while its control is still there.
bool LiveTree::stands(const Node& node) const {
    return node.ctrl &&
           (node.part == Accessible::wholeCtrl || node.part < node.ctrl->accessParts());
}

std::string LiveTree::givenName(const CCtrl* ctrl) const {
    if (!ctrl->spokenName.empty()) return ctrl->spokenName.asChar();
    return spoken(labelOf(ctrl));
}

Description LiveTree::describe(AccessId id) {
    const Description now = look(id);
    if (outlet && now.role != Role::none) told.try_emplace(id, now);
    return now;
}

std::vector<AccessId> LiveTree::children(AccessId id) {
    const std::vector<AccessId> now = inside(id);
    if (outlet) toldChildren.try_emplace(id, now);
    return now;
}

Description LiveTree::look(AccessId id) {
    if (id == 0) {
        Description d;
        d.role = Role::application;
        d.name = app->mainWin ? app->mainWin->id.asChar() : "";
        d.set(stateEnabled, true);
        return d;
    }
    const auto [ctrl, part] = nodeOf(id);
    if (!stands({ctrl, part})) return {};
    Description d;
    d.bounds = ctrl->clientRect();
    d.set(stateEnabled, ctrl->enabled);
    d.set(stateShowing, ctrl->shown());
    d.set(stateFocusable, ctrl->tabStop || part != Accessible::wholeCtrl);
    if (part == Accessible::wholeCtrl) {
        d.name = givenName(ctrl);
        d.help = ctrl->hint.asChar();
    }
    ctrl->describe(d, part);
    d.set(stateFocused, ctrl->hasKeyFocus() && ctrl->focusedPart() == part);
    if (d.name.empty()) d.name = spoken(d.help);
    for (std::string* text : {&d.name, &d.help, &d.text}) *text = asUtf8(*text);
    const CPoint at = ctrl->win->getPos(true);
    const CPoint in =
        ctrl == static_cast<CCtrl*>(ctrl->win) ? CPoint() : ctrl->win->controlPos(ctrl);
    d.bounds = toDevice(sizeRect(d.bounds, at.x + in.x, at.y + in.y, at.x + in.x, at.y + in.y));
    return d;
}

std::vector<CWin*> LiveTree::openWindows() const {
    std::vector<CWin*> open;
    for (CWin* win : app->windows)
        if (win->visible && !win->hasStyle(winFloating)) open.push_back(win);
    for (CWin* menu : app->menus)
        if (menu->visible) open.push_back(menu);
    return open;
}

/// A control, or, if it is no thing of its own, what lies in it.
void LiveTree::collect(CCtrl* ctrl, std::vector<AccessId>& found) {
    if (!ctrl->visible) return;
    if (describedBy(ctrl, Accessible::wholeCtrl).role != Role::none) {
        found.push_back(idOf(ctrl));
        return;
    }
    if (const auto* area = dynamic_cast<CMDI*>(ctrl)) {
        for (CWin* page : area->pages)
            if (area->shows(page)) collect(page, found);
        return;
    }
    if (ctrl->category != catGroup && ctrl->category != catGroupLike) return;
    for (CCtrl* child : static_cast<CGroup*>(ctrl)->controls) collect(child, found);
}

std::vector<AccessId> LiveTree::inside(AccessId id) {
    std::vector<AccessId> found;
    if (id == 0) {
        for (const CWin* win : openWindows()) found.push_back(idOf(win));
        return found;
    }
    const Node node = nodeOf(id);
    if (!stands(node)) return found;
    if (node.part == Accessible::wholeCtrl && node.ctrl->category != catCtrl)
        for (CCtrl* child : static_cast<CGroup*>(node.ctrl)->controls) collect(child, found);
    if (node.part == Accessible::wholeCtrl && node.ctrl->category == catWin)
        for (CWin* page : static_cast<CWin*>(node.ctrl)->children) collect(page, found);
    for (int part = 0; part < node.ctrl->accessParts(); ++part)
        if (node.ctrl->partAround(part) == node.part) found.push_back(idOf(node.ctrl, part));
    return found;
}

AccessId LiveTree::parent(AccessId id) {
    const Node node = nodeOf(id);
    if (!stands(node)) return 0;
    if (node.part != Accessible::wholeCtrl)
        return idOf(node.ctrl, node.ctrl->partAround(node.part));
    const CCtrl* at = node.ctrl;
    do {
        if (at->category != catWin) {
            at = at->parent ? static_cast<const CCtrl*>(at->parent) : at->win;
        } else if (static_cast<const CWin*>(at)->hasStyle(winChild)) {
            at = at->parent;
        } else {
            return 0;
        }
    } while (at && describedBy(at, Accessible::wholeCtrl).role == Role::none);
    return at ? idOf(at) : 0;
}

AccessId LiveTree::focus() {
    if (app->topMenu) return idOf(app->topMenu, app->topMenu->focusedPart());
    for (CWin* win : openWindows()) {
        if (!win->hasFocus()) continue;
        const CCtrl* ctrl = win->keyTarget();
        if (!ctrl) return idOf(win);
        return idOf(ctrl, ctrl->focusedPart());
    }
    return 0;
}

AccessId LiveTree::at(AccessId id, CPoint p) {
    for (const AccessId child : inside(id))
        if (look(child).bounds.contains(p.x, p.y)) return at(child, p);
    return id;
}

bool LiveTree::later(AccessId id, std::function<void(const Node&)> act) {
    if (!stands(nodeOf(id))) return false;
    wishes.push_back([this, id, act = std::move(act)] {
        const Node node = nodeOf(id);
        if (stands(node) && node.ctrl->enabled && node.ctrl->shown()) act(node);
    });
    return true;
}

bool LiveTree::press(AccessId id) {
    return later(id, [](const Node& node) { node.ctrl->pressPart(node.part); });
}

bool LiveTree::setNumber(AccessId id, double to) {
    return later(id, [to](const Node& node) { node.ctrl->enterNumber(node.part, to); });
}

bool LiveTree::setText(AccessId id, const std::string& to) {
    return later(id, [to](const Node& node) { node.ctrl->enterText(to); });
}

bool LiveTree::setFocus(AccessId id) {
    return later(id, [](const Node& node) {
        if (node.ctrl->category == catWin)
            static_cast<CWin*>(node.ctrl)->raise(true);
        else if (node.ctrl->tabStop)
            node.ctrl->win->setKeyCtrl(node.ctrl);
    });
}

void LiveTree::touched(const CCtrl* ctrl) {
    dirty.insert(ctrl);
}

void LiveTree::forget(const CCtrl* ctrl) {
    dirty.erase(ctrl);
    const auto from = ids.lower_bound(Node{const_cast<CCtrl*>(ctrl), Accessible::wholeCtrl});
    auto to = from;
    for (; to != ids.end() && to->first.ctrl == ctrl; ++to) {
        const AccessId id = to->second;
        nodes.erase(id);
        told.erase(id);
        toldChildren.erase(id);
        if (toldFocus == id) toldFocus = 0;
        std::erase(toldWindows, id);
        if (outlet) outlet->gone(id);
    }
    ids.erase(from, to);
}

void LiveTree::update() {
    if (outlet) outlet->turn();
    while (!wishes.empty()) {
        const auto wish = std::move(wishes.front());
        wishes.erase(wishes.begin());
        const CApp::HandlerScope scope(app);
        wish();
    }
    if (!outlet) return;
    tellWindows();
    tellTouched();
    tellFocus();
}

void LiveTree::await(std::vector<pollfd>& descriptors, timespec& wait) const {
    constexpr int most = 1000;
    int ms = most;
    if (outlet) outlet->await(descriptors, ms);
    const long ns = ms * 1000'000L;
    if (ms < most && wait.tv_sec == 0) wait.tv_nsec = std::min(wait.tv_nsec, ns);
}

void LiveTree::tellWindows() {
    std::vector<AccessId> open = inside(0);
    if (open == toldWindows) return;
    const std::vector<AccessId> before = std::exchange(toldWindows, std::move(open));
    outlet->childrenChanged(0);
    for (const AccessId id : std::vector<AccessId>(toldWindows))
        if (std::find(before.begin(), before.end(), id) == before.end()) outlet->windowOpened(id);
}

/// Of a control that was painted anew, and of its parts: what they are now. Meters move all the
/// time, and nobody wants to hear that.
void LiveTree::tellTouched() {
    const auto changed = std::exchange(dirty, {});
    for (const CCtrl* ctrl : changed) {
        const auto first = ids.lower_bound(Node{const_cast<CCtrl*>(ctrl), Accessible::wholeCtrl});
        std::vector<AccessId> known;
        for (auto at = first; at != ids.end() && at->first.ctrl == ctrl; ++at)
            known.push_back(at->second);
        for (const AccessId id : known) tellAgain(id);
    }
}

void LiveTree::tellAgain(AccessId id) {
    if (!stands(nodeOf(id))) return;
    if (const auto before = told.find(id); before != told.end()) {
        const Description now = look(id);
        if (now.role == Role::meter) return;
        const Description then = std::exchange(before->second, now);
        outlet->changed(id, then, now);
    }
    if (const auto kept = toldChildren.find(id); kept != toldChildren.end()) {
        std::vector<AccessId> now = inside(id);
        if (kept->second == now) return;
        kept->second = std::move(now);
        outlet->childrenChanged(id);
    }
}

void LiveTree::tellFocus() {
    const AccessId now = focus();
    if (now == toldFocus) return;
    toldFocus = now;
    if (now) outlet->focused(now);
}

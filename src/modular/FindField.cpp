#include "modular/FindField.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/ObjectKinds.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/ModularView.h"

FindField::FindField(CWin* owner, ModularView& shown)
    : CEdit(owner, "find", 0, 0, 1, 24), view(shown) {
    spokenName = "Find or connect";
    hint = "Type a name to find it, or \"bass to delay\" to connect the two; Return does it";
    tabStop = true;
}

void FindField::begin() {
    win->setKeyCtrl(this);
    selectAll();
}

void FindField::forget() {
    found = {};
    told = "";
}

void FindField::paint(CGraphic* g, CRect rect) {
    CEdit::paint(g, rect);
    if (!text.empty() || hasKeyFocus()) return;
    g->drawText(win->app->gui->palette.dimText, "Find, or bass to delay",
                sizeRect(clientRect(), textMargin + 2, 0, 0, 0), textLeft);
}

/// What is typed is looked for at once.
bool FindField::keyDown(int key, int mods) {
    if (mods == 0 && key == keyReturn) return accept();
    if (mods == 0 && key == keyEscape) {
        view.showLink(-1, -1);
        win->setKeyCtrl(&view);
        return true;
    }
    constexpr int down = Key::keyDown, up = Key::keyUp;
    if (mods == 0 && (key == down || key == up) && !found.items.empty()) {
        const size_t count = found.items.size();
        at = (at + (key == down ? 1 : count - 1)) % count;
        show();
        return true;
    }
    const bool taken = CEdit::keyDown(key, mods);
    if (taken) look();
    return taken;
}

void FindField::look() {
    found = findItems(view.graph(), text);
    at = 0;
    show();
}

void FindField::show() {
    const GraphModel& graph = view.graph();
    view.showLink(found.from, found.to);
    told = text.trim().empty() ? CStr() : CStr("Nothing bears that name");
    if (found.joins) {
        told = "Name an output and an input that fit";
        if (found.from >= 0) {
            view.reveal(graph.ports[size_t(found.from)].area());
            view.reveal(graph.ports[size_t(found.to)].area());
            const bool joined =
                areJoined(graph.ports[size_t(found.from)].io, graph.ports[size_t(found.to)].io);
            told = CStr(joined ? "Return parts " : "Return joins ") +
                   fullPortName(graph, found.from) + " and " + fullPortName(graph, found.to);
        }
    } else if (!found.items.empty()) {
        CObject* item = found.items[at];
        view.setItem(item);
        const CComp* box = asComp(item);
        const CStr name = box ? boxName(box) : fullPortName(graph, graph.portOf(item));
        told = asStr(int(at) + 1) + " of " + asStr(int(found.items.size())) + ": " + name;
    }
    if (onTold) onTold();
}

bool FindField::accept() {
    look();
    const GraphModel& graph = view.graph();
    if (found.joins) {
        if (found.from < 0) return true;
        CIO *from = graph.ports[size_t(found.from)].io, *to = graph.ports[size_t(found.to)].io;
        view.showLink(-1, -1);
        toggleCable(from, to);
        view.rebuild();
        setText("");
        found = {};
        told = "";
        if (onTold) onTold();
        win->setKeyCtrl(&view);
        view.setItem(to);
        return true;
    }
    if (found.items.empty()) return true;
    CObject* item = found.items[at];
    if (CComp* box = asComp(item)) return view.goTo(box), true;
    win->setKeyCtrl(&view);
    view.setItem(item);
    return true;
}

bool FindField::enterText(const std::string& to) {
    setText(to.c_str());
    return accept();
}

void FindField::describe(Description& d, int part) const {
    CEdit::describe(d, part);
    d.help = told.asChar();
}

#include "shell/CFigures.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"

#include <cctype>
#include <vector>

namespace {

constexpr int fieldTop = 4, fieldHeight = 48, titleHeight = 16, margin = 8;
constexpr const char* typable = "0123456789./:";

/// Where each run of digits begins and ends.
std::vector<std::pair<int, int>> partsOf(const CStr& text) {
    std::vector<std::pair<int, int>> parts;
    const int length = text.length();
    for (int i = 0; i < length; i++) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) continue;
        const int from = i;
        while (i < length && std::isdigit(static_cast<unsigned char>(text[i]))) i++;
        parts.emplace_back(from, i);
    }
    return parts;
}

} // namespace

CFigures::CFigures(CWin* owner, const CStr& name, const CStr& heading, int l, int w, int room,
                   CQV* host)
    : CCtrl(owner, name, l, fieldTop, w, fieldHeight), qv(host), title(heading),
      typed(this, typable, room) {
    tabStop = true;
}

void CFigures::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, clientRect());
    g->frameRect(hasKeyFocus() ? colours.accent : colours.frame, clientRect());
    g->drawText(colours.dimText, title, asRect(margin, 3, width - margin, titleHeight), textLeft);
    const CRect field = asRect(margin, titleHeight + 1, width - margin, height - 3);
    digits.draw(g, field, shownText, colours.text, colours.window);
    if (hasKeyFocus() && !typed.typing()) markPart(g, field);
}

void CFigures::markPart(CGraphic* g, CRect field) const {
    const auto parts = partsOf(shownText);
    if (parts.size() < 2 || part >= int(parts.size())) return;
    const auto [from, to] = parts[size_t(part)];
    const int x = field.left + Digits::advance(shownText.sub(0, from));
    g->fillRect(win->app->gui->palette.accent,
                asRect(x, field.bottom - 2, x + Digits::advance(shownText.sub(from, to - from)) - 4,
                       field.bottom));
}

bool CFigures::refresh() {
    const CStr now = typed.typing() ? typed.shown() : figures();
    if (now == shownText) return false;
    shownText = now;
    redraw();
    return true;
}

bool CFigures::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    switch (typed.key(key, mods)) {
    case TypedText::taken:
        endTyping(true);
        return true;
    case TypedText::kept:
    case TypedText::left:
        refresh();
        return true;
    case TypedText::passed:
        break;
    }
    return stepKey(key, mods);
}

bool CFigures::stepKey(int key, int mods) {
    if (mods & (modControl | modAlt)) return false;
    const int by =
        (key == ::keyUp) - (key == ::keyDown) + tens * ((key == keyPageUp) - (key == keyPageDown));
    const bool across = key == keyLeft || key == keyRight;
    const bool ends = key == keyHome || key == keyEnd;
    if (!by && !across && !ends && key != keyDelete) return false;
    endTyping(true);
    if (across) return walkParts(key == keyLeft ? -1 : 1);
    if (by)
        stepBy(by, mods);
    else if (ends)
        toEnd(key == keyEnd);
    else
        reset();
    refresh();
    return true;
}

/// False at the ends, where the arrow leads to the neighbour.
bool CFigures::walkParts(int by) {
    const int next = part + by;
    if (next < 0 || next >= int(partsOf(figures()).size())) return false;
    part = next;
    redraw();
    return true;
}

void CFigures::endTyping(bool take) {
    if (!typed.typing()) return;
    const CStr text = typed.end();
    if (take && !text.empty()) accept(text);
    refresh();
}

void CFigures::setFocus(bool on) {
    CCtrl::setFocus(on);
    if (!on) endTyping(true);
}

void CFigures::describe(Description& d, int) const {
    d.role = Role::number;
    d.name = id.asChar();
    d.text = figures().asChar();
    d.set(stateEditable, true);
}

bool CFigures::enterText(const std::string& to) {
    accept(to.c_str());
    refresh();
    return true;
}

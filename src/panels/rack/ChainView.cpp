#include "panels/rack/ChainView.h"

#include "effects/CEffect.h"
#include "engine/EffectSettings.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"

#include <algorithm>

namespace {

constexpr int mostWide = 112, gap = 20, boxHeight = 24, ends = 36, pad = 8;
constexpr int boxTop = 36, lineY = boxTop + boxHeight / 2, besideY = 18;
constexpr double lineWidth = 2.0, faint = 0.15; ///< what is left of a line that carries little
constexpr int corner = 8;                       ///< of the way beside an effect

/// Whether its gains are heard.
bool hasGains(const CFX& fx) {
    return findSetting(settingsOf(fx), "Dry") != nullptr;
}

/// What it puts out comes to what is there already; others put it in its place.
bool adds(const CFX& fx) {
    return fx.type == fxDelay || fx.type == fxReverb;
}

} // namespace

ChainView::ChainView(CWin* owner, CEffect& of)
    : CCtrl(owner, "chain", 0, 0, 1, usualHeight), rack(of) {
    tabStop = hooverable = true;
    hint = "Press an effect to see it, twice to switch it";
    boxes = present();
}

std::vector<ChainView::Box> ChainView::present() const {
    std::vector<Box> all;
    CEffectProg* prog = rack.getProg();
    if (!prog) return all;
    bool behind = false; // an effect that runs
    for (auto* fx : prog->effects) {
        const bool gains = hasGains(*fx), on = fx->enabled != 0;
        const double dry = (gains ? double(fx->dry) : 0.0) + (behind && adds(*fx) ? 1.0 : 0.0);
        all.push_back({fx, on, std::min(1.0, dry), gains ? double(fx->wet) : 1.0});
        behind = behind || on;
    }
    return all;
}

bool ChainView::refresh() {
    std::vector<Box> now = present();
    if (now == boxes) return false;
    boxes = std::move(now);
    current = std::clamp(current, 0, std::max(0, int(boxes.size()) - 1));
    redraw();
    return true;
}

bool ChainView::there(const Box& box) const {
    const CEffectProg* prog = rack.getProg();
    return prog && prog->effects.contains(box.fx);
}

CRect ChainView::rectOf(int index) const {
    const int count = std::max(1, int(boxes.size()));
    const int room = (width - 2 * (ends + pad) - (count + 1) * gap) / count;
    const int wide = std::min(mostWide, std::max(gap, room));
    const int from = pad + ends + gap + index * (wide + gap);
    return asRect(from, boxTop, from + wide, boxTop + boxHeight);
}

void ChainView::paintBox(CGraphic* g, int index) const {
    const CPalette& colours = win->app->gui->palette;
    const Box& box = boxes[size_t(index)];
    const CRect at = rectOf(index);
    const int ground = colours.panel;
    if (box.on && box.beside > 0.0) {
        CPath beside;
        beside.moveTo(at.left - gap / 2.0, lineY);
        beside.lineTo(at.left - gap / 2.0, besideY + corner);
        beside.curveTo(at.left - gap / 2.0, besideY, at.left - gap / 2.0, besideY,
                       at.left - gap / 2.0 + corner, besideY);
        beside.lineTo(at.right + gap / 2.0 - corner, besideY);
        beside.curveTo(at.right + gap / 2.0, besideY, at.right + gap / 2.0, besideY,
                       at.right + gap / 2.0, besideY + corner);
        beside.lineTo(at.right + gap / 2.0, lineY);
        strokePath(g, beside, lineWidth,
                   fadeCol(ground, colours.accent, std::max(faint, box.beside)));
    }
    CPath through;
    for (const int x : {at.left - gap / 2, at.right}) {
        through.moveTo(x, lineY);
        through.lineTo(x + gap / 2.0, lineY);
    }
    strokePath(g, through, lineWidth,
               fadeCol(ground, colours.accent, box.on ? std::max(faint, box.wet) : 1.0));
    const int fill = box.on ? fadeCol(colours.raised, colours.accent, 0.25) : colours.raised;
    g->fillRound(fill, at);
    g->frameRound(hasKeyFocus() && index == current ? colours.accent : colours.frame, at);
    g->drawText(box.on ? colours.text : colours.dimText, there(box) ? box.fx->id : CStr(),
                asRect(at.left + 4, at.top, at.right - 4, at.bottom), 0);
}

void ChainView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.panel, clientRect());
    const int count = int(boxes.size());
    const int from = pad + ends, last = count ? rectOf(count - 1).right + gap / 2 : from;
    CPath line;
    line.moveTo(from, lineY);
    line.lineTo(from + gap / 2.0, lineY);
    line.moveTo(last, lineY);
    line.lineTo(last + gap / 2.0, lineY);
    for (int i = 0; i + 1 < count; i++) { // between the ways of two effects
        line.moveTo(rectOf(i).right + gap / 2.0, lineY);
        line.lineTo(rectOf(i + 1).left - gap / 2.0, lineY);
    }
    strokePath(g, line, lineWidth, colours.accent);
    for (int i = 0; i < count; i++) paintBox(g, i);
    const TextScope small(g, {.size = TextSize::small});
    g->drawText(colours.dimText, "In", asRect(pad, boxTop, pad + ends - 4, boxTop + boxHeight),
                textRight);
    g->drawText(colours.dimText, "Out",
                asRect(last + gap / 2 + 4, boxTop, last + gap / 2 + ends, boxTop + boxHeight),
                textLeft);
}

void ChainView::choose(int index) {
    if (index < 0 || index >= int(boxes.size())) return;
    current = index;
    redraw();
    if (onChosen && there(boxes[size_t(index)])) onChosen(boxes[size_t(index)].fx);
}

void ChainView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    for (int i = 0; i < int(boxes.size()); i++) {
        const CRect at = rectOf(i);
        if (x < at.left || x >= at.right || y < at.top || y >= at.bottom) continue;
        if ((btn & modDouble) && onSwitched && there(boxes[size_t(i)]))
            return onSwitched(boxes[size_t(i)].fx);
        return choose(i);
    }
}

bool ChainView::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || boxes.empty()) return false;
    const int by = (key == keyRight) - (key == keyLeft);
    if (by != 0)
        choose(std::clamp(current + by, 0, int(boxes.size()) - 1));
    else if (key == keyReturn && onSwitched && there(boxes[size_t(current)]))
        onSwitched(boxes[size_t(current)].fx);
    else
        return false;
    return true;
}

int ChainView::accessParts() const {
    return int(boxes.size());
}

bool ChainView::pressPart(int part) {
    choose(part);
    return part >= 0 && part < int(boxes.size());
}

void ChainView::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::canvas : Role::item;
    if (part == wholeCtrl) {
        d.name = "Way of the sound";
        return;
    }
    const Box& box = boxes[size_t(part)];
    d.name = there(box) ? box.fx->id.asChar() : "";
    d.text = !box.on ? "off" : box.beside > 0.0 ? "on, dry beside it" : "on";
    d.bounds = rectOf(part);
    d.action = "choose";
}

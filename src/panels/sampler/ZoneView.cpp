#include "panels/sampler/ZoneView.h"

#include "engine/CQV.h"
#include "engine/KeyNames.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "instruments/CSampler.h"
#include "instruments/SoundSettings.h"
#include "ui/EventRows.h"

#include <algorithm>

namespace {

constexpr int keys = 128, octave = 12;
constexpr int barHeight = 18, barGap = 2, pad = 8, keysHeight = 40;
constexpr int endReach = 5;
constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr double chosenShare = 0.55, otherShare = 0.25;

} // namespace

ZoneView::ZoneView(CWin* owner, CSampler& of) : CCtrl(owner, "zones", 0, 0, 1, 1), sampler(of) {
    hooverable = tabStop = true;
    hint = "Drag the ends of a bar to the keys that its sound is heard on";
    bars = present();
}

std::vector<ZoneView::Bar> ZoneView::present() const {
    std::vector<Bar> all;
    CSynthProg* prog = sampler.getProg();
    if (!prog) return all;
    const CLayer* current = prog->layer;
    prog->eachSound([&](CSound* s) {
        all.push_back({s, s->lowKey, s->hiKey, current && current->sound == s});
    });
    return all;
}

bool ZoneView::refresh() {
    std::vector<Bar> now = present();
    if (now == bars) return false;
    bars = std::move(now);
    redraw();
    return true;
}

void ZoneView::fit(int wide) {
    setBounds(left, top, wide, keysTop() + keysHeight + pad);
}

int ZoneView::keysTop() const {
    return pad + int(bars.size()) * (barHeight + barGap) + pad / 2;
}

int ZoneView::xOf(int key) const {
    return pad + key * (width - 2 * pad) / keys;
}

int ZoneView::keyAt(int x) const {
    return std::clamp((x - pad) * keys / std::max(1, width - 2 * pad), 0, keys - 1);
}

CRect ZoneView::barRect(int index) const {
    const Bar& bar = bars[size_t(index)];
    const int y = pad + index * (barHeight + barGap);
    return asRect(xOf(bar.low), y, std::max(xOf(bar.high + 1), xOf(bar.low) + 2), y + barHeight);
}

void ZoneView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.raised, clientRect());
    const TextScope small(g, {.size = TextSize::small});
    for (int i = 0; i < int(bars.size()); i++) {
        const Bar& bar = bars[size_t(i)];
        const CRect at = barRect(i);
        const int fill =
            fadeCol(colours.window, colours.accent, bar.chosen ? chosenShare : otherShare);
        g->fillRound(fill, at);
        g->drawText(textOn(fill), there(bar.sound) ? bar.sound->id : CStr(),
                    asRect(at.left + 6, at.top, at.right - 4, at.bottom), textLeft);
    }
    const int white = hexColor(0xe8e6e1), black = hexColor(0x24262a), y = keysTop();
    g->fillRect(white, asRect(xOf(0), y, xOf(keys), y + keysHeight));
    for (int key = 0; key < keys; key++) {
        const CRect at = asRect(xOf(key), y, xOf(key + 1), y + keysHeight);
        if (EventRows::blackKey(key))
            g->fillRect(black, asRect(at.left, at.top, at.right, at.top + keysHeight * 3 / 5));
        else if (key % octave == 0 || key % octave == 5)
            g->fillLine(hexColor(0x9a9892), asRect(at.left, y, at.left + 1, at.bottom));
        if (key == playing) g->fillRect(colours.accent, at);
        if (key % octave == 0)
            g->drawText(black, noteToStr(key),
                        asRect(at.left + 2, y + keysHeight * 3 / 5, at.left + 40, at.bottom),
                        textLeft);
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}

bool ZoneView::there(const CSound* wanted) const {
    const CSynthProg* prog = sampler.getProg();
    return prog && prog->hasSound(wanted);
}

ZoneView::Hit ZoneView::hitAt(int x, int y) const {
    for (int i = 0; i < int(bars.size()); i++) {
        const CRect at = barRect(i);
        if (y < at.top || y >= at.bottom || x < at.left - endReach || x >= at.right + endReach)
            continue;
        if (x >= at.right - endReach) return {i, 1};
        return {i, x < at.left + endReach ? -1 : 0};
    }
    return {};
}

void ZoneView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    if (y >= keysTop()) return sound(keyAt(x));
    held = hitAt(x, y);
    if (held.bar < 0 || !there(bars[size_t(held.bar)].sound)) return;
    if (onChosen) onChosen(bars[size_t(held.bar)].sound);
    if (held.side != 0) win->app->drag.start(this, this, asPoint(x, y), btn, 1);
}

void ZoneView::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (playing >= 0 && isPushed()) sound(keyAt(x));
    cursor = hitAt(x, y).side != 0 ? cursorSideways : cursorPlain;
}

void ZoneView::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    sound(-1);
}

void ZoneView::sound(int key) {
    if (key == playing) return;
    int released[keys] = {}, pressed[keys] = {};
    if (playing >= 0) released[playing] = 1;
    if (key >= 0) pressed[key] = 1;
    sampler.pianoKeys(released, pressed);
    playing = key;
    redraw();
}

void ZoneView::dragBegin(const DragPoint&) {
    sampler.host->values->begin();
}

void ZoneView::dragMove(const DragPoint& point) {
    const auto& door = sampler.host->values;
    if (!door->dragging() || held.bar >= int(bars.size())) return; // undone meanwhile
    const Bar& bar = bars[size_t(held.bar)];
    if (!there(bar.sound)) return;
    setEnd(bar, held.side < 0, keyAt(point.at.x));
}

void ZoneView::setEnd(const Bar& bar, bool lower, int key) {
    const Setting* s = findSetting(settingsOf(*bar.sound), lower ? "Lowest key" : "Highest key");
    const int to = lower ? std::min(key, bar.high) : std::max(key, bar.low);
    sampler.host->values->set(s->of(bar.sound), std::clamp(to, 0, keys - 1));
    refresh();
}

bool ZoneView::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    const auto chosen = std::ranges::find_if(bars, &Bar::chosen);
    if (chosen == bars.end() || !there(chosen->sound)) return false;
    const int index = int(chosen - bars.begin());
    const int down = (key == ::keyDown) - (key == ::keyUp);
    if (down != 0 && !mods) {
        const int to = std::clamp(index + down, 0, int(bars.size()) - 1);
        if (onChosen && there(bars[size_t(to)].sound)) onChosen(bars[size_t(to)].sound);
        return true;
    }
    const int right = (key == keyRight) - (key == keyLeft);
    if (right == 0 || (mods && mods != modShift)) return false;
    const Bar bar = *chosen;
    const bool lower = mods == 0;
    setEnd(bar, lower, (lower ? bar.low : bar.high) + right);
    return true;
}

void ZoneView::dragEnd(const DragPoint&) {
    sampler.host->values->end();
    held = {};
}

void ZoneView::dragCancel() {
    sampler.host->values->cancel();
    held = {};
    refresh();
}

void ZoneView::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Keys of the sounds";
}

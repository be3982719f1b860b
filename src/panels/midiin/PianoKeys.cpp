#include "panels/midiin/PianoKeys.h"

#include "engine/KeyNames.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "ui/EventRows.h"

#include <algorithm>

namespace {

constexpr int octave = 12, whitesOfOctave = 7;
constexpr int lowest = 24, highest = 108; ///< shown keys, both white
constexpr double blackHigh = 0.62, blackWide = 0.6;

/// White keys from the lowest of all up to below this one.
int whitesBelow(int key) {
    int count = key / octave * whitesOfOctave;
    for (int k = key / octave * octave; k < key; k++) count += !EventRows::blackKey(k);
    return count;
}

constexpr int shownWhites = (highest - lowest) / octave * whitesOfOctave + 1;

} // namespace

PianoKeys::PianoKeys(CWin* owner) : CCtrl(owner, "piano", 0, 0, 1, 1) {
    tabStop = true;
    spokenName = "Keyboard";
    hint = "Press keys to play them; by keys Left and Right choose one, Return plays it";
}

PianoKeys::~PianoKeys() = default;

/// A black key stands over the line between two white ones.
CRect PianoKeys::keyRect(int key) const {
    const auto edge = [this](int white) { return white * width / shownWhites; };
    const int white = whitesBelow(key) - whitesBelow(lowest);
    if (!EventRows::blackKey(key)) return asRect(edge(white), 0, edge(white + 1), height);
    const int half = int(blackWide * width / shownWhites / 2), middle = edge(white);
    return asRect(middle - half, 0, middle + half, int(blackHigh * height));
}

int PianoKeys::keyAt(int x, int y) const {
    int white = -1;
    for (int key = lowest; key <= highest; key++) {
        if (!keyRect(key).contains(x, y)) continue;
        if (EventRows::blackKey(key)) return key;
        white = key;
    }
    return white;
}

void PianoKeys::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    const int ivory = fadeCol(colours.raised, asColor(255, 255, 255), 0.85);
    const int ebony = asColor(24, 26, 30), ink = asColor(40, 44, 52);
    const TextScope small(g, {.size = TextSize::small});
    for (const bool black : {false, true})
        for (int key = lowest; key <= highest; key++) {
            if (EventRows::blackKey(key) != black) continue;
            const CRect area = keyRect(key);
            const int plain = black ? ebony : ivory;
            g->fillRect(key == held ? colours.accent : plain, area);
            g->frameRect(ink, area);
            if (hasKeyFocus() && key == chosen)
                g->frameRect(colours.accent, sizeRect(area, 1, 1, -1, -1));
            if (!black && key % octave == 0)
                g->drawText(key == held ? textOn(colours.accent) : ink, noteToStr(key),
                            sizeRect(area, 0, 0, 0, -4), textBottom);
        }
}

void PianoKeys::sound(int key) {
    if (key == held) return;
    const int before = held;
    held = key;
    if (onKey && before >= 0) onKey(before, false);
    if (onKey && key >= 0) onKey(key, true);
    redraw();
}

void PianoKeys::choose(int key) {
    chosen = std::clamp(key, lowest, highest);
    redraw();
}

void PianoKeys::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    win->setKeyCtrl(this);
    const int key = keyAt(x, y);
    if (key >= 0) choose(key);
    sound(key);
}

void PianoKeys::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (isPushed() && held >= 0 && inside(x, y)) sound(keyAt(x, y));
}

void PianoKeys::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    sound(-1);
}

bool PianoKeys::keyDown(int key, int mods) {
    const int step = mods == modControl ? octave : 1;
    if (mods && mods != modControl) return false;
    if (key == keyLeft || key == keyRight) {
        choose(chosen + (key == keyLeft ? -step : step));
        return true;
    }
    if (mods || key != keyReturn) return false;
    sound(chosen);
    return true;
}

bool PianoKeys::keyUp(int key, int mods) {
    if (held < 0 || key != keyReturn) return CCtrl::keyUp(key, mods);
    sound(-1);
    return true;
}

void PianoKeys::setFocus(bool on) {
    if (!on) sound(-1);
    redraw();
}

void PianoKeys::describe(Description& d, int) const {
    d.role = Role::button;
    d.action = "play";
    d.text = noteToStr(chosen).asChar();
}

/// A short touch.
bool PianoKeys::pressPart(int) {
    sound(chosen);
    sound(-1);
    return true;
}

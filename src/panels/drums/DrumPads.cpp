#include "panels/drums/DrumPads.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "sequencer/song/CTrack.h"
#include "ui/WaveColumns.h"

#include <algorithm>

namespace {

constexpr int gap = 4, inset = 6, nameHeight = 18, levelHeight = 3;
constexpr int softest = 30, loudest = 127, keyVelocity = 100;
constexpr int levelSteps = 24;
constexpr int mostHigh = 92; ///< of a pad with the gap below it
constexpr double chosenShare = 0.3, hoverShare = 0.1;

} // namespace

DrumPads::DrumPads(CWin* owner, CTrack& of) : CCtrl(owner, "pads", 0, 0, 1, 1), track(of) {
    tabStop = hooverable = true;
    hint = "Press a pad to hear it, high for loud";
    refresh();
}

std::vector<DrumPads::Pad> DrumPads::present() const {
    std::vector<Pad> all;
    for (const auto* s : drumSounds(*track.drumLayer())) {
        const float peak = std::max(float(s->peakL), float(s->peakR));
        all.push_back({s, s->clips[0], s->getId(), s->mute != 0,
                       asMinMax(asRound(double(peak) * levelSteps), 0, levelSteps)});
    }
    return all;
}

int DrumPads::pages() const {
    return std::max(1, (int(pads.size()) + padsOnPage - 1) / padsOnPage);
}

bool DrumPads::refresh() {
    std::vector<Pad> now = present();
    if (now == pads) return false;
    pads = std::move(now);
    chosen = asMinMax(chosen, pads.empty() ? -1 : 0, int(pads.size()) - 1);
    page = std::min(page, pages() - 1);
    redraw();
    return true;
}

void DrumPads::turn(int to) {
    page = asMinMax(to, 0, pages() - 1);
    redraw();
}

void DrumPads::choose(int to) {
    if (to < 0 || to >= int(pads.size())) return;
    chosen = to;
    page = to / padsOnPage;
    redraw();
    if (onChosen) onChosen();
}

/// The first is at the lower left, as on a pad controller.
CRect DrumPads::rectOf(int index) const {
    const int on = index - page * padsOnPage;
    const int column = on % across, row = down - 1 - on / across;
    const auto edge = [](int of, int count, int length) { return of * (length + gap) / count; };
    const int high = std::min(height, down * mostHigh);
    return asRect(edge(column, across, width), edge(row, down, high),
                  edge(column + 1, across, width) - gap, edge(row + 1, down, high) - gap);
}

int DrumPads::padAt(int x, int y) const {
    const int first = page * padsOnPage;
    for (int i = first; i < std::min(int(pads.size()), first + padsOnPage); i++)
        if (rectOf(i).contains(x, y)) return i;
    return -1;
}

void DrumPads::paintWave(CGraphic* g, const Pad& pad, const CRect& at) const {
    if (!pad.clip || pad.clip->frames < 1 || at.width() < 1) return;
    const CPalette& colours = win->app->gui->palette;
    const double perColumn = double(pad.clip->frames) / at.width();
    const WaveColumns columns(pad.clip, 0.0, double(pad.clip->frames), perColumn);
    const int middle = (at.top + at.bottom) / 2, high = at.height() / 2;
    const int colour = pad.muted ? colours.dimText : colours.accent;
    for (int x = at.left; x < at.right; x++)
        paintColumn(g, colour, columns.at((x - at.left) * perColumn), x, middle, high);
}

void DrumPads::paintPad(CGraphic* g, int index) const {
    const CPalette& colours = win->app->gui->palette;
    const Pad& pad = pads[size_t(index)];
    const CRect at = rectOf(index);
    const bool marked = index == chosen;
    g->fillRound(marked ? fadeCol(colours.raised, colours.accent, chosenShare) : colours.raised,
                 at);
    g->frameRound(marked && hasKeyFocus() ? colours.text
                  : marked                ? colours.accent
                                          : colours.frame,
                  at);
    paintWave(g, pad,
              asRect(at.left + inset, at.top + nameHeight, at.right - inset,
                     at.bottom - inset - levelHeight));
    const TextScope small(g, {.size = TextSize::small});
    const CStr name = asStr(index + 1) + "  " + pad.name + (pad.muted ? " (muted)" : "");
    g->drawText(pad.muted ? colours.dimText : colours.text, name,
                asRect(at.left + inset, at.top + 2, at.right - inset, at.top + nameHeight),
                textLeft);
    const int wide = (at.width() - 2 * inset) * pad.level / levelSteps;
    g->fillRect(colours.meter[0], asRect(at.left + inset, at.bottom - inset / 2 - levelHeight,
                                         at.left + inset + wide, at.bottom - inset / 2));
}

void DrumPads::paint(CGraphic* g, CRect) {
    const int first = page * padsOnPage, empty = win->app->gui->palette.panel;
    for (int i = first; i < first + padsOnPage; i++) {
        if (!g->wants(rectOf(i))) continue;
        if (i < int(pads.size()))
            paintPad(g, i);
        else
            g->fillRound(empty, rectOf(i));
    }
}

void DrumPads::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    const int hit = padAt(x, y);
    if (!(btn & modLeft) || hit < 0) return;
    const CRect at = rectOf(hit);
    const int velocity =
        softest + (loudest - softest) * (at.bottom - 1 - y) / std::max(1, at.height() - 1);
    choose(hit);
    if (onPlayed) onPlayed(velocity);
}

bool DrumPads::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || pads.empty()) return false;
    if (key == keyPageUp || key == keyPageDown) {
        turn(page + (key == keyPageDown ? 1 : -1));
        choose(std::min(page * padsOnPage, int(pads.size()) - 1));
        return true;
    }
    if (key == keyReturn) {
        if (onPlayed) onPlayed(keyVelocity);
        return true;
    }
    const int by =
        (key == keyRight) - (key == keyLeft) + across * ((key == ::keyUp) - (key == ::keyDown));
    if (by == 0) return false;
    choose(asMinMax(chosen + by, 0, int(pads.size()) - 1));
    return true;
}

int DrumPads::accessParts() const {
    return std::min(padsOnPage, int(pads.size()) - page * padsOnPage);
}

bool DrumPads::pressPart(int part) {
    if (part < 0 || part >= accessParts()) return false;
    choose(page * padsOnPage + part);
    if (onPlayed) onPlayed(keyVelocity);
    return true;
}

void DrumPads::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::list : Role::listRow;
    if (part == wholeCtrl) {
        d.name = "Pads";
        return;
    }
    const int index = page * padsOnPage + part;
    d.name = pads[size_t(index)].name.asChar();
    d.text = pads[size_t(index)].muted ? "muted" : "";
    d.action = "play";
    d.bounds = rectOf(index);
    d.set(stateSelectable, true);
    d.set(stateSelected, index == chosen);
}

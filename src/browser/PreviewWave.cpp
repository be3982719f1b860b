#include "browser/PreviewWave.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "browser/CBrowserPreview.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "ui/WaveColumns.h"

namespace {

constexpr int edge = 2, keySteps = 20;

int framesOf(const CBrowserPreview* preview) {
    const CSample* sample = preview->getSample();
    return sample ? sample->getFrames() : 0;
}

} // namespace

PreviewWave::PreviewWave(CWin* owner, CBrowserPreview* player)
    : CCtrl(owner, "wave", 0, 0, 1, 1), preview(player) {
    spokenName = "Place in the file";
    hint = "Press to listen from there";
    tabStop = hooverable = true;
}

int PreviewWave::xOf(int frame) const {
    const int frames = framesOf(preview);
    if (frame < 0 || frames < 1) return -1;
    return edge + int(int64_t(frame) * (width - 2 * edge) / frames);
}

CRect PreviewWave::lineAt(int x) const {
    return asRect(x, 1, x + 1, height - 1);
}

void PreviewWave::idle() {
    const int x = preview->isOn() ? xOf(preview->frame()) : -1;
    if (x == shownX) return;
    if (shownX >= 0) redraw(lineAt(shownX));
    shownX = x;
    if (shownX >= 0) redraw(lineAt(shownX));
}

void PreviewWave::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, clientRect());
    const int frames = framesOf(preview), wide = width - 2 * edge, middle = height / 2;
    if (frames > 0 && preview->getSample()->chs <= 2 && wide > 0) {
        const double step = double(frames) / wide;
        const WaveColumns columns(preview->getSample(), 0, frames, step);
        for (int i = 0; i < wide; i++) {
            const int x = edge + i;
            if (g->wants(lineAt(x)))
                paintColumn(g, colours.accent, columns.at(i * step), x, middle, middle - edge);
        }
    }
    if (shownX >= 0) g->fillLine(colours.text, lineAt(shownX));
    g->frameRect(hasKeyFocus() || isHovered() ? colours.accent : colours.frame, clientRect());
}

void PreviewWave::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    win->setKeyCtrl(this);
    if (!(btn & modLeft)) return;
    const int wide = asMax(1, width - 2 * edge);
    preview->playFrom(int(int64_t(asMinMax(x - edge, 0, wide - 1)) * framesOf(preview) / wide));
}

bool PreviewWave::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    const int frames = framesOf(preview);
    const int by = (key == keyRight) - (key == keyLeft);
    if (mods || !frames || (!by && key != keyHome)) return false;
    preview->playFrom(by ? asMax(preview->frame(), 0) + by * frames / keySteps : 0);
    return true;
}

void PreviewWave::describe(Description& d, int) const {
    d.role = Role::slider;
    const CSample* sample = preview->getSample();
    const double rate = sample ? double(sample->rate) : 1.0;
    d.range =
        Description::Range{asMax(preview->frame(), 0) / rate, 0.0, framesOf(preview) / rate, 0.0};
}

bool PreviewWave::enterNumber(int, double to) {
    const CSample* sample = preview->getSample();
    if (!sample) return false;
    preview->playFrom(asInt(to * double(sample->rate)));
    return true;
}

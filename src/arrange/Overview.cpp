#include "arrange/Overview.h"

#include "arrange/ArrangeState.h"
#include "arrange/PartPainter.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "gui/TouchStep.h"
#include "sequencer/song/CSeq.h"
#include "ui/ProgramItems.h"

#include <algorithm>

namespace {

constexpr int margin = 2, rowsShown = Overview::stripHeight - 2 * margin - 1;
constexpr double frameShare = 0.14;

} // namespace

Overview::Overview(CWin* owner, ArrangeState& shared)
    : CRangebar(owner, "overview", 0, 0, 1, int(stripHeight)), state(shared) {
    hint = "The whole song: drag the frame to scroll, its ends to zoom, press beside it to go on";
    spokenName = "Overview of the song";
}

void Overview::songChanged() {
    sketchedWidth = 0;
    redraw();
}

bool Overview::mouseWheel(int x, int y, int btn, int dy, int dx) {
    return !(btn & modControl) && CRangebar::mouseWheel(x, y, btn, dy, dx);
}

bool Overview::touch(int x, int y, int btn, const TouchStep& step) {
    return step.zoom == 1 && !(btn & modControl) && CRangebar::touch(x, y, btn, step);
}

/// Tracks share the rows of pixels when there are more of them.
void Overview::sketch() {
    sketchedWidth = width;
    sketchedTotal = total();
    picture.assign(size_t(rowsShown) * size_t(width), -1);
    CSeq* seq = state.seq();
    if (!seq) return;
    const auto& rows = state.rows.all();
    const int tracks = asMax(1, seq->getProg()->tracks.getCount());
    for (const ArrangeRow& row : rows) {
        if (!row.ofTrack()) continue;
        const int first = row.track * rowsShown / tracks;
        const int bottom = asMax(first + 1, (row.track + 1) * rowsShown / tracks - (tracks < 5));
        for (auto* part : row.songTrack->parts) {
            const double from = part->pos, to = from + seq->getTicks(part);
            const int x = asMinMax(asInt(from / total() * width), 0, width);
            const int right = asMinMax(asInt(to / total() * width), x, width);
            for (int y = first; y < asMin(bottom, rowsShown); y++)
                std::fill_n(picture.begin() + std::ptrdiff_t(y) * width + x,
                            asMin(asMax(1, right - x), width - x), partColour(row, part));
        }
    }
}

void Overview::paint(CGraphic* g, CRect) {
    if (sketchedWidth != width || sketchedTotal != total()) sketch();
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(fadeCol(clGrid.fillCol, palette.frame, 0.5), clientRect());
    for (int y = 0; y < rowsShown; y++) {
        const int* line = picture.data() + std::ptrdiff_t(y) * width;
        for (int x = 0; x < width;) {
            int end = x + 1;
            while (end < width && line[end] == line[x]) end++;
            if (line[x] != -1) g->fillRect(line[x], asRect(x, margin + y, end, margin + y + 1));
            x = end;
        }
    }
    const CRect seen = thumbRect();
    const int edge = hasKeyFocus() ? palette.accent : palette.dimText;
    fillAlpha(g, seen, palette.text, frameShare);
    g->frameRect(edge, asRect(seen.left, 0, seen.right, height - 1));
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
}

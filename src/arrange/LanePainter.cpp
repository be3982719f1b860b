#include "arrange/LanePainter.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "arrange/PartPainter.h"
#include "arrange/gestures/ArrangeGesture.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/PixelPaper.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "ui/PartDrawing.h"
#include "ui/PartMouse.h"
#include "ui/Workspace.h"

namespace {

constexpr double stripShare = 0.12, lineShare = 0.85, bypassShare = 0.35;

} // namespace

void paintLane(const ArrangeState& state, const ArrangeRow& row, const ArrangeGesture* gesture,
               PixelPaper& paper, CRect asked) {
    const CPalette& palette = state.workspace.mainWindow()->app->gui->palette;
    const int own = trackColourOf(row);
    const double strength = row.lane->bypass ? bypassShare : lineShare;
    const PointColours colours{fadeCol(palette.window, own, strength), own, palette.text};
    for (auto* part : row.songTrack->parts) {
        const CRect strip = partBox(state, row, part);
        if (strip.left >= asked.right) break;
        if (intersect(strip, asked).empty()) continue;
        paper.fill(fadeCol(palette.window, own, stripShare), strip);
        const PartLane lane = laneOf(state, row, part);
        CPart* draft = gesture ? gesture->draftOf(part->content(), row.lane->slot) : nullptr;
        drawEvents(paper, lane, draft ? draft : part, state.axis(), colours, asked);
    }
}

#include "ui/NoteDrawing.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/DrawBatch.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "instruments/CDrumSound.h"
#include "sequencer/CSeq.h"
#include "sequencer/EventIndex.h"
#include "sequencer/EventLanes.h"
#include "sequencer/PartEdits.h"
#include "ui/NoteMouse.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"

#include <array>
#include <cmath>
#include <vector>

namespace {

constexpr int octave = EventRows::octave;
constexpr int nameHeight = 11, nameRoom = 26; ///< pixels that a name takes
constexpr int shades = 8;                     ///< of velocity
constexpr double faintest = 0.45;             ///< of the softest note

/// Of notes in a row that are narrower than their marks, and lie under one that was painted, none
/// has to be painted again, but a selected one over one that is not.
class NarrowMarks {
public:
    static constexpr int width = 2; ///< pixels, the least of a mark

    NarrowMarks(const NotePlace& place, const TimeAxis& axis)
        : ticks(axis.ticksIn(width)), rows(size_t(place.rows.count())) {}

    bool covered(const EventIndex::Entry& e, int row) {
        if (e.end - e.tick >= ticks || row < 0 || size_t(row) >= rows.size()) return false;
        Row& last = rows[size_t(row)];
        const bool chosen = isSelected(e.event);
        if (e.tick >= last.from && e.tick < last.from + ticks && last.chosen >= chosen) return true;
        last = {double(e.tick), chosen};
        return false;
    }

private:
    struct Row {
        double from = -HUGE_VAL; ///< tick of the mark that was painted last
        bool chosen = false;
    };
    const double ticks;
    std::vector<Row> rows;
};

/// Calls `visit(event, facts, box)` for what meets `asked`.
template <class F>
void visitBox(const NotePlace& place, const CSeqMouseEdit& edit, CRect asked, CBaseEvent* event,
              const NoteFacts& facts, F&& visit) {
    const CRect box = place.boxOf(edit.axis, edit.scrollY, facts);
    const int foot = place.rows.drums() ? box.top + CDrumSound::openHeight : box.bottom;
    const CRect reach = asRect(box.left, box.top, box.right, foot);
    if (!box.empty() && !intersect(reach, asked).empty()) visit(event, facts, box);
}

/// The bar of the parameter that an opened sound shows.
void drawParam(PixelPaper& paper, const CDrumSound* sound, const CDrumEvent* hit, CRect box,
               int colour) {
    if (!sound || !sound->opened()) return;
    const double value = double(drumParam(hit, sound->shownParam));
    const int foot = box.top + CDrumSound::openHeight - 1;
    const int head = foot - asRound(value * (NoteMouse::paramLane - 2));
    paper.fill(colour, asRect(box.left, head, box.left + 3, foot));
    paper.fill(colour, asRect(box.left, head, asMax(box.right, box.left + 3), head + 2));
}

} // namespace

void drawPianoroll(CGraphic* g, CRect rect, const EventRows& rows, int scroll) {
    if (rows.count() == 0) return;
    const int first = rows.rowAt(rect.top + scroll), last = rows.rowAt(rect.bottom + scroll);
    for (int row = asMin(first, last); row <= asMax(first, last); row++) {
        const int top = rows.top(row) - scroll, bottom = top + rows.height(row);
        const CRect box = asRect(rect.left, top, rect.right, bottom);
        if (!rows.drums() && EventRows::blackKey(row))
            g->fillRect(clGridFlats.fillCol, intersect(box, rect));
        const bool line = rows.drums() || row % octave == 0 || row % octave == 5;
        if (line && bottom > rect.top && bottom <= rect.bottom)
            g->fillLine(clGridSnap.fillCol, asRect(rect.left, bottom - 1, rect.right, bottom));
    }
}

void drawEvents(PixelPaper& paper, const NotePlace& place, const EventIndex& shown,
                const CSeqMouseEdit& edit, const NoteLook& look, CRect asked) {
    std::array<int, shades> plain{}, chosen{};
    for (int i = 0; i < shades; i++) {
        const double share = look.strength * (faintest + (1 - faintest) * i / (shades - 1));
        plain[size_t(i)] = fadeCol(clGrid.fillCol, look.event, share);
        chosen[size_t(i)] = fadeCol(clGrid.fillCol, look.selected, share);
    }
    const auto paint = [&](CBaseEvent* e, const NoteFacts& facts, CRect box) {
        const auto shade = size_t(asMinMax(facts.velocity * shades / 128, 0, shades - 1));
        const int colour = isSelected(e) ? chosen[shade] : plain[shade];
        const CRect body = box.height() > 4 ? sizeRect(box, 0, 0, 0, -1) : box;
        paper.fill(colour, body);
        if (body.width() > 3 && body.height() > 3) paper.frame(look.outline, body);
        if (place.rows.drums())
            drawParam(paper, place.track->drumSound(facts.row), static_cast<CDrumEvent*>(e), box,
                      colour);
    };
    NarrowMarks narrow(place, edit.axis);
    place.eachNear(shown, edit.axis, asked, [&](const EventIndex::Entry& e) {
        if (!narrow.covered(e, rowOf(place.part, e.event)))
            visitBox(place, edit, asked, e.event, factsOf(place.part, e.event, e.tick), paint);
    });
}

void drawNoteNames(CGraphic* g, const NotePlace& place, const EventIndex& shown,
                   const CSeqMouseEdit& edit, const NoteLook& look, CRect asked) {
    if (!look.names || place.part->type != partMIDI || place.rows.height(0) < nameHeight) return;
    DrawBatch batch(g);
    const auto write = [&](CBaseEvent* e, const NoteFacts& facts, CRect box) {
        if (box.width() < nameRoom) return;
        const int fill = isSelected(e) ? look.selected : look.event;
        batch.text(textOn(fill), noteToStr(facts.row), sizeRect(box, 3, 0, 0, 0), textLeft);
    };
    const double wide = edit.axis.ticksIn(nameRoom - 1);
    place.eachNear(shown, edit.axis, asked, [&](const EventIndex::Entry& e) {
        if (e.end - e.tick < wide) return;
        visitBox(place, edit, asked, e.event, factsOf(place.part, e.event, e.tick), write);
    });
}

CRect bandBetween(CPoint a, CPoint b) {
    return asRect(asMin(a.x, b.x), asMin(a.y, b.y), asMax(a.x, b.x) + 1, asMax(a.y, b.y) + 1);
}

void drawBand(CGraphic* g, CRect band, CRect asked) {
    if (intersect(band, asked).empty()) return;
    fillAlpha(g, band, clSelection.fillCol, 0.15);
    g->frameRect(clSelection.fillCol, band);
}

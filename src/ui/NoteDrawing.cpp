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
#include "sequencer/EventLanes.h"
#include "sequencer/PartEdits.h"
#include "ui/NoteMouse.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"

#include <array>

namespace {

constexpr int octave = EventRows::octave;
constexpr int nameHeight = 11, nameRoom = 26; ///< pixels that a name takes
constexpr int shades = 8;                     ///< of velocity
constexpr double faintest = 0.45;             ///< of the softest note

/// Visits what meets `asked`.
template <class F>
void eachShown(const NotePlace& place, CPart* shown, const CSeqMouseEdit& edit, CRect asked,
               F&& visit) {
    const double last = place.ticksOf(edit.axis, asked.right);
    int tick = 0;
    for (CBaseEvent* e = shown->getEvents(); e; e = e->next) {
        tick += e->delta;
        if (tick > last) break;
        const NoteFacts facts = factsOf(shown, e, tick);
        const CRect box = place.boxOf(edit.axis, edit.scrollY, facts);
        const int foot = place.rows.drums() ? box.top + CDrumSound::openHeight : box.bottom;
        const CRect reach = asRect(box.left, box.top, box.right, foot);
        if (!box.empty() && !intersect(reach, asked).empty()) visit(e, facts, box);
    }
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

void drawEvents(PixelPaper& paper, const NotePlace& place, CPart* shown, const CSeqMouseEdit& edit,
                const NoteLook& look, CRect asked) {
    std::array<int, shades> plain{}, chosen{};
    for (int i = 0; i < shades; i++) {
        const double share = look.strength * (faintest + (1 - faintest) * i / (shades - 1));
        plain[size_t(i)] = fadeCol(clGrid.fillCol, look.event, share);
        chosen[size_t(i)] = fadeCol(clGrid.fillCol, look.selected, share);
    }
    eachShown(place, shown, edit, asked, [&](CBaseEvent* e, const NoteFacts& facts, CRect box) {
        const auto shade = size_t(asMinMax(facts.velocity * shades / 128, 0, shades - 1));
        const int colour = isSelected(e) ? chosen[shade] : plain[shade];
        const CRect body = box.height() > 4 ? sizeRect(box, 0, 0, 0, -1) : box;
        paper.fill(colour, body);
        if (body.width() > 3 && body.height() > 3) paper.frame(look.outline, body);
        if (place.rows.drums())
            drawParam(paper, place.track->drumSound(facts.row), static_cast<CDrumEvent*>(e), box,
                      colour);
    });
}

void drawNoteNames(CGraphic* g, const NotePlace& place, CPart* shown, const CSeqMouseEdit& edit,
                   const NoteLook& look, CRect asked) {
    if (!look.names || shown->type != partMIDI || place.rows.height(0) < nameHeight) return;
    DrawBatch batch(g);
    eachShown(place, shown, edit, asked, [&](CBaseEvent* e, const NoteFacts& facts, CRect box) {
        if (box.width() < nameRoom) return;
        const int fill = isSelected(e) ? look.selected : look.event;
        batch.text(textOn(fill), noteToStr(facts.row), sizeRect(box, 3, 0, 0, 0), textLeft);
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

#include "ui/NoteDrawing.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/DrawBatch.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "instruments/CDrumSound.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventIndex.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/EventLanes.h"
#include "sequencer/song/RowLoops.h"
#include "ui/NoteMouse.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/TrackPalette.h"

#include <array>
#include <cmath>
#include <vector>

namespace {

constexpr int octave = EventRows::octave;
constexpr int nameHeight = 11, nameRoom = 26; ///< pixels that a name takes
constexpr int shades = 8;                     ///< of velocity
constexpr double faintest = 0.45;             ///< of the softest note
constexpr double repeated = 0.3;              ///< of hits that a shorter row repeats
constexpr double mutedFill = 0.15, mutedEdge = 0.6;
constexpr double scaleMark = 0.10, rootMark = 0.24;
constexpr int hues = 12, hueStep = 7; ///< the next key up is far away in colour

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

/// The box of a hit is as high as it is loud; that of a note is all of its key.
CRect bodyOf(const NotePlace& place, const NoteFacts& facts, CRect box) {
    const CRect body = box.height() > 4 ? sizeRect(box, 0, 0, 0, -1) : box;
    if (!place.rows.drums()) return body;
    const int high = asMax(2, asRound(double(facts.velocity) / 127 * body.height()));
    return asRect(body.left, body.bottom - high, body.right, body.bottom);
}

/// What a note does besides: a line before each repeat, a bar before a flam, and the empty share of
/// its upper edge where it plays by chance.
void drawStyle(PixelPaper& paper, const HitStyle& style, CRect body, int colour, int ground) {
    for (int i = 1; i < style.repeats; i++) {
        const int x = body.left + body.width() * i / style.repeats;
        paper.fill(ground, asRect(x, body.top, x + 1, body.bottom));
    }
    if (style.flamMs > 0)
        paper.fill(colour,
                   asRect(body.left - 3, body.top + body.height() / 2, body.left - 1, body.bottom));
    if (style.chance == mostChance) return;
    const int edge = asMin(3, asMax(1, body.height() / 3));
    const int from = body.left + body.width() * style.chance / mostChance;
    paper.fill(ground, asRect(from, body.top, body.right, body.top + edge));
}

} // namespace

int noteColour(int colours, const NoteFacts& facts) {
    return trackColour(colours == colourChannel ? facts.channel : facts.row % hues * hueStep);
}

void drawPianoroll(CGraphic* g, CRect rect, const EventRows& rows, int scroll, const Scale& scale) {
    if (rows.count() == 0) return;
    const int first = rows.rowAt(rect.top + scroll), last = rows.rowAt(rect.bottom + scroll);
    for (int row = asMin(first, last); row <= asMax(first, last); row++) {
        const int top = rows.top(row) - scroll, bottom = top + rows.height(row);
        if (top == bottom) continue;
        const CRect box = asRect(rect.left, top, rect.right, bottom);
        if (!rows.drums() && EventRows::blackKey(row))
            g->fillRect(clGridFlats.fillCol, intersect(box, rect));
        if (!rows.drums() && scale.any() && scale.has(row))
            fillAlpha(g, intersect(box, rect), clSelection.fillCol,
                      (row - scale.root) % octave == 0 ? rootMark : scaleMark);
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
    const RowLoops* loops = rowLoops(place.part);
    const int silent = fadeCol(clGrid.fillCol, look.event, repeated);
    const auto colourOf = [&](const CBaseEvent* e, const NoteFacts& facts) {
        const auto shade = size_t(asMinMax(facts.velocity * shades / 128, 0, shades - 1));
        if (isSelected(e)) return chosen[shade];
        if (loops && !inRow(loops, facts.row, facts.tick)) return silent;
        if (look.colours == colourVelocity) return plain[shade];
        return fadeCol(clGrid.fillCol, noteColour(look.colours, facts), look.strength);
    };
    const auto paint = [&](CBaseEvent* e, const NoteFacts& facts, CRect box) {
        const int colour = colourOf(e, facts);
        const CRect body = bodyOf(place, facts, box);
        const bool framed = body.width() > 3 && body.height() > 3;
        paper.fill(facts.style.muted ? fadeCol(clGrid.fillCol, colour, mutedFill) : colour, body);
        if (facts.style != HitStyle()) drawStyle(paper, facts.style, body, colour, clGrid.fillCol);
        if (framed)
            paper.frame(facts.style.muted ? fadeCol(clGrid.fillCol, colour, mutedEdge)
                                          : look.outline,
                        body);
        if (place.rows.drums())
            drawParam(paper, place.track->drumSound(facts.row), asHit(e), box, colour);
    };
    NarrowMarks narrow(place, edit.axis);
    place.eachNear(shown, edit.axis, asked, [&](const EventIndex::Entry& e) {
        if (!narrow.covered(e, rowOf(place.part, e.event)))
            visitBox(place, edit, asked, e.event, factsOf(place.part, e.event, e.tick), paint);
    });
}

void drawRowLoops(PixelPaper& paper, const NotePlace& place, CPart* shown,
                  const CSeqMouseEdit& edit, const NoteLook& look, CRect asked) {
    const RowLoops* loops = rowLoops(shown);
    if (!loops) return;
    const int faint = fadeCol(clGrid.fillCol, look.event, repeated * look.strength);
    const int end = place.seq->getTicks(place.part) - place.part->offset;
    const double from = place.ticksOf(edit.axis, asked.left);
    const double to = std::min(double(end), place.ticksOf(edit.axis, asked.right));
    eachRepeat(shown->getEvents(), *loops, from - loops->longestRow(), to,
               [&](CDrumEvent* hit, int tick) {
                   const NoteFacts facts = factsOf(shown, hit, tick);
                   const CRect box = place.boxOf(edit.axis, edit.scrollY, facts);
                   if (!intersect(box, asked).empty()) paper.fill(faint, bodyOf(place, facts, box));
               });
    for (int row = 0; row < place.rows.count(); row++) {
        if (loops->of(row) == 0) continue;
        const int x = place.xOf(edit.axis, loops->of(row)), y = place.rows.top(row) - edit.scrollY;
        paper.fill(look.selected, asRect(x - 1, y, x + 1, y + place.rows.height(row) - 1));
    }
}

void drawNoteNames(CGraphic* g, const NotePlace& place, const EventIndex& shown,
                   const CSeqMouseEdit& edit, const NoteLook& look, CRect asked) {
    if (!look.names || place.part->type != partMIDI || place.rows.keyHeight() < nameHeight) return;
    DrawBatch batch(g);
    const auto write = [&](CBaseEvent* e, const NoteFacts& facts, CRect box) {
        if (box.width() < nameRoom) return;
        const int fill = facts.style.muted                ? clGrid.fillCol
                         : isSelected(e)                  ? look.selected
                         : look.colours == colourVelocity ? look.event
                                                          : noteColour(look.colours, facts);
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

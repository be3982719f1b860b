#include "arrange/CTimeline.h"

#include "arrange/PartPicture.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"
#include "sequencer/Points.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/TrackPalette.h"

#include <algorithm>

namespace {

constexpr int gap = 4;
constexpr int pointerReach = 4; ///< of the head of the play position to each side
constexpr int numberRoom = 44;  ///< from one bar number to the next, at least
constexpr double partShare = 0.32, edgeShare = 0.5, silentShare = 0.16, lineShare = 0.3;

} // namespace

CTimeline::CTimeline(CWin* owner, CQV* host, int l, int t, int w, int h, int row)
    : CCtrl(owner, "timeline", l, t, w, h), qv(host), rowHeight(row) {
    tabStop = true;
    hint = "Press to move the position; audio, MIDI files, clips and sounds can be dropped here";
}

CTimeline::~CTimeline() = default;

int CTimeline::xOf(double tick) const {
    return asInt(tick * (width - 1) / songTicks);
}

int CTimeline::tickAt(int x) const {
    return asInt(double(asMinMax(x, 0, width - 1)) * songTicks / asMax(1, width - 1));
}

void CTimeline::setFirstRow(int row) {
    if (row == firstRow) return;
    firstRow = row;
    songChanged();
}

CTimeline::Look CTimeline::lookOf(CSeq* seq) const {
    Look now;
    if (!seq) return now;
    seq->getLoopSection(now.loopFrom, now.loopTo);
    now.loop = seq->getLoop();
    const CList& tracks = seq->getProg()->tracks;
    bool anySolo = false;
    for (const auto* t : each<CSongTrack>(tracks)) anySolo = anySolo || t->soloed();
    for (const auto* t : each<CSongTrack>(tracks))
        now.heard.push_back(!t->muted() && (!anySolo || t->soloed()));
    return now;
}

// The picture.

/// Every bar has its number, or every second, fourth and so on, as there is room.
void CTimeline::drawBars(CGraphic* g, CSeq* seq) {
    const CPalette& colours = win->app->gui->palette;
    int step = 1;
    while (xOf(double(barTicks) * step) < numberRoom && step < songTicks / barTicks) step *= 2;
    eachBar(seq, songTicks, [&](int tick, int number) {
        if ((number - 1) % step != 0) return;
        const int x = xOf(tick);
        if (x > 0) g->fillLine(colours.frame, asRect(x, rulerHeight, x + 1, height));
        g->fillLine(colours.dimText, asRect(x, barsHeight - 6, x + 1, barsHeight));
        g->drawText(colours.dimText, asStr(number),
                    asRect(x + gap, 0, x + numberRoom, barsHeight - 1), textLeft);
    });
}

void CTimeline::drawLoop(CGraphic* g) {
    if (look.loopFrom >= look.loopTo) return;
    const CPalette& colours = win->app->gui->palette;
    const int from = xOf(look.loopFrom), to = asMin(xOf(look.loopTo), width - 1);
    const int colour = look.loop ? clLoop.fillCol : fadeCol(colours.panel, colours.dimText, 0.5);
    constexpr int thick = 3, flag = 7;
    g->fillRect(colour, asRect(from, 0, to + 1, thick));
    for (int i = 0; i < flag; i++) {
        g->fillRect(colour, asRect(from, thick + i, from + flag - i, thick + i + 1));
        g->fillRect(colour, asRect(to + 1 - flag + i, thick + i, to + 1, thick + i + 1));
    }
    if (!look.loop) return;
    for (const int x : {from, to}) g->fillLine(colour, asRect(x, thick, x + 1, height));
}

/// The name of a section has the room up to the next one, as sections may be shorter than it.
void CTimeline::drawSections(CGraphic* g, CSeq* seq) {
    const CPalette& colours = win->app->gui->palette;
    const CList& markers = seq->getProg()->markers;
    const int line = fadeCol(colours.window, clMarker.textCol, lineShare);
    for (const auto* m : each<CMarkerPart>(markers)) {
        const int from = xOf(m->pos), textFrom = from + 6;
        int room = width - textFrom;
        for (const auto* other : each<CMarkerPart>(markers))
            if (other->pos > m->pos) room = asMin(room, xOf(other->pos) - textFrom);
        const int wide = asMin(g->textWidth(m->id), room) + 2;
        const CRect flag = asRect(from, barsHeight + 1, textFrom + wide + gap, rulerHeight - 1);
        g->fillLine(line, asRect(from, barsHeight, from + 1, height));
        drawGuiItem(g, flag, &clMarker);
        g->drawText(clMarker.textCol, m->id,
                    asRect(textFrom, flag.top, textFrom + wide, flag.bottom), textLeft);
    }
}

void CTimeline::drawPart(CGraphic* g, CSeq* seq, CPart* part, CRect box, int colour, bool heard) {
    const CPalette& colours = win->app->gui->palette;
    const bool sounds = heard && !part->muted();
    const int own = sounds ? colour : fadeCol(colours.window, colours.dimText, edgeShare);
    const int fill = fadeCol(colours.window, own, sounds ? partShare : silentShare);
    g->fillRect(fill, box);
    g->frameRect(part->selected() ? colours.text : fadeCol(fill, own, edgeShare), box);
    drawPartContent(g, seq, part, box, own, [this](double tick) { return xOf(tick); });
    if (part->muted())
        g->drawText(colours.dimText, "muted", sizeRect(box, gap, gap, -gap, -gap),
                    textLeft | textTop);
}

void CTimeline::drawRow(CGraphic* g, CSongTrack* songTrack, int y, int colour, bool heard) {
    CSeq* seq = songTrack->track->seq;
    const int inner = rowHeight - 2 * gap;
    for (auto* part : each<CPart>(songTrack->parts)) {
        const CRect box = asRect(xOf(part->pos.load()), y + gap,
                                 xOf(double(part->pos) + seq->getTicks(part)), y + gap + inner);
        drawPart(g, seq, part, box, colour, heard);
    }
    g->fillLine(win->app->gui->palette.frame, asRect(0, y + rowHeight - 1, width, y + rowHeight));
}

void CTimeline::drawSong(CGraphic* g) {
    const int frame = win->app->gui->palette.frame;
    drawGuiItem(g, clientRect(), &clGrid);
    drawGuiItem(g, asRect(0, 0, width, rulerHeight), &clMarkers);
    CSeq* seq = playableSongOf(qv);
    look = lookOf(seq);
    if (seq) {
        songTicks = asMax(barTicks, seq->renderDuration());
        drawBars(g, seq);
        int y = rulerHeight, index = 0;
        for (auto* t : each<CSongTrack>(seq->getProg()->tracks)) {
            const int row = index++;
            if (row < firstRow || y >= height) continue;
            drawRow(g, t, y, trackColour(row), look.heard[size_t(row)]);
            y += rowHeight;
        }
        drawSections(g, seq);
        drawLoop(g);
    }
    for (const int y : {barsHeight, rulerHeight}) g->fillLine(frame, asRect(0, y - 1, width, y));
}

void CTimeline::songChanged() {
    picture.reset();
    redraw();
}

void CTimeline::paint(CGraphic* g, CRect) {
    if (!picture || picture->width != width || picture->height != height) {
        picture = std::make_unique<CBitmap>(width, height);
        drawSong(picture->graphic.get());
        shownX = playX();
    }
    g->render(picture.get(), 0, 0, 0, 0, width, height);
    drawPointer(g);
}

// The play position.

int CTimeline::playX() const {
    CSeq* seq = songOf(qv);
    return seq ? xOf(seq->getPos()) : 0;
}

void CTimeline::drawPointer(CGraphic* g) const {
    if (!songOf(qv)) return;
    const int accent = win->app->gui->palette.accent;
    g->fillLine(accent, asRect(shownX, 0, shownX + 1, height));
    drawArrow(g, accent, asRect(shownX - pointerReach, -1, shownX + pointerReach + 1, 5), dirDown,
              pointerReach);
    if (hasKeyFocus()) g->frameRect(accent, clientRect());
}

/// All that the pointer touches, with a pixel to spare where its edges lie between two.
CRect CTimeline::pointerRect(int x) const {
    constexpr int reach = pointerReach + 1;
    return asRect(x - reach, 0, x + reach + 1, height);
}

bool CTimeline::refresh() {
    const int before = shownX;
    const bool changed = picture && lookOf(playableSongOf(qv)) != look;
    if (changed) songChanged();
    shownX = playX();
    if (shownX == before) return changed;
    redraw(pointerRect(before));
    redraw(pointerRect(shownX));
    return true;
}

void CTimeline::jumpTo(int x) {
    qv->setPos(double(tickAt(x)));
}

void CTimeline::mouseDown(int x, int, int btn) {
    if (btn & modLeft) jumpTo(x);
}

void CTimeline::mouseMove(int x, int, int btn) {
    if ((btn & modLeft) && isPushed()) jumpTo(x);
}

bool CTimeline::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    CSeq* seq = songOf(qv);
    if (mods || !seq) return false;
    BarPlace at = barPlace(seq, asInt(seq->getPos()));
    const bool within = at.ticks > 0, late = within || at.beat > 1;
    const int beats = (key == keyRight) - (key == keyLeft && !within);
    const int bars = (key == keyPageDown) - (key == keyPageUp && !late);
    if (key == keyLeft || key == keyRight)
        at = {at.bar, at.beat + beats, 0};
    else if (key == keyPageUp || key == keyPageDown)
        at = {at.bar + bars, 1, 0};
    else if (key != keyHome && key != keyEnd)
        return false;
    qv->setPos(key == keyHome ? 0 : key == keyEnd ? seq->renderDuration() : tickOf(seq, at));
    return true;
}

void CTimeline::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = "Song line";
}

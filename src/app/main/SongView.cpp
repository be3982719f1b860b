#include "app/main/SongView.h"

#include "app/ProgramItems.h"
#include "app/main/CMeter.h"
#include "app/main/Displays.h"
#include "app/main/PartPicture.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "sequencer/CSeq.h"
#include "sequencer/Points.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int gap = 4;
constexpr int margin = 8;
constexpr int stripe = 4;       ///< of a track's colour at the left of its row
constexpr int pointerReach = 4; ///< of the head of the play position to each side

const unsigned trackColours[16] = {0x5aa9e6, 0x6fc18d, 0xe0a458, 0xd97b8f, 0xa58be0, 0x5fc0c0,
                                   0xc9b458, 0xe08a6b, 0x7f9cf0, 0x8cc26a, 0xd987c4, 0x62b7d8,
                                   0xc79a7b, 0x9aa7b8, 0xb0a0f0, 0x7ac5a0};

/// The channel that makes a track heard: that of the first component which its output feeds.
COutputChannel* soundOf(CQV* qv, CTrack* track) {
    if (COutputChannel* own = track->output()) return own;
    for (CComp* c : each<CComp>(qv->comps))
        for (CMIDICable* cable : each<CMIDICable>(c->midiCables))
            if (cable->fromPort == track->outPort() && c->output()) return c->output();
    return nullptr;
}

} // namespace

int trackColour(int index) {
    return hexColor(trackColours[size_t(index) % std::size(trackColours)]);
}

CTimeline::CTimeline(CWin* owner, CQV* host, int l, int t, int w, int h, int row)
    : CCtrl(owner, "timeline", l, t, w, h), qv(host), rowHeight(row) {
    hint = "Press to play from there";
}

CTimeline::~CTimeline() = default;

int CTimeline::xOf(double tick) const {
    return asInt(tick * (width - 1) / songTicks);
}

void CTimeline::drawSections(CGraphic* g, CSeq* seq) {
    const CPalette& colours = win->app->gui->palette;
    drawGuiItem(g, asRect(0, 0, width, rulerHeight), &clMarkers);
    for (CMarkerPart* m : each<CMarkerPart>(seq->getProg()->markers)) {
        const int from = xOf(m->pos), to = xOf(m->endTick());
        if (from > 0) g->fillLine(colours.frame, asRect(from, 0, from + 1, height));
        g->drawText(colours.dimText, m->id, asRect(from + 6, 0, to, rulerHeight), textLeft);
    }
    g->fillLine(colours.frame, asRect(0, rulerHeight - 1, width, rulerHeight));
}

void CTimeline::drawRow(CGraphic* g, CSongTrack* songTrack, int y, int colour) {
    const CPalette& colours = win->app->gui->palette;
    const int fill = fadeCol(colours.window, colour, 0.32);
    const int inner = rowHeight - 2 * gap;
    for (CPart* part : each<CPart>(songTrack->parts)) {
        const int ticks = songTrack->track->seq->getTicks(part);
        const CRect box =
            asRect(xOf(part->pos.load()), y + gap, xOf(part->pos + ticks), y + gap + inner);
        g->fillRect(fill, box);
        g->frameRect(part->selected() ? colours.text : fadeCol(fill, colour, 0.5), box);
        drawPartContent(g, songTrack->track->seq, part, box, colour,
                        [this](double tick) { return xOf(tick); });
    }
    g->fillLine(colours.frame, asRect(0, y + rowHeight - 1, width, y + rowHeight));
}

void CTimeline::drawSong(CGraphic* g) {
    drawGuiItem(g, clientRect(), &clGrid);
    g->fillLine(win->app->gui->palette.frame, asRect(0, rulerHeight - 1, width, rulerHeight));
    CSeq* seq = songOf(qv);
    if (!seq || !seq->getProg()) return;
    songTicks = std::max(barTicks, seq->renderDuration());
    drawSections(g, seq);
    int y = rulerHeight, index = 0;
    for (CSongTrack* t : each<CSongTrack>(seq->getProg()->tracks)) {
        drawRow(g, t, y, trackColour(index++));
        y += rowHeight;
    }
}

void CTimeline::songChanged() {
    picture.reset();
    redraw();
}

void CTimeline::paint(CGraphic* g, CRect) {
    if (!picture || picture->width != width || picture->height != height) {
        picture = std::make_unique<CBitmap>(width, height);
        drawSong(picture->graphic.get());
    }
    g->render(picture.get(), 0, 0, 0, 0, width, height);
    shownX = playX();
    drawPointer(g);
}

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
}

void CTimeline::refresh() {
    const int before = shownX, now = playX();
    if (now == before || !shown() || !painted || !picture) return;
    shownX = now;
    const int near = 4 * pointerReach;
    if (std::abs(now - before) <= near)
        return paintAround(std::min(before, now), std::max(before, now));
    paintAround(before, before);
    paintAround(now, now);
}

/// Paints at once where the pointer has been or is, as the whole is large and this happens often.
void CTimeline::paintAround(int from, int to) {
    constexpr int reach = pointerReach + 1, spare = 1; // edges may lie on half pixels
    const int start = std::max(from - reach, 0), end = to + reach + 1;
    if (end + spare >= width) return win->app->drawNow(win, this);
    const CRect place = sizeRect(asRect(start, 0, end, height), absX, absY, absX, absY);
    CGraphic* g = nullptr;
    if (!win->app->startDraw(win, &g, place, true)) return;
    g->originX = absX;
    g->originY = absY;
    {
        const DeviceScope device(g); // so that the picture lies as the whole does
        const int first = device.deviceLength(std::max(start - spare, 0));
        const int wide = device.deviceLength(end + spare) - first;
        g->render(picture.get(), first, 0, first, 0, wide, picture->deviceHeight());
    }
    drawPointer(g);
    win->app->endDraw(win, place, true);
}

void CTimeline::jumpTo(int x) {
    qv->setPos(double(asMinMax(x, 0, width - 1)) * songTicks / std::max(1, width - 1));
}

void CTimeline::mouseDown(int x, int, int btn) {
    if (btn & modLeft) jumpTo(x);
}

void CTimeline::mouseMove(int x, int, int btn) {
    if ((btn & modLeft) && isPushed()) jumpTo(x);
}

CTrackRow::CTrackRow(CWin* owner, CQV* host, CSongTrack* songTrack, int t, int h, int c)
    : CGroup(owner, "track", 0, t, rowWidth, h), qv(host), track(songTrack), colour(c) {
    constexpr int buttonSize = 20, meterHeight = 9;
    int x = rowWidth - 2 * (buttonSize + gap) - gap;
    muteButton = new CButton(owner, "mute", "M", x, gap, buttonSize, buttonSize);
    soloButton = new CButton(owner, "solo", "S", x + buttonSize + gap, gap, buttonSize, buttonSize);
    muteButton->skin = &clTrackMute;
    muteButton->litSkin = &clTrackMutePushed;
    soloButton->skin = &clTrackSolo;
    soloButton->litSkin = &clTrackSoloPushed;
    muteButton->hint = "Mute the track";
    soloButton->hint = "Play only this track and others with solo";
    muteButton->onChange = new _COnChange<CTrackRow>(this, &CTrackRow::muteClicked);
    soloButton->onChange = new _COnChange<CTrackRow>(this, &CTrackRow::soloClicked);
    meter = new CMeter(owner, margin + stripe, h - meterHeight - margin,
                       rowWidth - 2 * margin - stripe, meterHeight);
    meter->item = &clTrackLed;
    meter->hint = "Level of the track's instrument";
    for (CCtrl* ctrl : {static_cast<CCtrl*>(muteButton), static_cast<CCtrl*>(soloButton),
                        static_cast<CCtrl*>(meter)})
        addControl(ctrl);
}

void CTrackRow::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const CGuiItem2& look = shownSelected ? clTrackSelected : clTrack;
    drawGuiItem(g, clientRect(), &look, drawBackground);
    g->fillRect(colour, asRect(0, 0, stripe, height - 1));
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    const CRect name = asRect(margin + stripe, gap, muteButton->left - gap, gap + 20);
    g->drawText(look.textCol, track->track->id, name, textLeft);
    CGroup::paint(g, rect);
}

void CTrackRow::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    CSeq* seq = track->track->seq;
    const bool add = (btn & modControl) != 0;
    const bool on = !add || !track->track->selected();
    if (!add) seq->unselectTracks();
    seq->selectTrack(track, on);
}

void CTrackRow::muteClicked(CObject*) {
    track->setMuted(!track->muted());
}

void CTrackRow::soloClicked(CObject*) {
    track->setSoloed(!track->soloed());
}

void CTrackRow::refresh() {
    if (track->track->selected() != shownSelected) {
        shownSelected = !shownSelected;
        redraw();
    }
    muteButton->setLit(track->muted());
    soloButton->setLit(track->soloed());
    meter->channel = soundOf(qv, track->track);
    meter->refresh();
}

SongView::SongView(CWin* owner, CQV* host, int t, int w, int h)
    : CGroup(owner, "song", 0, t, w, h), qv(host) {
    setAlign(alignWidth | alignHeight, 0, 0);
    songChanged();
}

void SongView::forgetSong() {
    rows.clear();
    timeline = nullptr;
    clear();
    redraw();
}

void SongView::songChanged() {
    forgetSong();
    timeline = new CTimeline(win, qv, CTrackRow::rowWidth + 1, 0, width - CTrackRow::rowWidth - 1,
                             height, rowHeight);
    timeline->setAlign(alignWidth | alignHeight, 0, 0);
    addControl(timeline);
    CSeq* seq = songOf(qv);
    if (!seq || !seq->getProg()) return;
    int y = CTimeline::rulerHeight, index = 0;
    for (CSongTrack* t : each<CSongTrack>(seq->getProg()->tracks)) {
        rows.push_back(new CTrackRow(win, qv, t, y, rowHeight, trackColour(index++)));
        addControl(rows.back());
        y += rowHeight;
    }
    redraw();
}

void SongView::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const int heads = CTrackRow::rowWidth; // beside them the timeline covers all
    g->fillRect(colours.panel, asRect(0, 0, heads, height));
    g->fillLine(colours.frame,
                asRect(0, CTimeline::rulerHeight - 1, heads, CTimeline::rulerHeight));
    g->fillLine(colours.frame, asRect(heads, 0, heads + 1, height));
    CGroup::paint(g, rect);
}

void SongView::resized() {
    CGroup::resized();
    if (timeline) timeline->songChanged();
}

void SongView::refresh() {
    for (CTrackRow* row : rows) row->refresh();
    if (timeline) timeline->refresh();
}

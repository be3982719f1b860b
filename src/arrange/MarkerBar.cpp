#include "arrange/MarkerBar.h"

#include "arrange/ArrangeState.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/controls/CPopup.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TrackValues.h"
#include "ui/ProgramItems.h"
#include "ui/TrackPalette.h"

#include <functional>
#include <iterator>
#include <string_view>

namespace {

constexpr int edge = 3, margin = 4, leastFlag = 24, mostFlag = 160, spanHeight = 2;
constexpr int endReach = 4;
constexpr int tagPlay = 50, tagLoop = 51;

/// By `CMarkerPart::colourIndex`.
constexpr const char* colourNames[] = {
    "As the look", "Blue", "Green", "Amber", "Rose", "Violet", "Teal",     "Yellow", "Coral",
    "Iris",        "Leaf", "Pink",  "Sky",   "Sand", "Grey",   "Lavender", "Mint"};

const CMarkerPart* marker(const CPart* point) {
    return static_cast<const CMarkerPart*>(point);
}

} // namespace

MarkerBar::MarkerBar(CWin* owner, ArrangeState& shared)
    : PointLane(owner, shared, "markers", barHeight) {
    hint = "Markers: drag one, or the end of what it spans; Alt or a double click adds one, a "
           "double click on its flag renames it";
}

ListView<CPart> MarkerBar::points(CSeq* seq) const {
    return seq->getProg()->markers;
}

CPart* MarkerBar::addPoint(CSeq* seq, int tick, int) const {
    return addMarker(seq, tick);
}

int MarkerBar::endX(const CPart* point, const Shift& shift) const {
    return xOf(double(point->pos) + point->length + shift.ticks + shift.longer);
}

/// As long as its name, up to the next one.
CRect MarkerBar::boxOf(const CPart* point, const Shift& shift) const {
    const int from = xOf(double(point->pos) + shift.ticks);
    int room = mostFlag;
    for (const auto* other : points(state.seq()))
        if (other->pos > point->pos) room = asMin(room, xOf(other->pos.load()) - from - 1);
    const int text = textFace({})->textWidth(point->id) + edge + 2 * margin;
    return asRect(from, 1, from + asMax(leastFlag, asMin(text, room)), height - 1 - spanHeight);
}

void MarkerBar::paintGround(CGraphic* g, CRect asked) {
    g->fillRect(clMarkers.fillCol, asked);
}

void MarkerBar::paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) {
    const CPalette& palette = win->app->gui->palette;
    const int index = marker(point)->colourIndex;
    const int colour =
        index == 0 ? palette.accent : trackColour((index - 1) % (int(std::size(colourNames)) - 1));
    const CRect box = boxOf(point, shift);
    g->fillRect(colour, asRect(box.left, box.bottom, endX(point, shift), height - 1));
    const CGuiItem2& look = chosen ? clMarkerSelected : clMarker;
    drawGuiItem(g, box, &look);
    g->fillRect(colour, asRect(box.left, box.top, box.left + edge, box.bottom));
    const CRect text = asRect(box.left + edge + margin, box.top, box.right - 1, box.bottom);
    g->drawText(look.textCol, point->id, text, textLeft);
}

bool MarkerBar::onEnd(const CPart* point, int x) const {
    const int end = endX(point, {});
    return x > boxOf(point, {}).right && x >= end - endReach && x < end + endReach;
}

void MarkerBar::apply(CSeq* seq, CPart* point, const Shift& shift) {
    if (shift.longer)
        resizeMarker(seq, static_cast<CMarkerPart*>(point), point->length + shift.longer);
    else
        movePoint(seq, point, point->pos + shift.ticks);
}

CStr MarkerBar::shownText(const CPart* point, const Shift&) const {
    return point->id;
}

CStr MarkerBar::typedText(const CPart* point) const {
    return point->id;
}

void MarkerBar::typed(CSeq* seq, CPart* point, const CStr& text) {
    renameObject(seq, point, text);
}

std::vector<double> MarkerBar::look(const CPart* point) const {
    const auto name = double(std::hash<std::string_view>()(point->id.asChar()) >> 11); // exact
    return {double(point->length), double(marker(point)->colourIndex), name};
}

void MarkerBar::fillMenu(CPopup* popup, CPart*) {
    popup->addSeparator();
    addEntry(popup, "Go there", tagPlay);
    addEntry(popup, "Loop it", tagLoop);
    CPopup* colours = popup->addSub("Colour");
    for (int i = 0; i < int(std::size(colourNames)); i++) addEntry(colours, colourNames[i], i);
}

void MarkerBar::chosenEntry(CSeq* seq, CPart* point, int entry) {
    ValueDoor& door = *state.qv->values;
    if (entry == tagPlay) {
        state.qv->setPos(point->pos.load());
    } else if (entry == tagLoop) {
        door.begin("Loop marker");
        door.set(locatorsOf(seq->getProg()),
                 {double(point->pos), double(point->pos) + point->length});
        door.set(loopOf(seq->getProg()), {1.0, 1.0});
        door.end();
    } else {
        door.set(colourOf(static_cast<CMarkerPart*>(point)), double(entry));
    }
}

void MarkerBar::describe(Description& d, int part) const {
    PointLane::describe(d, part);
    if (part == wholeCtrl) d.name = "Markers";
}

#include "modular/GraphPainter.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/Cables.h"
#include "engine/ObjectKinds.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/GuiItem.h"
#include "gui/Palette.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "modular/CompGlyphs.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/GraphWatch.h"
#include "sequencer/song/CSeq.h"
#include "ui/ProgramItems.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double midiWidth = 1.4, audioWidth = 2.0, litExtra = 1.2; ///< of cables, at any zoom
constexpr double faint = 0.18, aside = 0.35;                        ///< how much of a cable is left
constexpr double dashOn = 7, dashOff = 5; ///< of cables that close loops, in pixels
constexpr double dotOn = 2, dotOff = 4;   ///< of those to keys
constexpr int curvePieces = 40;
constexpr double leastForNames = 0.4, leastForDetails = 0.75, leastForLarge = 1.5;
constexpr int glyphSide = 20, glyphInset = 10, textGap = 8;
constexpr int levelWidth = 24, levelHeight = 5; ///< of the meter on a cable
constexpr double dotRadius = 3.5;               ///< of the light on a MIDI cable
constexpr int marksHeight = 16, marksReach = 128;
constexpr int tagWide = 14, tagHigh = 14, tagGap = 2; ///< of letters
constexpr int figureWide = 64;
constexpr int halo = 4; ///< around a box, of its focus
constexpr int grey = 128;
constexpr int tagMargin = 8, tagHeight = 22; ///< of what is told beside a cable's end

TextLook nameLook(double zoom) {
    return {zoom >= leastForLarge     ? TextSize::large
            : zoom >= leastForDetails ? TextSize::normal
                                      : TextSize::small,
            true};
}

TextLook detailLook(double zoom) {
    return {zoom >= leastForLarge ? TextSize::normal : TextSize::small};
}

/// The tracks of a song, a program that has another name, else what it is.
CStr detailOf(CComp* comp) {
    if (const auto* seq = compAs<CSeq>(comp)) {
        const int tracks = seq->tracks.getCount();
        return tracks == 1 ? CStr("1 track") : asStr(tracks) + " tracks";
    }
    CProgram* program = comp->numProgs() > 0 ? comp->getProgram(-1) : nullptr;
    CStr name = program ? comp->getProgName(comp->curProg) : CStr();
    if (!name.empty() && name != comp->id) return name;
    const CStr kind = compKindName(comp->type);
    return kind.sub(0, 1).upperCase() + kind.sub(1, -1);
}

CPath smooth(const CableCurve& c) {
    CPath line;
    line.moveTo(c.start.x, c.start.y);
    line.curveTo(c.bend1.x, c.bend1.y, c.bend2.x, c.bend2.y, c.end.x, c.end.y);
    return line;
}

CPath dashed(const CableCurve& c, double on, double off) {
    CPath line;
    bool drawn = true;
    double left = on;
    CableCurve::Point from = c.start;
    line.moveTo(from.x, from.y);
    for (int i = 1; i <= curvePieces; i++) {
        const CableCurve::Point to = c.at(double(i) / curvePieces);
        const double length = std::hypot(to.x - from.x, to.y - from.y);
        for (double at = 0; at < length;) {
            const double piece = std::min(left, length - at);
            at += piece;
            left -= piece;
            const double x = from.x + (to.x - from.x) * at / length;
            const double y = from.y + (to.y - from.y) * at / length;
            if (drawn) line.lineTo(x, y);
            if (left > 0) continue;
            drawn = !drawn;
            left = drawn ? on : off;
            if (drawn) line.moveTo(x, y);
        }
        from = to;
    }
    return line;
}

/// A colour brought so far towards that of texts that a thin line in it can be seen.
int visible(int colour, int text) {
    constexpr double least = 3, step = 0.1;
    double share = 0;
    while (share < 1 && contrast(fadeCol(colour, text, share), clComps.fillCol) < least)
        share += step;
    return fadeCol(colour, text, std::min(share, 1.0));
}

/// A line between the left and the right side of what a port carries.
void paintSides(CGraphic* g, CRect square, int colour) {
    const int middle = (square.left + square.right) / 2;
    g->fillRect(colour, asRect(middle - 1, square.top + 1, middle + 1, square.bottom - 1));
}

} // namespace

GraphPainter::GraphPainter(const GraphModel& graph, const GraphShown& look,
                           const GraphWatch& watched, const CPalette& colours)
    : model(graph), shown(look), watch(watched), palette(colours),
      midiColour(visible(clCompsMidi.fillCol, colours.text)),
      audioColour(visible(clCompsAudio.fillCol, colours.text)) {
}

CRect GraphPainter::scaled(CRect area, double zoom) {
    return asRect(asInt(std::floor(area.left * zoom)), asInt(std::floor(area.top * zoom)),
                  asInt(std::ceil(area.right * zoom)), asInt(std::ceil(area.bottom * zoom)));
}

CRect GraphPainter::boxArea(int box) const {
    const CRect& area = model.boxes[size_t(box)].area;
    return sizeRect(scaled(sizeRect(area, -GraphModel::keysLeft, -GraphModel::portsAbove, 0,
                                    GraphModel::portsBelow + GraphModel::portSide),
                           shown.zoom),
                    -halo, -halo, halo, halo + tagHigh / 2);
}

CableCurve GraphPainter::curve(const GraphModel::Cable& cable) const {
    CableCurve c = curveOf(model, cable);
    for (CableCurve::Point* p : {&c.start, &c.bend1, &c.bend2, &c.end}) {
        p->x *= shown.zoom;
        p->y *= shown.zoom;
    }
    return c;
}

/// With the meter and the delay in its middle.
CRect GraphPainter::cableArea(int cable) const {
    constexpr int line = 4;
    const CRect bounds = curve(model.cables[size_t(cable)]).bounds();
    return unite(sizeRect(bounds, -line, -line, line, line), marksArea(cable));
}

CRect GraphPainter::marksArea(int cable) const {
    const CableCurve::Point middle = curve(model.cables[size_t(cable)]).at(0.5);
    const int x = asRound(middle.x), y = asRound(middle.y);
    constexpr int before = levelWidth / 2 + 2 * (tagWide + tagGap) + tagGap;
    return asRect(x - before, y - marksHeight / 2, x + marksReach, y + marksHeight / 2);
}

CRect GraphPainter::linkArea() const {
    if (shown.fromPort < 0) return {};
    CRect around = model.ports[size_t(shown.fromPort)].area();
    if (shown.toPort >= 0) around = unite(around, model.ports[size_t(shown.toPort)].area());
    return unite(sizeRect(scaled(around, shown.zoom), -halo, -halo, halo, halo), tagArea());
}

CRect GraphPainter::tagArea() const {
    if (shown.toPort < 0) return {};
    const CRect port = scaled(model.ports[size_t(shown.toPort)].area(), shown.zoom);
    const int wide = textFace({})->textWidth(shown.linkText) + 2 * tagMargin;
    const int x = port.right + tagMargin, y = (port.top + port.bottom) / 2 - tagHeight / 2;
    return asRect(x, y, x + wide, y + tagHeight);
}

void GraphPainter::paint(CGraphic* g, CRect asked) const {
    paintCables(g, asked);
    // What is hit first lies on top.
    for (int i = int(model.boxes.size()) - 1; i >= 0; i--)
        if (g->wants(boxArea(i))) paintBox(g, i);
    paintLink(g);
}

// Cables.

void GraphPainter::paintCables(CGraphic* g, CRect asked) const {
    std::vector<int> wanted;
    for (size_t i = 0; i < model.cables.size(); i++)
        if (g->wants(cableArea(int(i)))) wanted.push_back(int(i));
    if (wanted.empty()) return;
    {
        PixelPaper paper(g, asked);
        for (const int i : wanted) paintCable(paper, i);
    }
    for (const int i : wanted) paintMarks(g, i);
}

void GraphPainter::paintCable(PixelPaper& paper, int index) const {
    const GraphModel::Cable& cable = model.cables[size_t(index)];
    const bool path = !shown.litCables.empty(), lit = path && shown.litCables[size_t(index)];
    const bool away = !shown.faintCables.empty() && shown.faintCables[size_t(index)];
    const bool chosen = lit || shown.focus == cable.cable || shown.intoCable == index;
    const double width =
        (cable.midi ? midiWidth : audioWidth) * std::sqrt(shown.zoom) + (chosen ? litExtra : 0);
    const bool mute = isMuted(cable.cable);
    const double strength = chosen ? 1.0 : away ? faint : path || mute ? aside : 0.8;
    const CableCurve c = curve(cable);
    const CPath line = model.toKey(cable) ? dashed(c, dotOn, dotOff)
                       : cable.loops      ? dashed(c, dashOn, dashOff)
                                          : smooth(c);
    const int colour = shown.focus == cable.cable || shown.intoCable == index
                           ? palette.text
                           : kindColour(cable.midi);
    paper.stroke(colour, line, width, strength);
}

/// What a cable carries at present, and how late it is.
void GraphPainter::paintMarks(CGraphic* g, int index) const {
    const auto at = size_t(index);
    const float level = at < shown.levels.size() ? shown.levels[at] : 0;
    const GraphModel::Cable& cable = model.cables[at];
    CStr told = watch.figureOf(cable.cable);
    if (at < shown.delays.size() && !shown.delays[at].empty())
        told += (told.empty() ? CStr() : CStr("  ")) + shown.delays[at];
    const unsigned char tags = at < shown.cableTags.size() ? shown.cableTags[at] : 0;
    if ((level <= 0 && told.empty() && !tags) || shown.zoom < leastForNames) return;
    const CableCurve::Point middle = curve(cable).at(0.5);
    const int x = asRound(middle.x), y = asRound(middle.y);
    paintTags(g, tags, asPoint(x - levelWidth / 2 - tagGap, y - tagHigh / 2));
    if (level > 0 && cable.midi) {
        CPath dot;
        dot.arc(middle.x, middle.y, dotRadius, 0, 2 * std::numbers::pi - 0.1);
        dot.close();
        fillPath(g, dot, palette.text, double(level));
    } else if (level > 0) {
        const CRect bar = asRect(x - levelWidth / 2, y - levelHeight / 2 - 1, x + levelWidth / 2,
                                 y + levelHeight / 2 + 2);
        g->fillRect(palette.frame, bar);
        const int wide = asRound(float(levelWidth - 2) * level);
        const int colour = palette.meter[level >= 1 ? 2 : level > 0.9f ? 1 : 0];
        g->fillRect(colour, asRect(bar.left + 1, bar.top + 1, bar.left + 1 + wide, bar.bottom - 1));
    }
    if (told.empty()) return;
    const TextScope small(g, {TextSize::small});
    const CRect room =
        asRect(x + levelWidth / 2 + 4, y - marksHeight / 2, x + marksReach, y + marksHeight / 2);
    const int wide = textFace({TextSize::small})->textWidth(told);
    g->fillRect(clComps.fillCol, sizeRect(room, -2, 2, wide - room.width() + 2, -2));
    g->drawText(palette.dimText, told, room, textLeft);
}

/// Letters one before the other, the last of which ends at a point.
void GraphPainter::paintTags(CGraphic* g, unsigned char tags, CPoint end) const {
    const struct {
        unsigned char bit;
        const char* letter;
        int colour;
    } all[] = {{tagFailed, "!", palette.record},
               {tagHeard, "L", palette.accent},
               {tagSolo, "S", palette.solo},
               {tagMuted, "M", palette.mute}};
    const TextScope small(g, {TextSize::small, true});
    int right = end.x;
    for (const auto& tag : all) {
        if (!(tags & tag.bit)) continue;
        const CRect plate = asRect(right - tagWide, end.y, right, end.y + tagHigh);
        g->fillRound(tag.colour, plate);
        g->drawText(textOn(tag.colour), tag.letter, plate, 0);
        right -= tagWide + tagGap;
    }
}

// Boxes.

void GraphPainter::paintBox(CGraphic* g, int index) const {
    const GraphModel::Box& box = model.boxes[size_t(index)];
    const bool chosen = box.comp->hasFlag(compSelected);
    const CGuiItem2& look = chosen ? clCompsItemsSelected : clCompsItems;
    const CRect area = scaled(box.area, shown.zoom);
    drawGuiItem(g, area, &look);
    if (!shown.litBoxes.empty() && shown.litBoxes[size_t(index)] && !chosen)
        g->frameRound(palette.accent, area);
    const auto at = size_t(index);
    const unsigned char tags = at < shown.boxTags.size() ? shown.boxTags[at] : 0;
    if (tags & tagFailed) g->frameRound(palette.record, area);
    if (shown.focus == box.comp) g->frameRound(palette.accent, sizeRect(area, -2, -2, 2, 2));
    const double side = glyphSide * shown.zoom;
    const int left = asRound(area.left + glyphInset * shown.zoom);
    const int top = area.top + asRound((area.height() - side) / 2);
    const int ink = box.comp->enabled ? look.textCol : palette.dimText;
    drawCompGlyph(g, box.comp->type, asRect(left, top, left + asRound(side), top + asRound(side)),
                  ink);
    if (shown.zoom >= leastForNames) paintNames(g, box, area);
    paintPorts(g, box);
    if (shown.zoom < leastForNames) return;
    paintTags(g, tags, asPoint(area.right - tagGap, area.top - tagHigh / 2));
    paintFigure(g, box);
}

/// Below the box, beside its outputs.
void GraphPainter::paintFigure(CGraphic* g, const GraphModel::Box& box) const {
    CStr figure = watch.figureOf(box.comp);
    for (int i = box.firstPort; i < box.firstPort + box.portCount && figure.empty(); i++)
        figure = watch.figureOf(model.ports[size_t(i)].io);
    if (figure.empty()) return;
    const TextScope small(g, {TextSize::small});
    const CRect area = scaled(box.area, shown.zoom);
    const CRect plate = asRect(area.right - figureWide, area.bottom + halo, area.right,
                               area.bottom + halo + tagHigh);
    g->fillRect(clComps.fillCol, plate);
    g->drawText(palette.dimText, figure, plate, textRight);
}

void GraphPainter::paintNames(CGraphic* g, const GraphModel::Box& box, CRect area) const {
    const double zoom = shown.zoom;
    const auto index = size_t(&box - model.boxes.data());
    const bool chosen = box.comp->hasFlag(compSelected);
    const CGuiItem2& look = chosen ? clCompsItemsSelected : clCompsItems;
    const bool details = zoom >= leastForDetails;
    const int left = area.left + asRound((glyphInset + glyphSide + textGap) * zoom);
    const int right = area.right - asRound(textGap * zoom);
    const int middle = (area.top + area.bottom) / 2;
    {
        const TextScope name(g, nameLook(zoom));
        const CRect room =
            asRect(left, area.top, right, details ? middle + asRound(2 * zoom) : area.bottom);
        const CStr text = textFace(nameLook(zoom))->shortened(boxName(box.comp), room.width());
        g->drawText(look.textCol, text, sizeRect(room, 0, details ? asRound(4 * zoom) : 0, 0, 0),
                    textLeft);
    }
    if (!details) return;
    const TextScope detail(g, detailLook(zoom));
    const int ink = chosen ? look.textCol : palette.dimText;
    const CRect row = asRect(left, middle, right, area.bottom - asRound(4 * zoom));
    const bool measured = index < shown.loads.size() && !shown.loads[index].empty();
    const int wide =
        measured ? textFace(detailLook(zoom))->textWidth(shown.loads[index]) + textGap : 0;
    const TextFace* face = textFace(detailLook(zoom));
    CStr text = detailOf(box.comp);
    // Beside a figure what it is would be cut short for nothing.
    const bool plain = sameText(text, compKindName(box.comp->type));
    if (plain && measured && face->textWidth(text) > row.width() - wide) text = "";
    text = face->shortened(text, row.width() - wide);
    g->drawText(ink, text, sizeRect(row, 0, 0, -wide, 0), textLeft);
    if (measured) g->drawText(ink, shown.loads[index], row, textRight);
}

/// Framed in the colour of their kind, and filled where a cable ends.
void GraphPainter::paintPorts(CGraphic* g, const GraphModel::Box& box) const {
    for (int i = box.firstPort; i < box.firstPort + box.portCount; i++) {
        const GraphModel::Port& port = model.ports[size_t(i)];
        const int colour = kindColour(isMidi(port.kind));
        const CRect square = scaled(port.area(), shown.zoom);
        if (port.kind == PortKind::key) {
            paintKey(g, square, colour, model.joined(i));
        } else {
            g->fillRect(model.joined(i) ? colour : clComps.fillCol, square);
            g->frameRect(colour, square);
            if (port.stereo) paintSides(g, square, model.joined(i) ? clComps.fillCol : colour);
        }
        if (i == shown.hotPort || shown.focus == port.io)
            g->frameRect(palette.text, sizeRect(square, -1, -1, 1, 1));
    }
}

/// A wedge that points into the box from its side.
void GraphPainter::paintKey(CGraphic* g, CRect square, int colour, bool joined) const {
    CPath wedge;
    wedge.moveTo(square.left, square.top);
    wedge.lineTo(square.right, (square.top + square.bottom) / 2.0);
    wedge.lineTo(square.left, square.bottom);
    wedge.close();
    fillPath(g, wedge, joined ? colour : clComps.fillCol);
    strokePath(g, wedge, 1.2, colour);
}

/// The cable that would be made.
void GraphPainter::paintLink(CGraphic* g) const {
    if (shown.fromPort < 0 || shown.toPort < 0) return;
    const int colour = asColor(grey, grey, grey);
    const GraphModel::Port &from = model.ports[size_t(shown.fromPort)],
                           &to = model.ports[size_t(shown.toPort)];
    CPath line;
    line.moveTo(from.centre().x * shown.zoom, from.centre().y * shown.zoom);
    line.lineTo(to.centre().x * shown.zoom, to.centre().y * shown.zoom);
    strokePath(g, line, 2, colour);
    for (const GraphModel::Port* port : {&from, &to})
        g->fillRect(colour, sizeRect(scaled(port->area(), shown.zoom), -1, -1, 1, 1));
    const CRect tag = tagArea();
    g->fillRound(palette.raised, tag);
    g->frameRound(palette.frame, tag);
    g->drawText(palette.text, shown.linkText, tag, 0);
}

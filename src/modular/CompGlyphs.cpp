#include "modular/CompGlyphs.h"

#include "engine/CompTypes.h"
#include "gui/Shapes.h"

#include <numbers>
#include <vector>

namespace {

constexpr double side = 20; ///< of the squares that the glyphs are drawn in
constexpr double lineWidth = 1.4;
constexpr double nearlyRound = 2 * std::numbers::pi - 0.1; ///< a straight line closes it

/// Lines and discs in a square of `side`.
class Pen {
public:
    Pen(CGraphic* surface, CRect square, int ink)
        : g(surface), left(square.left), top(square.top), scale(square.width() / side), color(ink) {
    }
    ~Pen() { strokePath(g, lines, lineWidth * scale, color); }
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;

    void line(std::initializer_list<CPath::Point> points) {
        bool first = true;
        for (const auto& p : points) {
            if (first)
                lines.moveTo(x(p.x), y(p.y));
            else
                lines.lineTo(x(p.x), y(p.y));
            first = false;
        }
    }
    void box(double l, double t, double r, double b) {
        line({{l, t}, {r, t}, {r, b}, {l, b}, {l, t}});
    }
    void circle(double cx, double cy, double radius, double from = 0, double to = 2) {
        CPath arc;
        arc.arc(x(cx), y(cy), radius * scale, from * std::numbers::pi, to * std::numbers::pi);
        for (auto& part : arc.parts) lines.parts.push_back(part);
    }
    void disc(double cx, double cy, double radius) {
        CPath path;
        path.arc(x(cx), y(cy), radius * scale, 0, nearlyRound);
        path.close();
        fillPath(g, path, color);
    }
    void bar(double l, double t, double r, double b) {
        CPath path;
        path.moveTo(x(l), y(t));
        path.lineTo(x(r), y(t));
        path.lineTo(x(r), y(b));
        path.lineTo(x(l), y(b));
        path.close();
        fillPath(g, path, color);
    }

private:
    double x(double v) const { return left + v * scale; }
    double y(double v) const { return top + v * scale; }

    CGraphic* g;
    double left, top, scale;
    int color;
    CPath lines;
};

void drawSequencer(Pen& pen) {
    pen.bar(2, 3, 10, 6);
    pen.bar(7, 8.5, 18, 11.5);
    pen.bar(3, 14, 8, 17);
    pen.bar(11, 14, 16, 17);
}

void drawSynthesizer(Pen& pen) {
    pen.box(2, 4, 18, 16);
    for (const double at : {6.0, 10.0, 14.0}) {
        pen.line({{at, 10}, {at, 16}});
        pen.bar(at - 1.3, 4, at + 1.3, 10.5);
    }
}

void drawEffect(Pen& pen) {
    constexpr struct { double x, y; } knobs[] = {{4, 13}, {10, 6}, {16, 10}};
    for (const auto& knob : knobs) {
        pen.line({{knob.x, 3}, {knob.x, 17}});
        pen.disc(knob.x, knob.y, 2.4);
    }
}

void drawArpeggiator(Pen& pen) {
    pen.line({{2, 16}, {6, 16}, {6, 12}, {10, 12}, {10, 8}, {14, 8}, {14, 4}, {18, 4}});
    for (const double i : {0.0, 1.0, 2.0, 3.0}) pen.disc(4 + 4 * i, 16 - 4 * i, 1.7);
}

void drawGroup(Pen& pen) {
    for (const double at : {3.0, 10.0, 17.0}) pen.line({{at, 3}, {at, 7}, {10, 12}});
    pen.line({{10, 12}, {10, 17}});
    pen.disc(10, 12, 2.2);
}

void drawPlug(Pen& pen) {
    pen.circle(10, 9, 7);
    for (const double share : {1.0, 0.75, 0.5, 0.25, 0.0}) {
        constexpr double reach = 4;
        const double x = 10 - reach + 2 * reach * share;
        const double bend = (share - 0.5) * (share - 0.5) * 4;
        pen.disc(x, 6 + 3 * bend, 0.9);
    }
}

void drawMidi(Pen& pen, bool in) {
    drawPlug(pen);
    const double tip = in ? 19 : 14;
    pen.line({{10, 13}, {10, 19}});
    pen.line({{7.5, in ? tip - 2.5 : tip + 2.0},
              {10, in ? tip : tip - 0.5},
              {12.5, in ? tip - 2.5 : tip + 2.0}});
}

void drawMicrophone(Pen& pen) {
    pen.circle(10, 6, 3, 1, 2);
    pen.line({{7, 6}, {7, 9}});
    pen.line({{13, 6}, {13, 9}});
    pen.circle(10, 9, 3, 0, 1);
    pen.circle(10, 9, 5.6, 0, 1);
    pen.line({{10, 14.6}, {10, 17.5}});
    pen.line({{6.5, 17.5}, {13.5, 17.5}});
}

void drawSpeaker(Pen& pen) {
    pen.line({{3, 7.5}, {6, 7.5}, {10, 4}, {10, 16}, {6, 12.5}, {3, 12.5}, {3, 7.5}});
    pen.circle(9.5, 10, 4.5, -0.25, 0.25);
    pen.circle(9.5, 10, 8, -0.25, 0.25);
}

void drawPlugIn(Pen& pen) {
    pen.box(5, 7, 15, 13);
    pen.line({{8, 7}, {8, 3}});
    pen.line({{12, 7}, {12, 3}});
    pen.line({{10, 13}, {10, 17}});
}

} // namespace

void drawCompGlyph(CGraphic* g, int type, CRect square, int color) {
    Pen pen(g, square, color);
    switch (type) {
    case compSeq:
        return drawSequencer(pen);
    case compSampler:
        return drawSynthesizer(pen);
    case compEffect:
        return drawEffect(pen);
    case compArp:
        return drawArpeggiator(pen);
    case compGroupCh:
        return drawGroup(pen);
    case compMIDIIn:
    case compMIDIOut:
        return drawMidi(pen, type == compMIDIIn);
    case compAudioIn:
        return drawMicrophone(pen);
    case compAudioOut:
        return drawSpeaker(pen);
    default:
        return drawPlugIn(pen);
    }
}

const char* compKindName(int type) {
    switch (type) {
    case compSeq:
        return "sequencer";
    case compSampler:
        return "synthesizer";
    case compEffect:
        return "multi effect";
    case compArp:
        return "arpeggiator";
    case compGroupCh:
        return "group";
    case compMIDIIn:
        return "MIDI input";
    case compMIDIOut:
        return "MIDI output";
    case compAudioIn:
        return "audio input";
    case compAudioOut:
        return "audio output";
    case compVST:
        return "plug-in";
    default:
        return "component";
    }
}

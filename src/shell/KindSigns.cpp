#include "shell/KindSigns.h"

#include "shell/ProjectKinds.h"

namespace {

constexpr double line = 0.8; ///< half the width of an outline

SignPart box(double left, double top, double right, double bottom) {
    return {0, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

SignPart frame(double left, double top, double right, double bottom) {
    return {line, {{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}}};
}

SignPart disc(double x, double y, double radius) {
    return {radius, {{x, y}}};
}

/// From `kindFile` on.
const std::vector<Sign>& drawings() {
    static const std::vector<Sign> all = {
        // A sheet with a note.
        {frame(5, 2, 19, 22), disc(10, 17, 2.2), box(11, 7, 12.5, 17), box(11, 7, 16, 9)},
        // A sheet.
        {frame(5, 2, 19, 22)},
        // A note.
        {disc(8, 18, 3.2), box(9.5, 4, 11, 18), {0, {{9.5, 4}, {18, 6}, {18, 10}, {9.5, 8}}}},
        // A drum and its sticks.
        {frame(4, 11, 20, 21),
         box(4, 14, 20, 15),
         {line, {{4, 4}, {11, 10}}},
         {line, {{20, 4}, {13, 10}}}},
        // The keys of a piano.
        {frame(3, 5, 21, 19), box(8, 5, 10, 14), box(14, 5, 16, 14)},
        // The reels of a tape.
        {frame(2, 5, 22, 19), disc(8, 12, 3), disc(16, 12, 3), box(8, 14, 16, 15)},
        // A guitar.
        {disc(8, 16, 5), disc(12, 12, 3.4), {1.0, {{12, 12}, {20, 4}}}, disc(20, 4, 1.8)},
        // Components and a cable.
        {box(2, 3, 9, 9),
         box(15, 15, 22, 21),
         {line, {{9, 6}, {18.5, 6}, {18.5, 15}}},
         box(2, 15, 9, 21),
         {line, {{9, 18}, {15, 18}}}},
        // Steps of a beat.
        {frame(3, 5, 21, 19), box(5, 8, 8, 11), box(13, 8, 16, 11), box(9, 13, 12, 16),
         box(17, 13, 20, 16)},
        // Two heads of a band and a stage.
        {disc(8, 8, 2.6), disc(16, 8, 2.6), box(5, 12, 11, 18), box(13, 12, 19, 18),
         box(3, 20, 21, 21.5)},
        // The moon.
        {{line,
          {{15, 4},
           {10, 5},
           {7, 9},
           {7, 14},
           {10, 18},
           {15, 20},
           {19, 19},
           {14.5, 16},
           {12.5, 12},
           {13, 8},
           {15, 4}}}},
        // Songs that can be played.
        {frame(3, 3, 21, 21), {0, {{9, 7}, {9, 17}, {17, 12}}}},
        {frame(3, 3, 21, 21), {0, {{9, 7}, {9, 17}, {17, 12}}}},
    };
    return all;
}

} // namespace

KindSigns::KindSigns() : set(drawings(), side, side) {
}

void KindSigns::draw(CGraphic* g, int kind, CPoint at, int color, int ground) {
    set.draw(g, kind - kindFile, at, color, ground);
}

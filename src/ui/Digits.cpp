#include "ui/Digits.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr int digitWidth = 10, pointWidth = 3, digitHeight = 20, gap = 4;
constexpr double stroke = 1; ///< half its thickness
constexpr std::string_view known = "0123456789-/.:";

SignPart path(std::vector<SignPoint> points) {
    return {stroke, std::move(points)};
}

SignPart dot(double top) {
    return {0,
            {{0, top}, {pointWidth, top}, {pointWidth, top + pointWidth}, {0, top + pointWidth}}};
}

SignPart upsideDown(SignPart part) {
    for (SignPoint& p : part.points) p = {digitWidth - p.x, digitHeight - p.y};
    return part;
}

/// In the order of `known`.
const std::vector<Sign>& figures() {
    static const SignPart six = path({{8.9, 3.6},
                                      {8.1, 1.9},
                                      {6, 1},
                                      {4, 1},
                                      {1.9, 1.9},
                                      {1, 4},
                                      {1, 16},
                                      {1.9, 18.1},
                                      {4, 19},
                                      {6, 19},
                                      {8.1, 18.1},
                                      {9, 16},
                                      {9, 11.5},
                                      {8.1, 9.4},
                                      {6, 8.5},
                                      {4, 8.5},
                                      {1.9, 9.4},
                                      {1, 11.5}});
    static const std::vector<Sign> all = {
        {path({{4, 1},
               {6, 1},
               {8.1, 1.9},
               {9, 4},
               {9, 16},
               {8.1, 18.1},
               {6, 19},
               {4, 19},
               {1.9, 18.1},
               {1, 16},
               {1, 4},
               {1.9, 1.9},
               {4, 1}})},
        {path({{2.2, 4.5}, {6, 1}, {6, 19}})},
        {path({{1, 4.4},
               {1.9, 1.9},
               {4, 1},
               {6, 1},
               {8.1, 1.9},
               {9, 4},
               {9, 6},
               {8.2, 8.4},
               {1, 19},
               {9, 19}})},
        {path({{1, 3.8},
               {1.9, 1.9},
               {4, 1},
               {6, 1},
               {8.1, 1.9},
               {9, 4},
               {9, 6.6},
               {8.1, 8.8},
               {6, 9.7},
               {4, 9.7}}),
         path({{6, 9.7},
               {8.1, 10.6},
               {9, 13},
               {9, 16},
               {8.1, 18.1},
               {6, 19},
               {4, 19},
               {1.9, 18.1},
               {1, 16.2}})},
        {path({{7, 19}, {7, 1}, {1, 14}, {9, 14}})},
        {path({{8.5, 1},
               {2, 1},
               {1.4, 9},
               {3.8, 8},
               {6, 8},
               {8.1, 8.9},
               {9, 11},
               {9, 16},
               {8.1, 18.1},
               {6, 19},
               {4, 19},
               {1.9, 18.1},
               {1, 16.2}})},
        {six},
        {path({{1, 1}, {9, 1}, {4, 19}})},
        {path({{4, 1},
               {6, 1},
               {8, 1.9},
               {8.7, 4},
               {8.7, 6.6},
               {8, 8.7},
               {6, 9.6},
               {4, 9.6},
               {2, 8.7},
               {1.3, 6.6},
               {1.3, 4},
               {2, 1.9},
               {4, 1}}),
         path({{6, 9.6},
               {8.2, 10.5},
               {9, 12.8},
               {9, 16},
               {8.1, 18.1},
               {6, 19},
               {4, 19},
               {1.9, 18.1},
               {1, 16},
               {1, 12.8},
               {1.8, 10.5},
               {4, 9.6}})},
        {upsideDown(six)},
        {path({{2, 10}, {8, 10}})},
        {path({{1.5, 19}, {8.5, 1}})},
        {dot(17)},
        {dot(5), dot(12)},
    };
    return all;
}

int widthOf(char c) {
    return c == '.' || c == ':' ? pointWidth : digitWidth;
}

} // namespace

Digits::Digits() : set(figures(), digitWidth, digitHeight) {
}

void Digits::draw(CGraphic* g, CRect rect, const CStr& text, int color, int ground) {
    CPoint at = asPoint(rect.left, (rect.top + rect.bottom - digitHeight) / 2);
    for (const char* c = text.asChar(); *c; c++) {
        const size_t index = known.find(*c);
        if (index != known.npos) set.draw(g, int(index), at, color, ground);
        at.x += widthOf(*c) + gap;
    }
}

int Digits::advance(const CStr& text) {
    int width = 0;
    for (const char* c = text.asChar(); *c; c++) width += widthOf(*c) + gap;
    return width;
}

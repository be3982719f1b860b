#include "arrange/HeadSigns.h"

#include "sequencer/song/CTrack.h"

namespace {

SignPart box(double left, double top, double right, double bottom) {
    return {0, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

/// By `HeadSigns::Sign`.
const std::vector<Sign>& drawings() {
    constexpr double thin = 0.7, line = 0.9, head = 2.1;
    static const std::vector<Sign> all = {
        {box(1, 3, 6, 5), box(1, 4, 13, 12)},
        // Two notes under a beam.
        {{head, {{3.4, 10.8}}},
         {head, {{9.9, 9.8}}},
         {line, {{4.9, 10.5}, {4.9, 2.8}, {11.4, 1.8}, {11.4, 9.5}}}},
        {{line, {{1.5, 7}}},
         {line, {{4.2, 4.5}, {4.2, 9.5}}},
         {line, {{7, 2}, {7, 12}}},
         {line, {{9.8, 4}, {9.8, 10}}},
         {line, {{12.5, 6.2}, {12.5, 7.8}}}},
        // A drum with a stick.
        {{thin,
          {{1.5, 6},
           {3.5, 4.8},
           {7, 4.3},
           {10.5, 4.8},
           {12.5, 6},
           {12.5, 10.5},
           {10.5, 12},
           {7, 12.6},
           {3.5, 12},
           {1.5, 10.5},
           {1.5, 6}}},
         {thin, {{1.5, 6}, {3.5, 7.3}, {7, 7.8}, {10.5, 7.3}, {12.5, 6}}},
         {thin, {{12, 1}, {7.5, 5.8}}}},
        {{0, {{4, 2}, {4, 12}, {10, 7}}}},
        {{0, {{2, 4}, {12, 4}, {7, 10}}}},
        // A padlock.
        {box(3, 6, 11, 12),
         {line, {{4.6, 6}, {4.6, 3.8}, {5.8, 2.2}, {8.2, 2.2}, {9.4, 3.8}, {9.4, 6}}}},
        // Six rays.
        {{thin, {{7, 1}, {7, 13}}},
         {thin, {{1.8, 4}, {12.2, 10}}},
         {thin, {{1.8, 10}, {12.2, 4}}},
         {thin, {{5.2, 2}, {7, 3.8}, {8.8, 2}}},
         {thin, {{5.2, 12}, {7, 10.2}, {8.8, 12}}}},
    };
    return all;
}

} // namespace

HeadSigns::HeadSigns() : set(drawings(), side, side) {
}

HeadSigns::Sign HeadSigns::ofKind(int kind) {
    switch (kind) {
    case trackFolder:
        return folder;
    case trackAudio:
        return wave;
    case trackDrum:
        return drum;
    default:
        return notes;
    }
}

void HeadSigns::draw(CGraphic* g, Sign sign, CRect rect, int color, int ground) {
    const CPoint at =
        asPoint(rect.left + (rect.width() - side) / 2, rect.top + (rect.height() - side) / 2);
    set.draw(g, sign, at, color, ground);
}

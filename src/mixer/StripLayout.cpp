#include "mixer/StripLayout.h"

#include <algorithm>

namespace {

constexpr int margin = 4, gap = 4, hair = 1;
constexpr int nameHeight = 24, rowHeight = 18, trimHeight = 16, modeHeight = 14, panHeight = 30;
constexpr int figureHeight = 14, switchHeight = 18, gainWidth = 48;
constexpr int meterWidth = 13, faderWidth = 22, scaleWidth = 22;
constexpr int faderEnd = StripLayout::capHeight / 2; ///< of the fader, beyond its scale

} // namespace

StripLayout::StripLayout(const StripPlan& plan, bool wide) : width(wide ? wideStrip : narrowStrip) {
    const int left = margin, right = width - margin;
    int y = 0;
    const auto take = [&](int high, int behind) {
        const CRect row = asRect(left, y, right, y + high);
        y += high + behind;
        return row;
    };
    name = asRect(0, 0, width - hair, nameHeight);
    y = nameHeight + gap;
    if (plan.rows & rowsRouting) {
        source = take(rowHeight, hair);
        trim = take(trimHeight, gap);
    }
    if (plan.rows & rowsInserts) {
        mode = take(modeHeight, hair);
        inserts = take(plan.slots * slotHeight, gap);
    }
    if ((plan.rows & rowsSends) && plan.sends > 0) sends = take(plan.sends * sendHeight, gap);
    if (plan.rows & rowsRouting) target = take(rowHeight, gap);
    pan = take(panHeight, gap);
    const CRect figures = take(figureHeight, 2);
    int bottom = std::max(plan.height, leastHeight(plan)) - margin;
    if (plan.rows & rowsLoad) {
        load = asRect(left, bottom - figureHeight, right, bottom);
        bottom = load.top - gap;
    }
    if (plan.rows & rowsLoudness) {
        truePeak = asRect(left, bottom - rowHeight, right, bottom);
        loudness = asRect(left, truePeak.top - hair - rowHeight, right, truePeak.top - hair);
        bottom = loudness.top - gap;
    }
    switches = asRect(left, bottom - switchHeight, right, bottom);
    const int end = switches.top - gap;
    const int inner = faderWidth + (wide ? scaleWidth : 2) + meterWidth;
    const int x = (width - inner) / 2;
    fader = asRect(x, y, x + faderWidth, end);
    if (wide) scale = asRect(fader.right, y, fader.right + scaleWidth, end);
    meter = asRect(x + inner - meterWidth, y + faderEnd - clipHeight, x + inner, end - faderEnd);
    gain = asRect(left, figures.top, wide ? left + gainWidth : right, figures.bottom);
    if (wide) peak = asRect(left + gainWidth, figures.top, right, figures.bottom);
}

int StripLayout::leastHeight(const StripPlan& plan) {
    int high = nameHeight + gap + panHeight + gap + figureHeight + 2 + leastFader + gap +
               switchHeight + margin;
    if (plan.rows & rowsRouting) high += rowHeight + hair + trimHeight + gap + rowHeight + gap;
    if (plan.rows & rowsInserts) high += modeHeight + hair + plan.slots * slotHeight + gap;
    if ((plan.rows & rowsSends) && plan.sends > 0) high += plan.sends * sendHeight + gap;
    if (plan.rows & rowsLoad) high += figureHeight + gap;
    if (plan.rows & rowsLoudness) high += 2 * rowHeight + hair + gap;
    return high;
}

CRect StripLayout::slot(int index) const {
    const int top = inserts.top + index * slotHeight;
    return asRect(inserts.left, top, inserts.right, top + slotHeight - hair);
}

CRect StripLayout::send(int index) const {
    const int top = sends.top + index * sendHeight;
    return asRect(sends.left, top, sends.right, top + sendHeight - hair);
}

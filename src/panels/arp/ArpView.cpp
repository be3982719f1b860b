#include "panels/arp/ArpView.h"

#include "base/Numbers.h"
#include "engine/KeyNames.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "instruments/ArpSettings.h"
#include "instruments/CArp.h"

#include <algorithm>

namespace {

constexpr int least = 8, most = 64; ///< steps that show
constexpr int margin = 12, namesWidth = 40, textHeight = 16, barHeight = 6;
constexpr int exampleVelocity = 100;
constexpr double softest = 0.35; ///< share of the colour that the softest note has

} // namespace

ArpView::ArpView(CWin* owner, CArp& of) : CCtrl(owner, "steps", 0, 0, 1, usualHeight), arp(of) {
    refresh();
}

ArpView::Shape ArpView::present() const {
    Shape now;
    arp.sight.take();
    const ArpSight& sight = arp.sight.taken();
    for (int i = 0; i < sight.keyCount; i++) now.keys.push_back(sight.keys[i].key);
    for (const Setting& s : arpProgSettings())
        now.settings.push_back(s.kind.get(&arp, arp.curProg)[0]);
    if (sight.keyCount > 0 && sight.taken > 0 && !steps.empty())
        now.current = (sight.taken - 1) % int(steps.size());
    return now;
}

bool ArpView::refresh() {
    Shape now = present();
    if (now == shape && !steps.empty()) return false;
    const bool other = now.keys != shape.keys || now.settings != shape.settings || steps.empty();
    shape = std::move(now);
    if (other) layOut();
    redraw();
    return true;
}

void ArpView::layOut() {
    steps.clear();
    const CArpProg* prog = arp.getProg();
    if (!prog) return;
    const ArpSight& sight = arp.sight.taken();
    std::vector<CArpKey> keys(sight.keys, sight.keys + sight.keyCount);
    if (keys.empty())
        for (const int key : {0, 4, 7})
            keys.push_back({static_cast<signed char>(key), exampleVelocity});
    const int period = std::clamp(arpPeriod(*prog, keys), 1, most);
    const int rounds = (least + period - 1) / period;
    steps = arpSteps(*prog, keys, period * rounds);
    lowest = 127, highest = -128;
    for (const ArpStep& step : steps)
        for (const CArpKey& note : step.notes) {
            lowest = std::min<int>(lowest, note.key);
            highest = std::max<int>(highest, note.key);
        }
}

void ArpView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.window, clientRect());
    g->frameRound(colours.frame, clientRect());
    const TextScope small(g, {.size = TextSize::small});
    const CRect title = asRect(margin, 2, width - margin, 2 + textHeight);
    g->drawText(colours.dimText,
                shape.keys.empty() ? "Hold keys to play; this is what C, E and G become"
                                   : "What the keys that are held become",
                title, textLeft);
    if (steps.empty() || highest < lowest) return;
    const double end =
        steps.back().tick +
        std::max(1.0, steps.back().tick / std::max<double>(1.0, double(steps.size() - 1)));
    const int from = namesWidth, upper = textHeight + margin, lower = height - margin - barHeight;
    const auto x = [&](double tick) {
        return from + asRound(tick / end * (width - margin - from));
    };
    const auto y = [&](int key) {
        if (highest == lowest) return (upper + lower) / 2;
        return lower - (key - lowest) * (lower - upper) / (highest - lowest);
    };
    for (const int key : {lowest, highest})
        g->drawText(colours.dimText, noteToStr(key + CArpKey::middle),
                    asRect(4, y(key) - 5, from - 4, y(key) + barHeight + 5), textRight);
    for (size_t i = 0; i < steps.size(); i++) {
        const ArpStep& step = steps[i];
        const bool sounds = int(i) == shape.current;
        const int left0 = x(step.tick);
        g->fillLine(i % 4 ? colours.panel : colours.frame,
                    asRect(left0, upper - 4, left0 + 1, height - margin / 2));
        for (const CArpKey& note : step.notes) {
            const double loud = softest + (1.0 - softest) * note.velocity / 127.0;
            const int right0 = std::max(left0 + 3, x(step.tick + step.ticks));
            const int top0 = y(note.key);
            g->fillRound(sounds ? colours.text : fadeCol(colours.window, colours.accent, loud),
                         asRect(left0 + 1, top0, right0, top0 + barHeight));
        }
    }
}

void ArpView::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Steps";
    d.text = asStr(int(steps.size())).asChar();
}

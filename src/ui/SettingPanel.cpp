#include "ui/SettingPanel.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "ui/SettingButton.h"
#include "ui/SettingKnob.h"

#include <algorithm>

namespace {

constexpr int gap = 8, pad = 8, titleHeight = 20, cellGap = 4;
constexpr int lineHeight = SettingKnob::usualHeight + 4;

} // namespace

SettingPanel::SettingPanel(CWin* owner, const CStr& name, ValueDoor* through)
    : CGroup(owner, name, 0, 0, 1, 1), door(through) {
    arrowsWalk = true;
}

void SettingPanel::show(const std::vector<Section>& sections) {
    clear();
    frames.clear();
    knobs.clear();
    buttons.clear();
    for (const Section& section : sections)
        for (const Setting& setting : section.table)
            add(section, setting, !section.title.empty() && &setting == section.table.data());
    redraw();
}

SettingPanel::Frame& SettingPanel::frameOf(const CStr& title, bool first) {
    const auto known = std::ranges::find(frames, title, &Frame::title);
    return known == frames.end() ? frames.emplace_back(Frame{title, {}, {}, first}) : *known;
}

void SettingPanel::add(const Section& section, const Setting& setting, bool first) {
    const CStr group = setting.group;
    const bool alone = section.title.empty() || section.title == group;
    const CStr title = alone ? group : section.title + ": " + group;
    const SettingPlace place{
        &setting, section.object, section.index < 0 ? setting.index : section.index,
        title,    section.others, section.alive};
    CCtrl* made = nullptr;
    if (setting.form == Setting::onOff || setting.form == Setting::choice)
        made = buttons.emplace_back(new SettingButton(win, door, place));
    else
        made = knobs.emplace_back(new SettingKnob(win, door, place));
    addControl(made);
    frameOf(title, first).controls.push_back(made);
}

/// On as many lines as it takes.
int SettingPanel::widthOf(const Frame& frame, int most) const {
    int widest = 0, line = 2 * pad;
    for (const CCtrl* c : frame.controls) {
        if (line + c->width > most && line > 2 * pad) line = 2 * pad;
        line += c->width;
        widest = std::max(widest, line);
        line += cellGap;
    }
    return widest;
}

void SettingPanel::fit(int wide) {
    int x = gap, y = gap, deepest = 0;
    const int most = std::max(wide - 2 * gap, SettingButton::choiceWidth + 2 * pad);
    for (Frame& frame : frames) {
        const int own = widthOf(frame, most);
        if (x > gap && (frame.first || x + own > wide - gap)) {
            x = gap;
            y += deepest + gap;
            deepest = 0;
        }
        int at = x + pad, line = y + titleHeight;
        for (CCtrl* c : frame.controls) {
            if (at + c->width > x + own - pad && at > x + pad) {
                at = x + pad;
                line += lineHeight;
            }
            c->setBounds(at, line, c->width, c->height);
            at += c->width + cellGap;
        }
        frame.bounds = asRect(x, y, x + own, line + lineHeight);
        deepest = std::max(deepest, frame.bounds.bottom - y);
        x += own + gap;
    }
    setBounds(left, top, wide, y + deepest + gap);
}

bool SettingPanel::refresh() {
    bool any = false;
    for (SettingKnob* k : knobs) any |= k->refresh();
    for (SettingButton* b : buttons) any |= b->refresh();
    return any;
}

void SettingPanel::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    for (const Frame& frame : frames) {
        const CRect& at = frame.bounds;
        g->fillRound(colours.raised, at);
        const TextScope bold(g, {.size = TextSize::small, .bold = true});
        g->drawText(colours.text, frame.title,
                    asRect(at.left + pad, at.top + 2, at.right - pad, at.top + titleHeight),
                    textLeft);
    }
    CGroup::paint(g, rect);
}

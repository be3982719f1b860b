#include "ui/SettingPanel.h"

#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "ui/ParamMenu.h"
#include "ui/SettingButton.h"
#include "ui/SettingKnob.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int gap = 8, pad = 8, titleHeight = 20, cellGap = 4;
constexpr int lineHeight = SettingKnob::usualHeight + 4;

} // namespace

SettingPanel::SettingPanel(CWin* owner, const CStr& name, Workspace& space)
    : CGroup(owner, name, 0, 0, 1, 1), workspace(space) {
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

SettingPlace SettingPanel::placeOf(const Section& section, const Setting& setting) const {
    const CStr group = setting.group;
    const bool alone = section.title.empty() || section.title == group;
    SettingPlace place{&setting,
                       section.object,
                       section.index < 0 ? setting.index : section.index,
                       alone ? group : section.title + ": " + group,
                       section.others,
                       section.alive};
    if (section.param)
        place.param = [of = section.param, &setting](bool assign) { return of(setting, assign); };
    if (section.paramComp) place.paramComp = section.paramComp(setting);
    if (section.modulation)
        place.modulation = [of = section.modulation, &setting] { return of(setting); };
    return place;
}

std::function<void(CPopup*)> SettingPanel::menuOf(const SettingPlace& place) const {
    return [&space = workspace, place](CPopup* popup) {
        addParamItems(popup, space, place.param, place.paramComp);
    };
}

/// What is set by a control that has a parameter counts as set by that.
std::function<void()> SettingPanel::tellerOf(const SettingPlace& place) const {
    if (!place.param) return {};
    return [door = workspace.host()->values.get(), place] {
        if (!place.there()) return;
        if (const ParamRef by = place.param(false))
            door->movedBy(by, float(place.setting->shareOf(place.number())));
    };
}

void SettingPanel::add(const Section& section, const Setting& setting, bool first) {
    const SettingPlace place = placeOf(section, setting);
    ValueDoor* door = workspace.host()->values.get();
    CCtrl* made = nullptr;
    if (setting.form == Setting::onOff || setting.form == Setting::choice) {
        SettingButton* button = buttons.emplace_back(new SettingButton(win, door, place));
        button->menu = menuOf(place);
        button->onSet = tellerOf(place);
        made = button;
    } else {
        SettingKnob* knob = knobs.emplace_back(new SettingKnob(win, door, place));
        knob->menu = menuOf(place);
        knob->onSet = tellerOf(place);
        made = knob;
    }
    addControl(made);
    frameOf(place.title, first).controls.push_back(made);
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

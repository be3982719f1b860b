#include "ui/SettingKnob.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "ui/KnobFace.h"
#include "ui/SettingName.h"

namespace {

constexpr double wholeTravel = 160.0; ///< pixels from end to end
constexpr double radius = 14.0;
constexpr int textHeight = 14;

} // namespace

SettingKnob::SettingKnob(CWin* owner, ValueDoor* through, const SettingPlace& what)
    : CStoredCtrl(owner, what.setting->name(), through, 0, 0, usualWidth, usualHeight),
      place(what) {
    const Setting& s = *place.setting;
    least = s.least;
    most = s.most;
    usual = s.usual;
    origin = least < 0.0 && most > 0.0 ? 0.0 : least;
    logarithmic = s.form == Setting::ratio;
    whole = s.form == Setting::whole;
    spokenName = place.spoken();
    value = [this] { return place.there() ? std::optional(place.value()) : std::nullopt; };
    values = [this] { return place.along(); };
    text = [this] { return place.text(); };
    typedValue = [this](double entered) {
        if (!place.there()) return entered;
        return place.setting->unit->typed(place.object, entered);
    };
    refresh();
}

double SettingKnob::along(const DragPoint& point) const {
    return (point.at.x - point.anchor.x) + (point.anchor.y - point.at.y);
}

double SettingKnob::travel() const {
    return wholeTravel;
}

bool SettingKnob::refresh() {
    const ModulatedValue now =
        place.modulation && place.there() ? place.modulation() : ModulatedValue();
    const bool changed = now != moved;
    moved = now;
    if (changed) redraw();
    return CStoredCtrl::refresh() || changed;
}

void SettingKnob::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    paintSettingName(g, colours, place.setting->name(), width);
    KnobFace face{width / 2.0,           height / 2.0 + 1, radius,
                  shareOf(shownValue()), shareOf(origin),  held()};
    if (moved.moved) {
        face.movedFrom = shareOf(moved.low);
        face.movedTo = shareOf(moved.high);
        if (moved.sounding) face.now = shareOf(moved.now);
    }
    face.paint(g, colours);
    const CRect below = asRect(0, height - textHeight, width, height);
    if (typing()) {
        paintTyping(g, below);
    } else {
        const TextScope small(g, {.size = TextSize::small});
        g->drawText(colours.text, told(), below, 0);
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}

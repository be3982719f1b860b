#include "mixer/CEqWin.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/Senders.h"
#include "gui/controls/CDropdown.h"
#include "mixer/CEqView.h"
#include "mixer/ValueBar.h"
#include "ui/ProgramItems.h"
#include "ui/RoundButton.h"

namespace {

constexpr int margin = 8, gap = 4, columnGap = 12, viewHeight = 220, column = 116;
constexpr int rowHeight = 20, powerWidth = 28;
constexpr int viewWidth = 4 * column + 3 * columnGap;
constexpr int content = 3 * margin + viewHeight + rowHeight + 3 * (rowHeight + gap);
constexpr int windowStyle = winCaption | winEscape | winCentre | winKeysToOwner;
/// In the order of `EqType`, of those that the list offers.
constexpr const char* forms[] = {"LSH", "PEQ", "HSH", "LPF", "HPF"};

struct ValueLook {
    const char *name, *label, *spoken;
    StoredValue (*of)(COutputChannel*, int);
    double least, most, usual, origin;
    bool logarithmic;
    int param; ///< of the strip, in the first band
};
constexpr int paramsPerBand = 4;
const ValueLook looks[] = {
    {"freq", "Freq", "Frequency", eqFrequencyOf, double(CEQ::minFrequency),
     double(CEQ::maxFrequency), 1000.0, double(CEQ::minFrequency), true, 5},
    {"gain", "Gain", "Gain", eqGainOf, double(CEQ::minGain), double(CEQ::maxGain), 0.0, 0.0, false,
     4},
    {"q", "Q", "Width", eqQOf, double(CEQ::minQ), double(CEQ::maxQ), 0.71, double(CEQ::minQ), true,
     6},
};

} // namespace

CEqWin::CEqWin(CWin* owner, CQV* host, const std::function<void()>& follow)
    : CWin(owner->app, owner, "Equaliser", 0, 0, viewWidth + 2 * margin, content, windowStyle),
      qv(host), followStrips(follow),
      view(new CEqView(this, "curve", margin, margin, viewWidth, viewHeight)) {
    addControl(view);
    view->spokenName = "Curve";
    view->onChange = new _COnChange<CEqWin>(this, &CEqWin::curveChanged);
    for (int i = 0; i < int(bands.size()); i++) makeBand(i);
    setSizeFromControls(0, 0);
}

void CEqWin::mouseDown(int x, int y, int btn) {
    followStrips();
    if (visible) CWin::mouseDown(x, y, btn);
}

void CEqWin::mouseMove(int x, int y, int btn) {
    followStrips();
    if (visible) CWin::mouseMove(x, y, btn);
}

bool CEqWin::keyDown(int key, int mods) {
    followStrips();
    return visible && CWin::keyDown(key, mods);
}

void CEqWin::makeBand(int index) {
    Band& band = bands[size_t(index)];
    const int x = margin + index * (column + columnGap);
    int y = 2 * margin + viewHeight;
    const CStr number = asStr(index + 1);
    band.power = new RoundButton(this, "power", number, x, y, powerWidth, rowHeight);
    band.power->tag = index;
    band.power->skin = &clTrackControls;
    band.power->litSkin = &clTrackControlsPushed;
    band.power->spokenName = "Band " + number;
    band.power->hint = "Switch the band";
    band.power->onChange = new _COnChange<CEqWin>(this, &CEqWin::powerClicked);
    band.form =
        new CDropdown(this, "form", x + powerWidth + gap, y, column - powerWidth - gap, rowHeight);
    band.form->tag = index;
    band.form->spokenName = "Form, band " + number;
    band.form->hint = "Low shelf, peak, high shelf, low pass, high pass";
    for (const char* f : forms) band.form->add(f);
    band.form->onChange = new _COnChange(this, &CEqWin::formChosen);
    addControl(band.power);
    addControl(band.form);
    for (size_t i = 0; i < band.values.size(); i++) {
        const ValueLook& look = looks[i];
        y += rowHeight + gap;
        auto* bar = new ValueBar(this, look.name, qv->values.get());
        bar->setBounds(x, y, column, rowHeight);
        bar->label = look.label;
        bar->spokenName = look.spoken + CStr(", band ") + number;
        bar->hint = look.spoken + CStr(": drag, with Shift finely, or type a number");
        bar->least = look.least;
        bar->most = look.most;
        bar->usual = look.usual;
        bar->origin = look.origin;
        bar->logarithmic = look.logarithmic;
        bar->alwaysTold = true;
        bar->value = [this, index, &look]() -> std::optional<StoredValue> {
            return strip.channel ? std::optional(look.of(strip.channel, index)) : std::nullopt;
        };
        bar->typedValue = [](double number_) { return number_; };
        bar->text = [this, index, &look] {
            return strip.channel ? strip.channel->paramText(look.param + index * paramsPerBand)
                                 : CStr();
        };
        band.values[i] = bar;
        addControl(bar);
    }
}

void CEqWin::open(const MixerStrip& shownStrip) {
    strip = shownStrip;
    setCaption("Equaliser, " + nameOf(strip));
    view->setRate(qv->rate);
    view->setStrip(strip.channel);
    refresh();
    if (!visible) show(true);
    raise(true);
}

void CEqWin::refresh() {
    if (!strip.channel) return;
    bool changed = false;
    for (int i = 0; i < int(bands.size()); i++) {
        const Band& band = bands[size_t(i)];
        const CEQ* eq = strip.channel->eq[i];
        const bool on = eq->active == 1;
        changed = changed || on != band.power->lit;
        band.power->setLit(on);
        if (band.form->index != eq->filterType) {
            band.form->setIndex(eq->filterType);
            changed = true;
        }
        for (ValueBar* bar : band.values) changed = bar->refresh() || changed;
    }
    if (changed) view->curve.Invalidate();
    view->followSound();
}

void CEqWin::hide() {
    view->setStrip(nullptr);
    strip = {};
    CWin::hide();
}

/// What is moved is meant to be heard.
void CEqWin::curveChanged(CObject*) {
    if (view->current >= 0 && strip.channel->eq[view->current]->active != 1)
        qv->values->set(eqPowerOf(strip.channel, view->current), 1.0);
    refresh();
}

void CEqWin::powerClicked(CObject* sender) {
    const int band = tagOf(sender);
    const StoredValue power = eqPowerOf(strip.channel, band);
    qv->values->set(power, power.get()[0] != 0.0 ? 0.0 : 1.0);
    refresh();
}

void CEqWin::formChosen(CDropdown* form) {
    if (form->index >= 0) qv->values->set(eqTypeOf(strip.channel, form->tag), form->index);
    refresh();
}

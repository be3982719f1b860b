#include "mixer/CMixerStrip.h"

#include "base/Numbers.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/StripMeters.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "mixer/CMixerPanel.h"
#include "mixer/EqSection.h"
#include "mixer/InsertSlot.h"
#include "mixer/LoadLabel.h"
#include "mixer/LoudnessLabel.h"
#include "mixer/MixerState.h"
#include "mixer/StripControls.h"
#include "mixer/StripName.h"
#include "mixer/ValueBar.h"
#include "sequencer/song/CTrack.h"
#include "ui/NameField.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int foldWidth = 16, foldReach = 4; ///< of the sign that unfolds a kit
constexpr int nameMargin = 4, switchGap = 3, stripeHeight = 3;
constexpr double silentShare = 0.55, selectedShare = 0.12, drumShare = 0.3;

void setPlace(CCtrl* ctrl, CRect at) {
    ctrl->visible = !at.empty();
    if (ctrl->visible) ctrl->setBounds(at.left, at.top, at.width(), at.height());
}

} // namespace

CMixerStrip::CMixerStrip(CMixerPanel& around, const MixerStrip& shownStrip)
    : CGroup(around.win, "strip", 0, 0, 1, 1), panel(around), of(shownStrip),
      source(new StripChoice(*this, StripChoice::source)),
      target(new StripChoice(*this, StripChoice::target)),
      trim(newBar("trim", [](const MixerStrip& s) { return trimOf(s.channel); })),
      mode(new ModeButton(*this)), eq(new EqSection(*this)), pan(new CPanValue(*this)),
      gain(new CDBLabel(*this)), peak(new PeakLabel(*this)), fader(new CVolFader(*this)),
      scale(new DbScale(*this)), loudness(new LoudnessLabel(*this, LoudnessLabel::integrated)),
      truePeak(new LoudnessLabel(*this, LoudnessLabel::truePeak)), meter(new CAudioLed(*this)),
      load(new LoadLabel(around.win)), switches{} {
    tabStop = true;
    constexpr double trimDb = 12.04; // 4 to the power of 1
    trim->label = "Trim";
    trim->least = -1.0;
    trim->usual = 0.0;
    trim->typedValue = [](double db) { return db / trimDb; };
    trim->text = [this] { return asStrFormat(double(of.channel->trim) * trimDb, "%+.1f") + " dB"; };
    trim->hint = "Trim before all else: drag, or type decibels; a double click gives 0 dB";
    for (int i = 0; i < mixSwitches; i++)
        switches[size_t(i)] = new StripSwitch(*this, MixSwitch(i));
    for (CCtrl* c : std::initializer_list<CCtrl*>{source, trim, mode, eq, target, pan, gain, peak,
                                                  fader, scale, loudness, truePeak, meter, load})
        addControl(c);
    for (StripSwitch* s : switches) addControl(s);
}

ValueBar* CMixerStrip::newBar(const char* name,
                              const std::function<StoredValue(const MixerStrip&)>& valueOf) {
    auto* made = new ValueBar(win, name, door());
    made->value = [this, valueOf]() -> std::optional<StoredValue> { return valueOf(of); };
    made->values = [this, valueOf] {
        std::vector<StoredValue> all;
        for (const MixerStrip& s : together()) all.push_back(valueOf(s));
        return all;
    };
    made->onTold = [this, made](const CStr& now) { tell(made->spokenName + ": " + now); };
    return made;
}

// Layout.

/// As many slots and sends as all strips have.
void CMixerStrip::fit(const StripPlan& plan) {
    const auto drop = [this](CCtrl* c) {
        controls.remove(c);
        win->app->deleteLater(c);
    };
    while (int(slots.size()) > plan.slots) {
        drop(slots.back());
        slots.pop_back();
    }
    while (int(slots.size()) < plan.slots) {
        slots.push_back(new InsertSlot(*this, int(slots.size())));
        addControl(slots.back());
    }
    while (int(sends.size()) > plan.sends) {
        drop(sends.back());
        sends.pop_back();
    }
    while (int(sends.size()) < plan.sends) {
        const size_t bus = sends.size();
        ValueBar* made = newBar(
            "send", [bus](const MixerStrip& s) { return levelOf(s.channel->sendLevels[bus]); });
        made->usual = 0.0;
        made->proportional = true;
        made->typedValue = [](double percent) { return percent / 100; };
        made->text = [this, bus] { return of.channel->sendLevels[bus]->paramText(0); };
        made->hint = "Level to the bus: drag, or type percent; a double click gives none";
        sends.push_back(made);
        addControl(made);
    }
}

void CMixerStrip::place(const MixerStrip& now, const StripPlan& plan, bool wide) {
    of = now;
    fit(plan);
    const StripLayout at(plan, wide);
    const bool eqShown = MixerState::showsEq(of);
    setPlace(source, at.source);
    setPlace(trim, at.trim);
    setPlace(mode, at.mode);
    setPlace(eq, eqShown ? at.inserts : CRect());
    for (InsertSlot* s : slots)
        setPlace(s, eqShown || at.inserts.empty() ? CRect() : at.slot(s->index));
    const bool sending = of.section != StripSection::sends && of.section != StripSection::outputs;
    for (size_t i = 0; i < sends.size(); i++)
        setPlace(sends[i], at.sends.empty() || !sending ? CRect() : at.send(int(i)));
    setPlace(target, at.target);
    setPlace(pan, at.pan);
    setPlace(gain, at.gain);
    setPlace(peak, at.peak);
    setPlace(fader, at.fader);
    setPlace(scale, at.scale);
    setPlace(meter, at.meter);
    setPlace(load, at.load);
    const int wideSwitch = (at.switches.width() - 2 * switchGap) / mixSwitches;
    for (int i = 0; i < mixSwitches; i++)
        switches[size_t(i)]->setBounds(at.switches.left + i * (wideSwitch + switchGap),
                                       at.switches.top, wideSwitch, at.switches.height());
    const bool records = of.ownsTrack() && of.track->kind == trackAudio;
    const bool plays = !of.drum && of.comp->type != compSeq && of.comp->numProgs() > 0;
    if (!records && !plays) source->visible = false;
    if (of.drum || of.section == StripSection::outputs) target->visible = false;
    if (of.drum) trim->visible = load->visible = false; // they are those of the kit
    // An output has room for it where others have what they play and where they lead.
    const bool inRoute = of.section == StripSection::outputs && !at.source.empty();
    setPlace(loudness, inRoute ? at.source : at.loudness);
    setPlace(truePeak, inRoute ? at.target : at.truePeak);
    if (!loudness->visible) stopLoudness();
    switches[size_t(MixSwitch::arm)]->visible = switchOf(MixSwitch::arm, of).has_value();
    shown = Shown();
    turns = 0;
    refresh();
}

// What it shows.

CMixerStrip::Shown CMixerStrip::present() const {
    return {nameOf(of), colourOf(of), panel.state.selected(of), isHeard(of)};
}

void CMixerStrip::nameControls() {
    const struct {
        CCtrl* ctrl;
        const char* spoken;
    } rows[] = {{source, of.ownsTrack() ? "Input" : "Program"},
                {trim, "Trim"},
                {mode, "Inserts or equaliser"},
                {eq, "Equaliser"},
                {target, "Output"},
                {pan, "Pan"},
                {gain, "Decibels"},
                {peak, "Peak"},
                {fader, "Volume"},
                {meter, "Level"},
                {load, "Load"}};
    for (const auto& row : rows) row.ctrl->spokenName = row.spoken + CStr(", ") + shown.name;
    for (InsertSlot* s : slots) s->spokenName = "Insert " + asStr(s->index + 1) + ", " + shown.name;
    for (ValueBar* s : sends) s->spokenName = "Send to " + s->label + ", " + shown.name;
    loudness->spokenName = "Loudness, " + shown.name;
    truePeak->spokenName = "True peak, " + shown.name;
    for (int i = 0; i < mixSwitches; i++)
        switches[size_t(i)]->spokenName = spokenOf(MixSwitch(i)) + CStr(", ") + shown.name;
    hint = shown.name + ": " + kindOf(of) + ". Press to select, twice to rename";
}

/// What is being dragged shows what the drag has set, whatever automation plays.
void CMixerStrip::follow(CStoredCtrl* ctrl) const {
    if (!win->app->drag.of(ctrl)) ctrl->refresh();
}

void CMixerStrip::refresh() {
    Shown now = present();
    NameField::dropLeft(field);
    if (now != shown) {
        shown = std::move(now);
        nameControls();
        redraw();
    }
    const auto& buses = of.comp->host->sends;
    for (size_t i = 0; i < sends.size(); i++) {
        const auto* bus = buses.items(int(i));
        const CStr label = bus ? bus->id : CStr();
        if (!(sends[i]->label == label)) {
            sends[i]->label = label;
            sends[i]->spokenName = "Send to " + label + ", " + shown.name;
            sends[i]->redraw();
        }
        follow(sends[i]);
    }
    for (InsertSlot* s : slots) s->refresh();
    if (eq->visible) eq->refresh();
    // Where it leads takes a walk through the cables.
    constexpr int rarely = 8;
    if (turns++ % rarely == 0) {
        if (source->visible) source->refresh();
        if (target->visible) target->refresh();
    }
    for (CStoredCtrl* c : std::initializer_list<CStoredCtrl*>{trim, pan, gain, fader}) follow(c);
    for (StripSwitch* s : switches) s->refresh();
}

bool CMixerStrip::followSound() {
    const bool level = meter->refresh();
    return (peak->visible && peak->refresh()) || level;
}

/// With the component behind it, whose work is that of all its strips.
void CMixerStrip::showLoad(const GraphProbe& probe) {
    if (!load->visible) return;
    const CComp* behind = of.ownsTrack() ? static_cast<const CComp*>(of.track) : of.comp;
    int late = of.comp->enabled ? of.comp->getDelay() : 0;
    for (auto* insert : of.channel->inserts)
        if (insert->enabled) late += insert->getDelay();
    load->show(probe.workOf(behind), probe.blockNs(), late * 1000.0 / double(of.comp->host->rate));
}

// Loudness.

Loudness* CMixerStrip::measured() const {
    StripMeters* meters = of.channel->measured();
    return meters ? &meters->loudness : nullptr;
}

void CMixerStrip::stopLoudness() {
    if (Loudness* levels = measured()) levels->measure(false);
}

void CMixerStrip::stopMeasuring() {
    of.channel->powerWanted = 0;
    stopLoudness();
}

void CMixerStrip::followLoudness() {
    if (!loudness->visible) return;
    Loudness& levels = of.channel->meters().loudness;
    const bool begins = !levels.measures();
    if (begins) levels.measure(true);
    if (levels.follow() || begins) showLoudness(levels.levels());
}

void CMixerStrip::resetLoudness() {
    Loudness* levels = measured();
    if (!levels) return;
    levels->reset();
    showLoudness({});
}

void CMixerStrip::showLoudness(const Loudness::Levels& levels) {
    loudness->show(levels);
    truePeak->show(levels);
}

void CMixerStrip::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const int ground =
        shown.selected ? fadeCol(colours.panel, colours.accent, selectedShare) : colours.panel;
    g->fillRect(ground, asRect(0, 0, width - 1, height));
    const CRect edge = asRect(width - 1, 0, width, height);
    if (g->wants(edge)) g->fillLine(colours.frame, edge);
    const StripLayout at(panel.state.plan, panel.state.isWide(of));
    if (g->wants(at.name)) paintName(g, at, ground);
    CGroup::paint(g, rect);
}

void CMixerStrip::paintName(CGraphic* g, const StripLayout& at, int ground) {
    const CPalette& colours = win->app->gui->palette;
    const int own = shown.colour < 0 ? colours.raised : shown.colour;
    const int base = of.drum ? fadeCol(own, ground, drumShare) : own;
    const int plate = shown.heard ? base : fadeCol(base, ground, silentShare);
    g->fillRect(plate, at.name);
    if (shown.selected) g->fillRect(colours.text, asRect(0, 0, at.name.right, stripeHeight));
    if (!field || !field->visible) {
        const int before = of.hasDrums() ? int(foldWidth) : nameMargin;
        const int above = shown.selected ? stripeHeight : 0;
        paintStripName(g, shown.colour < 0 && shown.heard ? colours.text : textOn(plate),
                       shown.name, sizeRect(at.name, before, above, -nameMargin, 0));
    }
    if (of.hasDrums()) {
        const int x = foldWidth / 2 + 1, y = at.name.bottom / 2;
        drawArrow(g, textOn(plate),
                  asRect(x - foldReach, y - foldReach, x + foldReach, y + foldReach),
                  drumsUnfolded(of) ? dirLeft : dirRight, foldReach);
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, at.name);
}

// The mouse.

void CMixerStrip::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if (btn & modRight) {
        if (!panel.state.selected(of)) panel.choose(*this, 0);
        return;
    }
    if (!(btn & modLeft)) return;
    const StripLayout at(panel.state.plan, panel.state.isWide(of));
    if (of.hasDrums() && at.name.contains(x, y) && x < foldWidth) return panel.foldDrums(of);
    if ((btn & modDouble) && at.name.contains(x, y)) return rename();
    panel.choose(*this, btn);
}

void CMixerStrip::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) panel.contextMenu();
}

void CMixerStrip::rename() {
    if (field && field->visible) return;
    NameField::dropLeft(field);
    const StripLayout at(panel.state.plan, panel.state.isWide(of));
    field = new NameField(this, at.name, shown.name, "Name of the strip");
    field->onName = [this](const CStr& typed) { panel.renameStrip(of, typed); };
    redraw();
}

std::vector<CCtrl*> CMixerStrip::stops() {
    std::vector<CCtrl*> all = {this};
    const auto add = [&all](CCtrl* c) {
        if (c->visible && c->enabled) all.push_back(c);
    };
    const bool inRoute = loudness->top < fader->top;
    if (inRoute) add(loudness);
    for (CCtrl* c : std::initializer_list<CCtrl*>{source, trim, mode, eq}) add(c);
    for (CCtrl* c : slots) add(c);
    for (CCtrl* c : sends) add(c);
    if (inRoute) add(truePeak);
    for (CCtrl* c : std::initializer_list<CCtrl*>{target, pan, gain, peak, fader, meter}) add(c);
    for (CCtrl* c : switches) add(c);
    if (!inRoute)
        for (CCtrl* c : {loudness, truePeak}) add(c);
    add(load);
    return all;
}

void CMixerStrip::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = shown.name.asChar();
    d.help = kindOf(of).asChar();
    d.action = "select";
    d.set(stateSelectable, true);
    d.set(stateSelected, shown.selected);
}

bool CMixerStrip::pressPart(int) {
    panel.choose(*this, 0);
    return true;
}

// For what is on it.

ValueDoor* CMixerStrip::door() const {
    return panel.state.door();
}

void CMixerStrip::tell(const CStr& text) const {
    panel.state.tell(text);
}

std::vector<MixerStrip> CMixerStrip::together() const {
    return panel.state.together(of);
}

void CMixerStrip::swipe(MixSwitch which, const CCtrl* from, int x, int y, int btn) {
    panel.swipe(which, *this, from, asPoint(x, y), btn);
}

void CMixerStrip::toggle(MixSwitch which) {
    panel.toggle(which, of);
}

void CMixerStrip::toggleSafe() {
    panel.toggleSafe(of);
}

void CMixerStrip::clearPeaks() {
    panel.clearPeaks(of);
}

int CMixerStrip::faderTravel() const {
    return fader->height - StripLayout::capHeight;
}

void CMixerStrip::showEq(bool on) {
    for (const MixerStrip& s : together()) MixerState::showEq(s, on);
    panel.layout();
}

void CMixerStrip::openEq() {
    panel.openEq(of);
}

void CMixerStrip::offerTargets(CCtrl* from) {
    panel.menus.offerTargets(from, of);
}

void CMixerStrip::offerSources(CCtrl* from) {
    panel.menus.offerSources(from, of);
}

void CMixerStrip::offerPrograms(CCtrl* from) {
    panel.menus.offerPrograms(from, of);
}

void CMixerStrip::offerEffects(InsertSlot* slot) {
    panel.menus.offerEffects(slot, of, slot->index);
}

bool CMixerStrip::openInsert(CComp* insert) {
    return panel.openInsert(insert);
}

void CMixerStrip::removeInsertOf(InsertSlot* slot) {
    panel.removeInsertAt(of, slot->index);
}

void CMixerStrip::stepInsert(InsertSlot* slot, int by) {
    panel.stepInsert(*this, slot->index, by);
}

bool CMixerStrip::takesInsertDrop() const {
    return panel.takesInsertDrop();
}

void CMixerStrip::dropInserts(int index, int btn) {
    panel.dropInserts(of, index, btn);
}

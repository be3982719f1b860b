#include "plugins/PluginComp.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/LoopCalls.h"
#include "engine/ParamUnit.h"
#include "engine/Setting.h"
#include "engine/StoredValue.h"

#include <algorithm>

namespace {

/// Widths of the channels that the pins from number `first` on ask for: pairs that belong together,
/// and two pins that are all and say nothing.
std::vector<int> channelWidths(Plugin& plugin, bool input, int first) {
    const int pins = std::min(input ? plugin.inputs() : plugin.outputs(), int(Plugin::mostPins));
    std::vector<int> widths;
    for (int i = first; i < pins; i += widths.back())
        widths.push_back(i + 1 < pins && plugin.stereoPair(input, i) ? 2 : 1);
    if (first == 0 && widths == std::vector<int>{1, 1}) widths = {2};
    return widths;
}

/// The channels that a list lacks, linked nowhere.
template <class Channel>
std::vector<Channel*> missingChannels(CComp* comp, Plugin& plugin, const ListOf<Channel>& list) {
    int covered = 0;
    for (const auto* ch : list) covered += ch->channels;
    std::vector<Channel*> made;
    for (const int width : channelWidths(plugin, std::is_same_v<Channel, CInputChannel>, covered)) {
        made.push_back(new Channel(comp));
        made.back()->channels = width;
    }
    return made;
}

const ParamUnit powerUnit{[](float share) { return CStr(share > 0.0f ? "On" : "Off"); },
                          switchUnit.share};

} // namespace

PluginComp::~PluginComp() {
    closeEditor();
}

const Setting& PluginComp::channelSetting() {
    static const Setting channel = fieldSetting<&PluginComp::mch, -1.0, 15.0>(
        "MIDI", "MIDI channel", -1.0, channelUnit, Setting::whole);
    return channel;
}

// Loading.

void PluginComp::take(std::unique_ptr<Plugin> made) {
    if (outPorts.getCount() == 0 && made->sendsMidi()) outPorts.add(new COutputPort(this));
    made->setProgram(0);
    made->setRate(sampleRate());
    made->setBlock(blockFrames());
    readPrograms(*made);
    made->setRunning(enabled);
    values.start(*made);
    const PluginHold hold(claim);
    put(made);
    running = bool(enabled);
    curProg = 0;
    faults = 0;
    makeBuffers();
}

/// Under the claim; the former one goes out.
void PluginComp::put(std::unique_ptr<Plugin>& made) {
    plugin.swap(made);
    elsewhere = plugin && plugin->isolated();
    playsNotes = isInstrument();
}

void PluginComp::replace(std::unique_ptr<Plugin> made) {
    closeEditor();
    keepState();
    {
        const PluginHold hold(claim);
        put(made);
    }
    faults = 0;
    pluginReturned();
}

void PluginComp::clear() {
    closeEditor();
    std::unique_ptr<Plugin> none;
    const PluginHold hold(claim);
    put(none);
    running = false;
    pendingProg = -1;
}

void PluginComp::createChannels() {
    inPorts.add(new CInputPort(this));
}

void PluginComp::setupIO() {
    assert(mayRewire());
    deleteAll<CObject>(inputs);
    deleteAll<CObject>(outputs);
    fixChannels();
}

void PluginComp::fixChannels() {
    assert(mayRewire());
    if (!plugin) return;
    for (auto* ch : missingChannels<CInputChannel>(this, *plugin, inputs)) inputs.add(ch);
    for (auto* ch : missingChannels<COutputChannel>(this, *plugin, outputs)) outputs.add(ch);
}

/// The plug-in has other pins than before: channels come in a step of their own, none goes.
void PluginComp::rebuildChannels() {
    {
        const PluginHold hold(claim);
        makeBuffers();
    }
    CUndo* step = host->undoStart("Channels of " + id, host, {.graph = true});
    const auto add = [&](auto made, CList& list) {
        for (auto* ch : made) {
            ch->createBuffers(host->frames);
            step->asAdd(ch, &list);
        }
    };
    add(missingChannels<CInputChannel>(this, *plugin, inputs), inputs);
    add(missingChannels<COutputChannel>(this, *plugin, outputs), outputs);
    host->undoEnd(step, false);
}

void PluginComp::makeBuffers() {
    if (plugin) pins.make(plugin->inputs(), plugin->outputs(), blockFrames());
}

// What the host tells it.

void PluginComp::setFrames(int frames) {
    CComp::setFrames(frames);
    if (!plugin) return;
    const PluginHold hold(claim);
    if (running) plugin->setRunning(false);
    plugin->setBlock(frames);
    if (running) plugin->setRunning(true);
    makeBuffers();
}

void PluginComp::setRate(double rate) {
    CComp::setRate(rate);
    if (!plugin) return;
    const PluginHold hold(claim);
    if (running) plugin->setRunning(false);
    plugin->setRate(rate);
    if (running) plugin->setRunning(true);
}

void PluginComp::enable(ToStore<int> on) {
    CComp::enable(on);
    if (isInterfaceThread() && !rendering) setRunning();
}

/// The plug-in hears of it later.
void PluginComp::sleep(int on) {
    if (on == sleeping) return;
    if (on)
        wasEnabled = enabled;
    else
        renewed = true;
    CComp::enable(on ? 0 : wasEnabled);
    CComp::sleep(on);
}

void PluginComp::setRunning() {
    const bool wanted = enabled;
    const bool afresh = renewed.exchange(false);
    if (!plugin || (wanted == running && !(afresh && wanted))) return;
    const PluginHold hold(claim);
    if (running) plugin->setRunning(false);
    if (wanted) plugin->setRunning(true);
    running = wanted;
}

void PluginComp::resetSound() {
    if (!plugin || !running) return;
    const PluginHold hold(claim);
    plugin->setRunning(false);
    plugin->setRunning(true);
    silence = 0;
}

void PluginComp::idle() {
    const int wanted = pendingProg.exchange(-1);
    if (plugin && wanted >= 0) {
        changeWhole([&](Plugin& p) {
            leavesProgram(p);
            p.setProgram(wanted);
        });
        curProg = wanted;
    }
    CComp::idle();
    if (!plugin) return;
    setRunning();
    serveRequests();
    followLatency();
    plugin->idle();
    loopCalls().idle();
}

/// Many know it only after their first blocks.
void PluginComp::followLatency() {
    const int now = getDelay();
    if (now == declaredDelay) return;
    declaredDelay = now;
    host->hostNotices.raise(HostNotice::delays);
}

int PluginComp::getDelay() {
    return plugin ? std::max(plugin->latency(), 0) : 0;
}

int PluginComp::freezed(COutputChannel*) {
    return playsFrozen(this);
}

// Parameters.

int PluginComp::numParams() {
    return plugin ? std::max(plugin->numParams(), 0) : 0;
}

void PluginComp::setParam(int index, ToStore<float> value) {
    if (index == paramPower) return enable(value > 0.0f);
    if (index == paramWet) {
        wet = fLimit(value, 0.0f, 1.0f);
        return;
    }
    values.keep(index, value);
    if (!plugin || telling) return;
    const bool was = quiet.exchange(true);
    plugin->setParam(index, value);
    quiet = was;
}

/// By what was last heard of: the plug-in may have moved it by now.
void PluginComp::listParam(int index, std::vector<StoredValue>& parts) {
    using Numbers = StoredValue::Numbers;
    static const StoredValue::Kind kept = {
        nullptr,
        [](const CObject* o, int i) {
            return Numbers{double(static_cast<const PluginComp*>(o)->values.of(i))};
        },
        [](CObject* o, int i, const Numbers& to) {
            static_cast<PluginComp*>(o)->setParam(i, float(to[0]));
        },
        [](int i) { return i; }};
    if (index >= 0) parts.push_back({&kept, this, index});
}

CStr PluginComp::paramName(int index) {
    if (index == paramPower) return "Power";
    if (index == paramWet) return "Wet level";
    if (!plugin) return CComp::paramName(index);
    const CStr name = plugin->paramName(index);
    return name.empty() ? "Parameter " + asStr(index + 1) : name;
}

CStr PluginComp::paramText(int index) {
    if (index == paramPower) return powerUnit.text(param(index));
    if (index == paramWet) return percentUnit.text(wet);
    return plugin ? plugin->paramText(index) : CStr();
}

std::vector<CStr> PluginComp::paramTexts() {
    return plugin ? plugin->paramTexts() : std::vector<CStr>();
}

const ParamUnit* PluginComp::paramUnit(int index) {
    return index == paramPower ? &powerUnit : nullptr;
}

float PluginComp::param(int index) {
    if (index == paramPower) return enabled ? 1.0f : 0.0f;
    if (index == paramWet) return wet;
    return plugin ? plugin->param(index) : 0.0f;
}

// Programs.

int PluginComp::numProgs() {
    return plugin ? std::max(plugin->numPrograms(), 0) : 0;
}

int PluginComp::getProg() const {
    return plugin ? plugin->program() : int(curProg);
}

void PluginComp::setProg(ToStore<int> index) {
    if (index < 0 || index >= numProgs()) return;
    pendingProg = index;
    curProg = index;
}

CStr PluginComp::getProgName(int index) {
    if (!plugin) return "";
    const CStr name = plugin->programName(index);
    return name.empty() && index == curProg ? plugin->currentProgramName() : name;
}

void PluginComp::setProgName(int index, const CStr& name) {
    if (plugin && index == curProg) plugin->renameProgram(name);
}

// The editor.

CPoint PluginComp::openEditor(unsigned long window) {
    if (!hasEditor() || editorOpen) return {};
    editorOpen = true;
    askedSize = -1;
    return plugin->openEditor(window);
}

void PluginComp::closeEditor() {
    if (!editorOpen) return;
    editorOpen = false;
    plugin->closeEditor();
    while (gestures > 0) gestureEnds(0);
}

#include "tools/plugins/ServedPlugin.h"

#include "base/Futex.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "plugins/PluginLoad.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <thread>

namespace {

/// The plug-in whose trip the calling thread makes.
thread_local const ServedPlugin* onTripOf = nullptr;

} // namespace

ServedPlugin::ServedPlugin(int file, const CStr& libraryFolder, double hz, int block)
    : room(file, PluginRoom::soundBytes), folder(libraryFolder), rate(hz), frames(block) {
}

ServedPlugin::~ServedPlugin() {
    if (editorOpen) closeEditor();
}

bool ServedPlugin::load(const CStr& path, CStr& why) {
    obeying = true;
    plugin = loadPlugin(path, *this, why);
    obeying = false;
    if (!plugin) return false;
    makePins();
    tellFacts();
    return true;
}

void ServedPlugin::makePins() {
    inputs = plugin->inputs();
    outputs = plugin->outputs();
    pins.make(inputs, outputs, frames);
}

/// What the plug-in has and where it stands, but for what it is still to be given.
void ServedPlugin::tellFacts() {
    PluginRoom& r = *room;
    r.inputs = plugin->inputs();
    r.outputs = plugin->outputs();
    r.latency = plugin->latency();
    r.params = plugin->numParams();
    r.programs = plugin->numPrograms();
    r.program = plugin->program();
    const int count = std::min(plugin->numParams(), int(PluginRoom::mostParams));
    for (int i = 0; i < count; i++) {
        const float known = r.values[i];
        r.tell(i, known, plugin->param(i));
    }
}

void ServedPlugin::setRate(double to) {
    rate = to;
    changeWhole([to](Plugin& p) { p.setRate(to); });
}

void ServedPlugin::setBlock(int to) {
    frames = to;
    changeWhole([this, to](Plugin& p) {
        p.setBlock(to);
        makePins();
    });
}

void ServedPlugin::takeWanted() {
    obeying = true;
    (*room).takeWanted([this](int index, float share) { plugin->setParam(index, share); });
    obeying = false;
}

/// Without the lock, which a trip that begins meanwhile would not get.
void ServedPlugin::waitForTrip() const {
    while (travels.loadAcquire()) std::this_thread::sleep_for(std::chrono::microseconds(100));
}

void ServedPlugin::idle() {
    takeWanted();
    plugin->idle();
    const bool shows = displayAsked.exchange(false);
    tellFacts();
    if (shows) tell(PluginRoom::Event::display); // with the values that it is about
    if (plugin->inputs() != inputs || plugin->outputs() != outputs) {
        const std::scoped_lock lock(inside);
        makePins();
    }
    if (editorOpen) plugin->idleEditor();
}

void ServedPlugin::openEditor(unsigned long window) {
    if (editorOpen) return;
    editorOpen = true;
    sizeEditor(plugin->openEditor(window));
}

void ServedPlugin::closeEditor() {
    if (!editorOpen) return;
    editorOpen = false;
    plugin->closeEditor();
}

// Trips.

int ServedPlugin::makeTrip() {
    PluginRoom& r = *room;
    const int trip = r.asked.loadAcquire();
    const std::unique_lock lock(inside, std::try_to_lock);
    r.outcome = PluginRoom::Outcome::busy;
    if (!lock) return trip;
    travels = true;
    onTripOf = this;
    if (const std::unique_lock told(timeGuard, std::try_to_lock); told) time = r.time;
    r.sentCount = 0;
    takeWanted();
    r.outcome = render() ? PluginRoom::Outcome::whole : PluginRoom::Outcome::failed;
    r.latency = plugin->latency();
    onTripOf = nullptr;
    travels.storeRelease(false);
    return trip;
}

bool ServedPlugin::render() {
    PluginRoom& r = *room;
    const int n = r.frames, ins = std::min(r.inCount, inputs), outs = std::min(r.outCount, outputs);
    if (n < 1 || n > frames || r.inCount < 0 || r.inCount > Plugin::mostPins || outs < 0)
        return false;
    auto* sound = static_cast<float*>(room.behind());
    const size_t stride = PluginRoom::stride(n);
    for (int i = 0; i < ins; i++) std::copy_n(sound + stride * size_t(i), n, pins.in()[i]);
    for (int i = 0; i < std::clamp(r.midiCount, 0, int(PluginRoom::mostMidi)); i++)
        plugin->addMidi(std::clamp(r.midi[i].frame, 0, n - 1), r.midi[i].data);
    pins.clearOutputs(n);
    const int64_t from = steadyNs();
    const bool good = plugin->process(pins.in(), pins.out(), n);
    r.workNs = steadyNs() - from;
    float* to = sound + stride * size_t(r.inCount);
    for (int i = 0; i < std::min(r.outCount, int(Plugin::mostPins)); i++) {
        float* pin = to + stride * size_t(i);
        if (i < outs)
            std::copy_n(pins.out()[i], n, pin);
        else
            std::fill_n(pin, n, 0.0f);
    }
    return good;
}

void ServedPlugin::answer(int trip) {
    PluginRoom& r = *room;
    r.answered.storeRelease(trip);
    if (r.waiting.exchange(0)) sharedFutexWake(r.answered, 1);
}

// What the plug-in asks and tells.

bool ServedPlugin::onTrip() const {
    return onTripOf == this;
}

PluginLevel ServedPlugin::level() const {
    if (onTrip()) return (*room).level;
    return isInterfaceThread() ? PluginLevel::interface : PluginLevel::other;
}

PluginTime ServedPlugin::songTime() const {
    if (onTrip()) return (*room).time;
    const std::scoped_lock lock(timeGuard);
    return time;
}

void ServedPlugin::tell(PluginRoom::Event::Kind kind, int index, float value) {
    const std::scoped_lock lock(events);
    PluginRoom& r = *room;
    r.events[r.told % PluginRoom::mostEvents] = {kind, index, value};
    r.told.storeRelease(r.told + 1);
}

void ServedPlugin::parameterMoved(int index, float share) {
    if (index < 0 || index >= PluginRoom::mostParams) return;
    (*room).tell(index, (*room).values[index], share);
    if (obeying) return;
    tell(isInterfaceThread() ? PluginRoom::Event::moved : PluginRoom::Event::drifted, index, share);
}

void ServedPlugin::gestureBegins(int index) {
    if (isInterfaceThread()) tell(PluginRoom::Event::gestureBegins, index);
}

void ServedPlugin::gestureEnds(int index) {
    if (isInterfaceThread()) tell(PluginRoom::Event::gestureEnds, index);
}

void ServedPlugin::sendMidi(int frame, int data) {
    PluginRoom& r = *room;
    if (onTrip() && r.sentCount >= 0 && r.sentCount < PluginRoom::mostMidi)
        r.sent[r.sentCount++] = {frame, data};
}

void ServedPlugin::sizeEditor(CPoint size) {
    tell(PluginRoom::Event::editorSize, size.x, float(size.y));
}

void ServedPlugin::idleEditor() {
    if (isInterfaceThread() && editorOpen) plugin->idleEditor();
}

void ServedPlugin::channelsChanged() {
    if (plugin) {
        (*room).inputs = plugin->inputs();
        (*room).outputs = plugin->outputs();
        (*room).latency = plugin->latency();
    }
    tell(PluginRoom::Event::channels);
}

void ServedPlugin::displayChanged() {
    displayAsked = true;
}

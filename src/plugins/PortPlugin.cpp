#include "plugins/PortPlugin.h"

#include "base/Numbers.h"
#include "plugins/StateText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <string>

namespace {

constexpr size_t mostNotes = 1024;

} // namespace

PortPlugin::PortPlugin(PluginHost& answers) : host(answers) {
    notes.reserve(mostNotes);
}

int PortPlugin::pinsOf(const std::vector<int>& ports) {
    return std::accumulate(ports.begin(), ports.end(), 0);
}

bool PortPlugin::stereoPair(bool input, int index) {
    int first = 0;
    for (const int channels : input ? portsIn : portsOut) {
        if (index == first && channels == 2) return true;
        first += channels;
    }
    return false;
}

// Parameters.

int PortPlugin::paramOf(uint32_t wanted) const {
    const auto at = std::ranges::find(params, wanted, &Param::id);
    return at == params.end() ? -1 : int(at - params.begin());
}

CStr PortPlugin::paramName(int index) {
    return isParam(index) ? params[size_t(index)].name : CStr();
}

void PortPlugin::setParam(int index, float share) {
    if (isParam(index)) values.set(size_t(index), params[size_t(index)].range.value(share));
}

float PortPlugin::param(int index) {
    return isParam(index) ? params[size_t(index)].range.share(values.of(size_t(index))) : 0.0f;
}

// State.

void PortPlugin::keepValues(StateText& text, bool all) const {
    for (size_t i = 0; i < params.size(); i++)
        if (all || values.waits(i))
            text.values.emplace_back(std::to_string(params[i].id), values.of(i));
}

void PortPlugin::setKept(const StateText& text) {
    for (const auto& [name, value] : text.values) {
        uint32_t number = 0;
        const char* end = name.data() + name.size();
        const auto read = std::from_chars(name.data(), end, number);
        if (read.ec != std::errc() || read.ptr != end || !std::isfinite(value)) continue;
        const int at = paramOf(number);
        if (at < 0) continue;
        const ParamRange& range = params[size_t(at)].range;
        const auto [low, high] = std::minmax(range.low, range.high);
        values.set(size_t(at), std::clamp(value, low, high));
    }
}

// Running.

void PortPlugin::setRate(double to) {
    if (to == rate) return;
    rate = to;
    if (active) renew();
}

void PortPlugin::setBlock(int frames) {
    if (frames == block) return;
    block = frames;
    if (active) renew();
}

void PortPlugin::setRunning(bool on) {
    wantsRunning = on;
    guarded([this, on] { on ? activate() : deactivate(); });
}

void PortPlugin::renew() {
    guarded([this] {
        deactivate();
        readPorts();
        CStr why;
        if (wantsRunning && pinsFit(inputs(), outputs(), why)) activate();
    });
}

// Notes.

void PortPlugin::addMidi(int frame, int data) {
    if (notes.size() < mostNotes) notes.push_back({frame, data});
}

void PortPlugin::sendNote(int frame, bool on, int channel, int key, double velocity) {
    const int second = std::clamp(asRound(velocity * 127.0), 0, 127);
    host.sendMidi(frame, (on ? 0x90 : 0x80) | (channel & 0xf) | (key & 0x7f) << 8 | second << 16);
}

#include "driver/DriverModule.h"

#include "driver/AlsaBackend.h"
#include "driver/JackBackend.h"
#include "driver/PulseBackend.h"
#include "driver/RealtimeKit.h"
#include "driver/SilentClock.h"

#include <algorithm>
#include <bit>

namespace {

/// Copies a name as the contract tells, zeroing the rest.
void writeName(const std::string& name, intptr_t to) {
    char* buffer = reinterpret_cast<char*>(to);
    if (!buffer) return;
    const size_t length = std::min(name.size(), size_t(aamNameBytes - 1));
    std::fill(std::copy_n(name.data(), length, buffer), buffer + aamNameBytes, '\0');
}

template <class List>
bool inside(const List& list, intptr_t index) {
    return index >= 0 && size_t(index) < list.size();
}

void setFlag(std::atomic<uint32_t>& flags, intptr_t index, bool on) {
    if (index < 0 || index >= aamMaxChannels) return;
    const uint32_t bit = uint32_t(1) << index;
    if (on)
        flags.fetch_or(bit);
    else
        flags.fetch_and(~bit);
}

bool hasFlag(const std::atomic<uint32_t>& flags, intptr_t index) {
    return index >= 0 && index < aamMaxChannels && (flags.load() >> index & 1);
}

template <class T>
T* pointer(intptr_t value) {
    return reinterpret_cast<T*>(value);
}

} // namespace

DriverModule::DriverModule(AamCallback callback) : cycle(ports) {
    backends.push_back(std::make_unique<JackBackend>());
    backends.push_back(std::make_unique<PulseBackend>());
    backends.push_back(std::make_unique<AlsaBackend>());
    backends.push_back(std::make_unique<SilentClock>());
    if (JackBackend::reachable()) {
        ports.jackIn = MidiPorts::add(ports.ins, "JACK MIDI in");
        ports.jackOut = MidiPorts::add(ports.outs, "JACK MIDI out");
    }
    sequencer = AlsaMidi::open(ports);
    cycle.setSequencer(sequencer.get());
    cycle.callback = callback;
}

DriverModule::~DriverModule() {
    close();
    cycle.setFeed(nullptr);
}

intptr_t DriverModule::perform(intptr_t op, intptr_t a, intptr_t b) {
    if (op >= aamTestCapture) return test(op, a, b);
    if (op == aamMessageSend) return send(*pointer<const AamMessage>(a));
    if (op == aamMessageTake) return takeMessage(*pointer<AamMessage>(a));
    if (op == aamRealtime) return askRealtimeKit(pid_t(a), int(b));
    if (op >= aamAudioInCount) return audio(op, a, b);
    if (op >= aamMidiInCount) return midi(op, a, b);
    return device(op, a, b);
}

intptr_t DriverModule::device(intptr_t op, intptr_t a, intptr_t b) {
    switch (op) {
    case aamOpen:
        return open(a);
    case aamClose:
        close();
        return 0;
    case aamStart:
        start();
        return 0;
    case aamStop:
        stop();
        return 0;
    case aamDeviceCount:
        return countDevices();
    case aamDeviceName:
        writeName(inside(devices, a) ? devices[size_t(a)].info.name : "", b);
        return 0;
    case aamFrames:
        return framesAsked(a);
    case aamRate:
        return rateAsked(a, pointer<float>(b));
    case aamNeedsReopen:
        if (opened) opened->idle();
        return opened && opened->needsReopen.exchange(false);
    default:
        return 0;
    }
}

intptr_t DriverModule::countDevices() {
    if (!opened) {
        devices.clear();
        for (const auto& backend : backends) {
            for (DeviceInfo& info : backend->devices())
                devices.push_back({backend.get(), std::move(info)});
        }
    }
    return intptr_t(devices.size());
}

intptr_t DriverModule::open(intptr_t index) {
    close();
    if (!inside(devices, index)) return -1;
    const Entry& entry = devices[size_t(index)];
    opened = entry.backend->open(entry.info, wish, cycle);
    if (!opened) return -1;
    wish.frames = opened->frames;
    cycle.reset(opened->rate);
    return 0;
}

void DriverModule::close() {
    if (!opened) return;
    stop();
    opened.reset();
    capture(nullptr);
}

void DriverModule::start() {
    if (!opened || running) return;
    running = true;
    if (capturing) beginCapture();
    cycle.gate.unlock();
    opened->start();
}

void DriverModule::stop() {
    if (!running) return;
    running = false;
    cycle.gate.shut();
    opened->stop();
}

intptr_t DriverModule::framesAsked(intptr_t a) {
    if (a != 0) wish.keepFrames = a < 0;
    if (a >= aamMinFrames && a <= aamMaxFrames) wish.frames = int(a);
    return opened ? opened->frames : wish.frames;
}

intptr_t DriverModule::rateAsked(intptr_t a, float* granted) {
    constexpr intptr_t maxRate = 192000;
    if (a > 0) wish.rate = int(std::min(a, maxRate));
    if (a == 0 && granted) *granted = float(opened ? opened->rate : wish.rate);
    return 0;
}

intptr_t DriverModule::midi(intptr_t op, intptr_t a, intptr_t b) {
    const bool outputs = op >= aamMidiOutCount;
    MidiPorts::List& list = outputs ? ports.outs : ports.ins;
    switch (op) {
    case aamMidiInCount:
    case aamMidiOutCount:
        return intptr_t(list.size());
    case aamMidiInName:
    case aamMidiOutName:
        writeName(inside(list, a) ? list[size_t(a)].name : "", b);
        return 0;
    case aamMidiInEnable:
    case aamMidiOutEnable:
        if (inside(list, a)) enableMidi(list, a, b != 0);
        return 0;
    case aamMidiInEnabled:
    case aamMidiOutEnabled:
        return inside(list, a) && list[size_t(a)].enabled;
    default:
        return 0;
    }
}

intptr_t DriverModule::send(const AamMessage& message) {
    if (message.length < 2 || message.length > aamMostMessage) return 0;
    bool taken = sequencer && sequencer->send(message);
    if (ports.goesTo(message.device, ports.jackOut)) taken = ports.toJack.put(message) || taken;
    return taken;
}

intptr_t DriverModule::takeMessage(AamMessage& to) {
    for (MidiPorts::Port& port : ports.ins)
        if (port.ownMessages && port.ownMessages->take(to)) return 1;
    return 0;
}

void DriverModule::enableMidi(MidiPorts::List& list, intptr_t index, bool on) {
    MidiPorts::Port& port = list[size_t(index)];
    if (on && &list == &ports.ins && !port.ownMessages) {
        port.ownMessages = std::make_unique<LongMessages>();
        port.messages.store(port.ownMessages.get(), std::memory_order_release);
    }
    const bool was = list[size_t(index)].enabled.exchange(on);
    if (!sequencer || was == on) return;
    if (&list == &ports.ins)
        sequencer->connectIn(int(index), on);
    else
        sequencer->connectOut(int(index), on);
}

intptr_t DriverModule::audio(intptr_t op, intptr_t a, intptr_t b) {
    const bool outputs = op >= aamAudioOutCount;
    std::atomic<uint32_t>& flags = outputs ? cycle.outFlags : cycle.inFlags;
    static const std::vector<std::string> none;
    const auto& names = !opened ? none : outputs ? opened->outNames : opened->inNames;
    switch (op) {
    case aamAudioInCount:
    case aamAudioOutCount:
        return intptr_t(names.size());
    case aamAudioInName:
    case aamAudioOutName:
        writeName(inside(names, a) ? names[size_t(a)] : "", b);
        return 0;
    case aamAudioInEnable:
    case aamAudioOutEnable:
        setFlag(flags, a, b != 0);
        return 0;
    case aamAudioInEnabled:
    case aamAudioOutEnabled:
        return hasFlag(flags, a);
    default:
        return 0;
    }
}

intptr_t DriverModule::test(intptr_t op, intptr_t a, intptr_t b) {
    switch (op) {
    case aamTestCapture:
        return capture(pointer<const char>(a));
    case aamTestFeed:
        return feed(pointer<const char>(a));
    case aamTestStatistics:
        cycle.statistics(*pointer<AamStatistics>(a));
        return 0;
    case aamTestInject:
        return cycle.inject(*pointer<const AamEvent>(a)) ? 0 : -1;
    case aamTestTake:
        return take(pointer<AamEvent>(a), pointer<int64_t>(b));
    default:
        return 0;
    }
}

intptr_t DriverModule::capture(const char* path) {
    cycle.setCapture(nullptr);
    capturing.reset();
    if (!path) return 0;
    capturing = WavCapture::create(path);
    if (!capturing) return -1;
    if (running) beginCapture();
    return 0;
}

void DriverModule::beginCapture() {
    if (capturing->begun()) return;
    const uint64_t present = (uint64_t(1) << opened->outNames.size()) - 1;
    capturing->begin(std::popcount(cycle.outFlags.load() & present), opened->rate);
    cycle.setCapture(capturing.get());
}

intptr_t DriverModule::feed(const char* path) {
    cycle.setFeed(nullptr);
    feeding = path ? WavFeed::load(path) : nullptr;
    cycle.setFeed(feeding.get());
    return path && !feeding ? -1 : 0;
}

intptr_t DriverModule::take(AamEvent* event, int64_t* frame) {
    if (!event) {
        cycle.collect();
        return 0;
    }
    int64_t at = 0;
    if (!cycle.take(*event, at)) return 0;
    if (frame) *frame = at;
    return 1;
}

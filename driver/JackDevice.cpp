#include "driver/JackDevice.h"

#include "driver/BlockCycle.h"
#include "driver/Clock.h"
#include "driver/MidiBytes.h"

#include <algorithm>
#include <jack/midiport.h>

namespace {

constexpr int realtime = 0xF8; ///< status of the clock and what goes with it, and above

JackDevice& self(void* device) {
    return *static_cast<JackDevice*>(device);
}

constexpr size_t minChannels = 2;

} // namespace

JackDevice::~JackDevice() {
    if (!client) return;
    if (lookedNs) followWiring();
    if (!dead.load()) jack_deactivate(client);
    jack_client_close(client);
}

bool JackDevice::open(const DeviceWish& wish) {
    client = jack_client_open("Sondrava", JackNoStartServer, nullptr);
    if (!client) return false;
    serverFrames = int(jack_get_buffer_size(client));
    if (!connectCallbacks() || !addPorts() || jack_activate(client) != 0) return false;
    settleFrames(wish);
    wiring.begin();
    joinPhysical();
    madeAt = cycles;
    followWiring();
    return !dead.load();
}

void JackDevice::idle() {
    constexpr int64_t pauseNs = 200 * nsPerMs;
    if (nowNs() - lookedNs >= pauseNs) followWiring();
}

void JackDevice::followWiring() {
    if (dead.load()) return;
    Ports all = ins;
    all.insert(all.end(), outs.begin(), outs.end());
    for (jack_port_t* port : {midiIn, midiOut})
        if (port) all.push_back(port);
    constexpr unsigned cyclesToSettle = 2;
    if (wiring.look(client, all, cycles - madeAt > cyclesToSettle)) madeAt = cycles;
    lookedNs = nowNs();
}

bool JackDevice::connectCallbacks() {
    jack_on_shutdown(
        client,
        [](void* device) {
            self(device).dead = true;
            self(device).needsReopen = true;
        },
        this);
    const auto block = [](jack_nframes_t n, void* device) { return self(device).process(n); };
    const auto resize = [](jack_nframes_t n, void* device) {
        self(device).framesChanged(int(n));
        return 0;
    };
    const auto retune = [](jack_nframes_t hz, void* device) {
        self(device).rateChanged(int(hz));
        return 0;
    };
    const auto gap = [](void* device) {
        self(device).cycle.xruns.fetch_add(1, std::memory_order_relaxed);
        return 0;
    };
    return jack_set_process_callback(client, block, this) == 0 &&
           jack_set_buffer_size_callback(client, resize, this) == 0 &&
           jack_set_sample_rate_callback(client, retune, this) == 0 &&
           jack_set_xrun_callback(client, gap, this) == 0;
}

bool JackDevice::addPorts() {
    if (!addAudioPorts(true, ins, inNames) || !addAudioPorts(false, outs, outNames)) return false;
    if (cycle.ports.jackIn >= 0 && !(midiIn = addMidiPort("midi_in_1", JackPortIsInput)))
        return false;
    return cycle.ports.jackOut < 0 || (midiOut = addMidiPort("midi_out_1", JackPortIsOutput));
}

/// As many as there are physical ports to join them to, and at least a pair.
bool JackDevice::addAudioPorts(bool inputs, Ports& ports, std::vector<std::string>& names) {
    const unsigned long direction = inputs ? JackPortIsInput : JackPortIsOutput;
    const unsigned long opposite = inputs ? JackPortIsOutput : JackPortIsInput;
    const auto partners = physical(JACK_DEFAULT_AUDIO_TYPE, opposite);
    const size_t count = std::clamp(partners.size(), minChannels, size_t(aamMaxChannels));
    for (size_t i = 0; i < count; ++i) {
        const std::string name = (inputs ? "in_" : "out_") + std::to_string(i + 1);
        ports.push_back(
            jack_port_register(client, name.c_str(), JACK_DEFAULT_AUDIO_TYPE, direction, 0));
        if (!ports.back()) return false;
        const size_t colon = i < partners.size() ? partners[i].find(':') : std::string::npos;
        names.push_back(colon == std::string::npos ? name : partners[i].substr(colon + 1));
    }
    return true;
}

jack_port_t* JackDevice::addMidiPort(const char* name, unsigned long direction) {
    return jack_port_register(client, name, JACK_DEFAULT_MIDI_TYPE, direction, 0);
}

/// Some servers grant a new size at once, others some time later through the callback.
void JackDevice::settleFrames(const DeviceWish& wish) {
    constexpr int64_t patienceNs = 500 * nsPerMs, pauseNs = nsPerMs;
    const int wanted = wish.frames;
    if (!wish.keepFrames && serverFrames != wanted &&
        jack_set_buffer_size(client, jack_nframes_t(wanted)) == 0) {
        const int64_t until = nowNs() + patienceNs;
        while (serverFrames != wanted && !dead && nowNs() < until) sleepUntilNs(nowNs() + pauseNs);
    }
    frames = serverFrames;
    rate = int(jack_get_sample_rate(client));
    settled = true;
    framesChanged(serverFrames);
}

std::vector<std::string> JackDevice::physical(const char* type, unsigned long direction) const {
    std::vector<std::string> names;
    const char** found = jack_get_ports(client, nullptr, type, JackPortIsPhysical | direction);
    if (!found) return names;
    for (const char** name = found; *name; ++name) names.emplace_back(*name);
    jack_free(found);
    return names;
}

/// Already joined, or a port that vanished meanwhile: either way there is nothing to do.
void JackDevice::join(jack_port_t* own, const std::string& other) {
    if (!wiring.joinsHardware(jack_port_short_name(own), other)) return;
    const char *name = jack_port_name(own), *partner = other.c_str();
    if (jack_port_flags(own) & JackPortIsOutput)
        jack_connect(client, name, partner);
    else
        jack_connect(client, partner, name);
}

void JackDevice::joinPhysical() {
    const auto sources = physical(JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    const auto sinks = physical(JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput);
    for (size_t i = 0; i < std::min(ins.size(), sources.size()); ++i) join(ins[i], sources[i]);
    for (size_t i = 0; i < std::min(outs.size(), sinks.size()); ++i) join(outs[i], sinks[i]);
    if (midiIn) {
        for (const auto& name : physical(JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput))
            join(midiIn, name);
    }
    if (midiOut) {
        for (const auto& name : physical(JACK_DEFAULT_MIDI_TYPE, JackPortIsInput))
            join(midiOut, name);
    }
}

int JackDevice::process(jack_nframes_t count) {
    cycles.fetch_add(1, std::memory_order_relaxed);
    std::array<float*, aamMaxChannels> in{}, out{};
    const auto buffer = [count](jack_port_t* port) {
        return static_cast<float*>(jack_port_get_buffer(port, count));
    };
    std::transform(ins.begin(), ins.end(), in.begin(), buffer);
    std::transform(outs.begin(), outs.end(), out.begin(), buffer);
    int events = 0;
    if (settled.load() && int(count) == frames) {
        readMidi(count);
        events = cycle.run({in.data(), out.data(), int(ins.size()), int(outs.size()), frames, 0});
    } else {
        for (size_t i = 0; i < outs.size(); ++i) std::fill_n(out[i], count, 0.0f);
    }
    writeMidi(events, count);
    return 0;
}

void JackDevice::readMidi(jack_nframes_t count) {
    const int index = cycle.ports.jackIn;
    if (!midiIn || !MidiPorts::enabled(cycle.ports.ins, index)) return;
    void* buffer = jack_port_get_buffer(midiIn, count);
    const uint32_t waiting = jack_midi_get_event_count(buffer);
    for (uint32_t i = 0; i < waiting; ++i) {
        jack_midi_event_t event;
        int32_t data = 0;
        if (jack_midi_event_get(&event, buffer, i) != 0) continue;
        if (MidiPorts::join(cycle.ports.ins, index, event.buffer, event.size)) continue;
        if (packMessage(event.buffer, event.size, data))
            cycle.addEvent(data, index, int(event.time));
    }
}

void JackDevice::writeMidi(int events, jack_nframes_t count) {
    if (!midiOut) return;
    void* buffer = jack_port_get_buffer(midiOut, count);
    jack_midi_clear_buffer(buffer);
    for (int i = 0; i < events; ++i) {
        const AamEvent& event = cycle.events[size_t(i)];
        if (!cycle.ports.goesTo(event, cycle.ports.jackOut)) continue;
        const bool whole = writeMessages(buffer, jack_nframes_t(event.frame));
        if (whole || (event.data & 0xFF) >= realtime)
            writeEvent(buffer, jack_nframes_t(event.frame), event);
        else
            held.put(event);
    }
    writeMessages(buffer, count - 1);
}

void JackDevice::writeEvent(void* buffer, jack_nframes_t frame, const AamEvent& event) {
    unsigned char bytes[maxMessageBytes];
    const int length = unpackMessage(event.data, bytes);
    if (length > 0) jack_midi_event_write(buffer, frame, bytes, size_t(length));
}

/// Writes system exclusive messages that are due up to a frame. One that the port has no room for
/// goes on with the next block; what comes behind it waits, but for the clock: false as long as a
/// message is cut.
bool JackDevice::writeMessages(void* buffer, jack_nframes_t until) {
    for (;;) {
        if (sending.length == 0) {
            sending = {0, 0, aamMostMessage, 0, room.data()};
            sent = 0;
            if (!cycle.ports.toJack.take(sending)) sending.length = 0;
        }
        if (sending.length == 0) break;
        const auto frame = jack_nframes_t(std::clamp(sending.frame, 0, frames - 1));
        if (sent == 0 && frame > until) break;
        if (!writePiece(buffer, sent > 0 ? 0 : frame)) return sent == 0;
        AamEvent event{};
        while (held.take(event)) writeEvent(buffer, until, event);
    }
    return true;
}

/// False when there is no room for the rest.
bool JackDevice::writePiece(void* buffer, jack_nframes_t frame) {
    const size_t left = size_t(sending.length - sent);
    const size_t piece = std::min(left, jack_midi_max_event_size(buffer));
    if (piece == 0 || jack_midi_event_write(buffer, frame, sending.bytes + sent, piece) != 0)
        return false;
    sent += int(piece);
    if (piece < left) return false;
    sending.length = 0;
    return true;
}

void JackDevice::framesChanged(int count) {
    serverFrames = count;
    if (settled && count != frames) needsReopen = true;
}

void JackDevice::rateChanged(int hz) {
    if (settled && hz != rate) needsReopen = true;
}

#include "driver/AlsaMidi.h"

#include "driver/Clock.h"
#include "driver/MidiBytes.h"

#include <algorithm>
#include <alsa/asoundlib.h>
#include <chrono>
#include <cstdlib>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>

std::unique_ptr<AlsaMidi> AlsaMidi::open(MidiPorts& ports) {
    snd_seq_t* seq = nullptr;
    if (snd_seq_open(&seq, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) < 0) return nullptr;
    std::unique_ptr<AlsaMidi> midi(new AlsaMidi(seq, ports));
    return midi->prepare() ? std::move(midi) : nullptr;
}

AlsaMidi::AlsaMidi(snd_seq_t* sequencer, MidiPorts& midiPorts)
    : seq(sequencer), ports(midiPorts), received(aamMaxEvents), waiting(aamMaxEvents),
      room(size_t(aamMostMessage)) {
}

AlsaMidi::~AlsaMidi() {
    ending.store(true);
    if (thread.joinable()) {
        eventfd_write(wake, 1);
        thread.join();
    }
    if (wake >= 0) close(wake);
    if (coder) snd_midi_event_free(coder);
    snd_seq_close(seq);
}

bool AlsaMidi::prepare() {
    constexpr size_t mostEvents = 2000; // that the kernel allows to wait
    snd_seq_set_client_name(seq, "Sondrava");
    snd_seq_set_client_pool_input(seq, mostEvents);
    snd_seq_set_client_pool_output(seq, mostEvents);
    inPort =
        snd_seq_create_simple_port(seq, "in", SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE,
                                   SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION);
    outPort =
        snd_seq_create_simple_port(seq, "out", SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ,
                                   SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION);
    queue = snd_seq_alloc_queue(seq);
    wake = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (inPort < 0 || outPort < 0 || queue < 0 || wake < 0) return false;
    if (snd_midi_event_new(maxMessageBytes, &coder) < 0) return false;
    snd_midi_event_no_status(coder, 1);
    snd_seq_start_queue(seq, queue, nullptr);
    snd_seq_drain_output(seq);
    list();
    thread = std::thread(&AlsaMidi::work, this);
    return true;
}

void AlsaMidi::list() {
    snd_seq_client_info_t* client;
    snd_seq_client_info_alloca(&client);
    snd_seq_client_info_set_client(client, -1);
    while (snd_seq_query_next_client(seq, client) >= 0) {
        const int id = snd_seq_client_info_get_client(client);
        if (id != SND_SEQ_CLIENT_SYSTEM && id != snd_seq_client_id(seq))
            listPorts(id, snd_seq_client_info_get_name(client));
    }
}

void AlsaMidi::listPorts(int client, const char* clientName) {
    constexpr unsigned canRead = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ;
    constexpr unsigned canWrite = SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;
    snd_seq_port_info_t* info;
    snd_seq_port_info_alloca(&info);
    snd_seq_port_info_set_client(info, client);
    snd_seq_port_info_set_port(info, -1);
    while (snd_seq_query_next_port(seq, info) >= 0) {
        const unsigned caps = snd_seq_port_info_get_capability(info);
        if (caps & SND_SEQ_PORT_CAP_NO_EXPORT) continue;
        const std::string portName = snd_seq_port_info_get_name(info);
        const std::string name =
            portName.starts_with(clientName) ? portName : clientName + (": " + portName);
        const int port = snd_seq_port_info_get_port(info);
        if ((caps & canRead) == canRead)
            sources.push_back({MidiPorts::add(ports.ins, name), client, port});
        if ((caps & canWrite) == canWrite)
            sinks.push_back({MidiPorts::add(ports.outs, name), client, port});
    }
}

void AlsaMidi::connectIn(int index, bool on) {
    const auto change = on ? snd_seq_connect_from : snd_seq_disconnect_from;
    for (const Remote& r : sources) {
        if (r.index == index) change(seq, inPort, r.client, r.port);
    }
}

void AlsaMidi::connectOut(int index, bool on) {
    const auto change = on ? snd_seq_connect_to : snd_seq_disconnect_to;
    for (const Remote& r : sinks) {
        if (r.index == index) change(seq, outPort, r.client, r.port);
    }
}

void AlsaMidi::send(const AamEvent* events, int count, int64_t firstNs, int rate) {
    bool any = false;
    for (int i = 0; i < count; ++i) {
        const bool ours = std::any_of(sinks.begin(), sinks.end(), [&](const Remote& r) {
            return ports.goesTo(events[i], r.index);
        });
        if (ours) any |= waiting.put({events[i], firstNs + framesToNs(events[i].frame, rate)});
    }
    if (any) eventfd_write(wake, 1); // never blocks
}

void AlsaMidi::work() {
    const int count = snd_seq_poll_descriptors_count(seq, POLLIN);
    std::vector<pollfd> sleepers(size_t(count) + 1);
    snd_seq_poll_descriptors(seq, sleepers.data(), unsigned(count), POLLIN);
    sleepers.back() = {wake, POLLIN, 0};
    while (!ending.load()) {
        poll(sleepers.data(), sleepers.size(), -1);
        eventfd_t woken;
        eventfd_read(wake, &woken);
        readAll();
        writeAll();
    }
}

void AlsaMidi::readAll() {
    snd_seq_event_t* event = nullptr;
    int left = 0; // -ENOSPC tells of an overrun, after which reading goes on
    while ((left = snd_seq_event_input(seq, &event)) >= 0 || left == -ENOSPC) {
        if (left >= 0 && event) accept(*event);
    }
}

void AlsaMidi::accept(const snd_seq_event_t& event) {
    if (event.type == SND_SEQ_EVENT_SYSEX) {
        for (const Remote& r : sources)
            if (r.client == event.source.client && r.port == event.source.port)
                MidiPorts::join(ports.ins, r.index,
                                static_cast<const unsigned char*>(event.data.ext.ptr),
                                event.data.ext.len);
        return;
    }
    unsigned char bytes[maxMessageBytes];
    const long count = snd_midi_event_decode(coder, bytes, sizeof bytes, &event);
    int32_t data = 0;
    if (count <= 0 || !packMessage(bytes, size_t(count), data)) return;
    for (const Remote& r : sources) {
        if (r.client == event.source.client && r.port == event.source.port &&
            MidiPorts::enabled(ports.ins, r.index))
            received.put({{data, int8_t(r.index), {}, 0}, nowNs()});
    }
}

/// Gives the kernel time to take what fills its queue, which may come back to us.
void AlsaMidi::waitForKernel() {
    readAll();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void AlsaMidi::writeAll() {
    followQueue();
    Timed next{};
    while (waiting.take(next)) write(next.event, next.ns);
    for (AamMessage message{0, 0, aamMostMessage, 0, room.data()}; messages.take(message);
         message.length = aamMostMessage)
        writeLong(message);
    while (snd_seq_drain_output(seq) == -EAGAIN && !ending.load()) waitForKernel();
}

/// Events are given to the kernel with times of its queue, since its order of events is that of
/// their times. The two clocks are matched anew only when they have come apart, for the same
/// reason.
void AlsaMidi::followQueue() {
    constexpr int64_t toleranceNs = 5 * nsPerMs;
    snd_seq_queue_status_t* status;
    snd_seq_queue_status_alloca(&status);
    if (snd_seq_get_queue_status(seq, queue, status) < 0) return;
    const snd_seq_real_time_t* time = snd_seq_queue_status_get_real_time(status);
    const int64_t ahead = nowNs() - (time->tv_sec * nsPerSecond + time->tv_nsec);
    if (std::abs(ahead - queueBeganNs) > toleranceNs) queueBeganNs = ahead;
}

void AlsaMidi::write(const AamEvent& message, int64_t dueNs) {
    unsigned char bytes[maxMessageBytes];
    const int count = unpackMessage(message.data, bytes);
    snd_seq_event_t event;
    snd_seq_ev_clear(&event);
    snd_midi_event_reset_encode(coder);
    if (count == 0 || snd_midi_event_encode(coder, bytes, count, &event) != count) return;
    const int64_t atNs = std::max<int64_t>(dueNs - queueBeganNs, 0);
    const snd_seq_real_time_t at{unsigned(atNs / nsPerSecond), unsigned(atNs % nsPerSecond)};
    snd_seq_ev_set_source(&event, (unsigned char)outPort);
    snd_seq_ev_schedule_real(&event, queue, 0, &at);
    for (const Remote& r : sinks) {
        if (!ports.goesTo(message, r.index)) continue;
        snd_seq_ev_set_dest(&event, (unsigned char)r.client, (unsigned char)r.port);
        output(event);
    }
}

void AlsaMidi::output(snd_seq_event_t& event) {
    while (snd_seq_event_output(seq, &event) == -EAGAIN && !ending.load()) waitForKernel();
}

bool AlsaMidi::send(const AamMessage& message) {
    const bool ours = std::any_of(sinks.begin(), sinks.end(), [&](const Remote& r) {
        return ports.goesTo(message.device, r.index);
    });
    if (!ours || !messages.put(message)) return false;
    eventfd_write(wake, 1);
    return true;
}

/// In pieces, since the kernel has room for so much alone.
void AlsaMidi::writeLong(const AamMessage& message) {
    constexpr int pieceBytes = 256;
    for (const Remote& r : sinks) {
        if (!ports.goesTo(message.device, r.index)) continue;
        for (int at = 0; at < message.length; at += pieceBytes) {
            snd_seq_event_t event;
            snd_seq_ev_clear(&event);
            snd_seq_ev_set_source(&event, (unsigned char)outPort);
            snd_seq_ev_set_dest(&event, (unsigned char)r.client, (unsigned char)r.port);
            snd_seq_ev_set_direct(&event);
            snd_seq_ev_set_sysex(&event, unsigned(std::min(pieceBytes, message.length - at)),
                                 message.bytes + at);
            output(event);
        }
    }
}

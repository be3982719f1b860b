#include "driver/PulseDevice.h"

#include "driver/AudioThread.h"
#include "driver/BlockCycle.h"

#include <algorithm>

namespace {

constexpr unsigned blocksAhead = 3; // that the server holds
constexpr auto streamFlags =
    pa_stream_flags_t(PA_STREAM_START_CORKED | PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);

PulseDevice& self(void* device) {
    return *static_cast<PulseDevice*>(device);
}

std::vector<std::string> channelNames(const pa_channel_map& map) {
    std::vector<std::string> names;
    for (int i = 0; i < map.channels; ++i)
        names.emplace_back(pa_channel_position_to_pretty_string(map.map[i]));
    return names;
}

const PulseEndpoint* find(const std::vector<PulseEndpoint>& list, const std::string& name) {
    const auto at = std::find_if(list.begin(), list.end(),
                                 [&](const PulseEndpoint& e) { return e.name == name; });
    return at == list.end() ? nullptr : &*at;
}

} // namespace

PulseDevice::~PulseDevice() {
    const PulseConnection::Lock lock(connection);
    dropStream(playback);
    dropStream(record);
}

bool PulseDevice::open(const DeviceInfo& info, const DeviceWish& wish) {
    const PulseListing listing(connection);
    const PulseEndpoint* sink = find(listing.sinks, info.playback);
    const PulseEndpoint* source = find(listing.sources, info.capture);
    if (!sink) return false;
    frames = wish.frames;
    rate = std::min(wish.rate, int(PA_RATE_MAX));
    const PulseConnection::Lock lock(connection);
    if (!openPlayback(*sink)) return false;
    outNames = channelNames(sink->map);
    if (source && openRecord(*source)) inNames = channelNames(source->map);
    prepareBuffers();
    return true;
}

pa_stream* PulseDevice::makeStream(const char* name, const PulseEndpoint& end) {
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, uint32_t(rate), end.map.channels};
    pa_stream* stream = pa_stream_new(connection.context, name, &spec, &end.map);
    if (!stream) return nullptr;
    const auto changed = [](pa_stream* s, void* device) {
        if (pa_stream_get_state(s) == PA_STREAM_FAILED) self(device).needsReopen = true;
        self(device).connection.signal();
    };
    pa_stream_set_state_callback(stream, changed, this);
    return stream;
}

bool PulseDevice::openPlayback(const PulseEndpoint& sink) {
    playback = makeStream("Playback", sink);
    if (!playback) return false;
    const auto wants = [](pa_stream*, size_t, void* device) { self(device).fill(); };
    const auto gap = [](pa_stream*, void* device) {
        if (self(device).running) self(device).cycle.xruns.fetch_add(1);
    };
    pa_stream_set_write_callback(playback, wants, this);
    pa_stream_set_underflow_callback(playback, gap, this);
    const auto blockBytes =
        uint32_t(size_t(frames) * pa_frame_size(pa_stream_get_sample_spec(playback)));
    const pa_buffer_attr buffer{uint32_t(-1), blocksAhead * blockBytes, uint32_t(-1), blockBytes,
                                uint32_t(-1)};
    return pa_stream_connect_playback(playback, sink.name.c_str(), &buffer, streamFlags, nullptr,
                                      nullptr) == 0 &&
           waitReady(playback);
}

bool PulseDevice::openRecord(const PulseEndpoint& source) {
    record = makeStream("Recording", source);
    if (!record) return false;
    const auto brings = [](pa_stream*, size_t, void* device) { self(device).receive(); };
    pa_stream_set_read_callback(record, brings, this);
    const auto blockBytes =
        uint32_t(size_t(frames) * pa_frame_size(pa_stream_get_sample_spec(record)));
    const pa_buffer_attr buffer{uint32_t(-1), uint32_t(-1), uint32_t(-1), uint32_t(-1), blockBytes};
    if (pa_stream_connect_record(record, source.name.c_str(), &buffer, streamFlags) == 0 &&
        waitReady(record))
        return true;
    dropStream(record);
    needsReopen = false;
    return false;
}

bool PulseDevice::waitReady(pa_stream* stream) {
    const auto state = [stream] { return pa_stream_get_state(stream); };
    connection.wait([&] { return state() == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state()); });
    return state() == PA_STREAM_READY;
}

void PulseDevice::dropStream(pa_stream*& stream) {
    if (!stream) return;
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_write_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_underflow_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
    stream = nullptr;
}

void PulseDevice::prepareBuffers() {
    const size_t block = size_t(frames), numIns = inNames.size(), numOuts = outNames.size();
    const auto build = [block](Planes& planes, std::vector<float*>& pointers, size_t count) {
        planes.assign(count, std::vector<float>(block));
        for (auto& plane : planes) pointers.push_back(plane.data());
    };
    build(inPlanes, ins, numIns);
    build(outPlanes, outs, numOuts);
    staged.resize(block * numOuts);
    stagedAt = staged.size();
    if (numIns == 0) return;
    constexpr size_t blocksHeld = 8, burstsPerSecond = 5;
    const size_t held = std::max(block * blocksHeld, size_t(rate) / burstsPerSecond);
    input = std::make_unique<Ring<float>>(held * numIns);
    gathered.resize(block * numIns);
    primeSamples = 2 * gathered.size();
}

void PulseDevice::pause(pa_stream* stream, bool paused) {
    if (!stream) return;
    if (pa_operation* asked = pa_stream_cork(stream, paused, nullptr, nullptr))
        pa_operation_unref(asked);
}

void PulseDevice::start() {
    const PulseConnection::Lock lock(connection);
    running = true;
    pause(record, false);
    pause(playback, false);
    const auto begin = [](pa_mainloop_api*, void* device) {
        askRealtime();
        self(device).fill();
    };
    pa_mainloop_api_once(pa_threaded_mainloop_get_api(connection.loop), begin, this);
}

void PulseDevice::stop() {
    const PulseConnection::Lock lock(connection);
    running = false;
    pause(playback, true);
    pause(record, true);
}

void PulseDevice::fill() {
    const size_t frameBytes = outNames.size() * sizeof(float);
    while (running && pa_stream_get_state(playback) == PA_STREAM_READY) {
        const size_t room = pa_stream_writable_size(playback);
        if (room == size_t(-1) || room < frameBytes) return;
        if (stagedAt == staged.size()) computeBlock();
        const size_t bytes =
            std::min(room / frameBytes * frameBytes, (staged.size() - stagedAt) * sizeof(float));
        if (pa_stream_write(playback, &staged[stagedAt], bytes, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            return;
        stagedAt += bytes / sizeof(float);
    }
}

void PulseDevice::computeBlock() {
    takeInputs();
    cycle.run({ins.data(), outs.data(), int(ins.size()), int(outs.size()), frames, 0});
    for (size_t c = 0; c < outs.size(); ++c) {
        for (size_t i = 0; i < size_t(frames); ++i) staged[i * outs.size() + c] = outs[c][i];
    }
    stagedAt = 0;
}

void PulseDevice::receive() {
    const void* data = nullptr;
    size_t bytes = 0;
    while (pa_stream_readable_size(record) > 0 && pa_stream_peek(record, &data, &bytes) == 0 &&
           bytes > 0) {
        // A hole has no data; it passes like a gap.
        if (!data || !input->put(static_cast<const float*>(data), bytes / sizeof(float))) {
            input->drop();
            primed = false;
        }
        pa_stream_drop(record);
    }
}

/// Input and output come in bursts of their own, so some input waits; each gap makes it wait more.
void PulseDevice::takeInputs() {
    if (!input) return;
    const size_t wanted = gathered.size(), waiting = input->waiting();
    if (primed && waiting < wanted) {
        primed = false;
        primeSamples = std::min(primeSamples + wanted, size_t(frames) * 4 * ins.size());
        cycle.xruns.fetch_add(1);
    }
    primed = primed || waiting >= primeSamples;
    if (primed)
        input->take(gathered.data(), wanted);
    else
        std::fill(gathered.begin(), gathered.end(), 0.0f);
    for (size_t c = 0; c < ins.size(); ++c) {
        for (size_t i = 0; i < size_t(frames); ++i) ins[c][i] = gathered[i * ins.size() + c];
    }
}

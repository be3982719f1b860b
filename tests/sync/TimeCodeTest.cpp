#include "base/Delegates.h"
#include "driver/Servers.h"
#include "engine/CAAM.h"
#include "engine/DeviceMidi.h"
#include "sequencer/SongFixture.h"
#include "support/Places.h"

#include <jack/jack.h>
#include <jack/midiport.h>

namespace {

constexpr double rate = 44100.0, fps = 25.0, quartersPerSecond = 4.0 * fps;
constexpr int block = 256, timeCode = 0xF1, changeTick = 3840;
constexpr float laterTempo = 93.5f;

/// Seconds of the song up to a tick: two of them at 120 beats, then slower ones.
double secondsOf(double tick) {
    if (tick < changeTick) return tick / (120.0 * 16.0);
    return changeTick / (120.0 * 16.0) + (tick - changeTick) / (double(laterTempo) * 16.0);
}

/// Another machine on the server. It tells time code from a frame of it on, each message up to a
/// millisecond early or late, but for the first eight, by a clock that is fast by 150 ppm.
class Machine {
public:
    static constexpr double speed = 1.00015;
    static constexpr int firstFrame = 25;
    struct Heard {
        int64_t frame;
        int data;
    };
    std::atomic<int> toSend{0};      ///< messages
    std::atomic<bool> places{false}; ///< sends a whole moment, once: 00:00:03:05
    std::atomic<int> placed{-1};     ///< frame that a whole moment told last, of hour 1
    std::vector<Heard> heard;        ///< read while it is off

    Machine() : client(jack_client_open("machine", JackNoStartServer, nullptr)) {
        out = jack_port_register(client, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
        in = jack_port_register(client, "in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
        heard.reserve(100000);
        jack_set_process_callback(
            client, [](jack_nframes_t n, void* me) { return static_cast<Machine*>(me)->run(n); },
            this);
        jack_activate(client);
    }
    ~Machine() { jack_client_close(client); }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    bool join() const {
        return comes([&] {
            return jack_connect(client, "machine:out", "Sondrava:midi_in_1") == 0 &&
                   jack_connect(client, "Sondrava:midi_out_1", "machine:in") == 0;
        });
    }
    void hurry(bool on) const { jack_set_freewheel(client, on); }
    void off() const { jack_deactivate(client); }

private:
    int run(jack_nframes_t n) {
        void* events = jack_port_get_buffer(in, n);
        jack_midi_event_t event;
        for (uint32_t i = 0; jack_midi_event_get(&event, events, i) == 0; ++i)
            if (event.size == 2 && event.buffer[0] == timeCode)
                heard.push_back({at + event.time, event.buffer[1]});
        for (uint32_t i = 0; jack_midi_event_get(&event, events, i) == 0; ++i) {
            TimeCode code;
            if (readFullFrame({event.buffer, event.size}, code) && code.hours == 1)
                placed = int(code.frame() - 3600 * int64_t(fps));
        }
        events = jack_port_get_buffer(out, n);
        jack_midi_clear_buffer(events);
        if (places.exchange(false)) {
            const FullFrame whole = fullFrame({0, 0, 3, 5, CodeRate::fps25});
            jack_midi_event_write(events, 0, whole.data(), whole.size());
        }
        if (sent == 0) next = at;
        for (; sent < toSend && next < at + n; sent++) {
            const int moment = firstFrame + sent / 8 * 2, piece = sent % 8;
            const int values[] = {moment % 25, moment / 25 % 60, moment / 1500, 1 << 5};
            const unsigned char bytes[] = {
                timeCode,
                static_cast<unsigned char>(piece << 4 | (values[piece / 2] >> piece % 2 * 4 & 15))};
            if (sent == 0) first = at;
            jack_midi_event_write(events, jack_nframes_t(next - at), bytes, sizeof bytes);
            random = random * 1664525u + 1013904223u;
            const double late =
                sent < 8 ? 0.0 : (double(random >> 8) / double(1 << 24) - 0.5) * rate * 0.002;
            next = first + std::llround((sent + 1) * rate / quartersPerSecond / speed + late);
        }
        at += n;
        return 0;
    }

    jack_client_t* client;
    jack_port_t *out, *in;
    int64_t at = 0, next = 0, first = 0;
    int sent = 0;
    unsigned random = 1;
};

/// What the song was seen to do, block by block, while the code came.
struct Seen {
    std::atomic<bool> started{false}, stopped{false};
    int64_t at = 0;               ///< frames, of the coming block
    int64_t begun = -1;           ///< when the first message came
    double startedLate = 0;       ///< frames that the song is off at the end of its first block
    double worstMs = 0;           ///< from the tenth second on
    std::atomic<int64_t> past{0}; ///< frames since the first message

    double wanted() const {
        return Machine::firstFrame / fps + double(at - begun) / rate * Machine::speed;
    }
    void note(const AamEvent* events, int count, long frames) {
        for (int i = 0; i < count && begun < 0; i++)
            if ((events[i].data & 0xFF) == timeCode) begun = at + events[i].frame;
        at += frames;
        if (begun < 0) return;
        past = at - begun;
    }
    void look(CQV* host) {
        if (begun < 0) return;
        const double off =
            secondsOf(host->getMasterSeq() ? host->getMasterSeq()->getPos() : double(host->pos)) -
            wanted();
        if (host->playing && !started) {
            startedLate = off * rate;
            started = true;
        }
        if (started && !host->playing) stopped = true;
        if (started && !stopped && at - begun > int64_t(10 * rate))
            worstMs = std::max(worstMs, std::fabs(off) * 1000.0);
    }
};

Seen* seen = nullptr;

long callback(float** ins, float** outs, long numIns, long numOuts, long frames, void* events,
              int numEvents) {
    seen->note(static_cast<AamEvent*>(events), numEvents, frames);
    const long sent = libio(ins, outs, numIns, numOuts, frames, events, numEvents);
    seen->look(qv);
    return sent;
}

struct TimeCodeSync : testing::Test {
    JackServer server;
    SongFixture song;
    Seen watch;
    std::optional<CAAM> bridge;
    std::optional<Machine> machine;

    TimeCodeSync() {
        enterSequencer();
        seen = &watch;
        song.tempoAt(changeTick, laterTempo);
        bridge.emplace(callback, builtFile("bin/libaam.so").c_str());
        song.host.aam = &*bridge;
        bridge->onChange = new _COnChange<CQV>(&song.host, &CQV::aamChanged);
        song.host.setLoop(0);
    }
    ~TimeCodeSync() override {
        machine.reset();
        song.host.aam = nullptr;
        bridge.reset();
    }
    void open() {
        bridge->midiInEnable(0, 1);
        bridge->midiOutEnable(0, 1);
        bridge->setFrames(block);
        bridge->audioOpen(0);
        ASSERT_TRUE(bridge->opened);
        machine.emplace();
        ASSERT_TRUE(machine->join());
    }
};

} // namespace

/// A minute of the code of another machine: the song begins at the frame of the eighth message,
/// where that says, over a change of its tempo it is never a millisecond off from the tenth second
/// on, and it ends where the last message was, with the next frame of the code.
TEST_F(TimeCodeSync, KeepsTheSongWithAnotherMachine) {
    song.host.sync = 1;
    song.host.deviceMidi->codeIn.device = anyClockDevice;
    open();
    constexpr int messages = int(60 * quartersPerSecond);
    machine->hurry(true);
    machine->toSend = messages;
    EXPECT_TRUE(comes([&] { return watch.stopped.load(); }));
    machine->hurry(false);
    bridge->audioClose();
    ASSERT_TRUE(watch.started);
    EXPECT_NEAR(watch.startedLate, 0.0, 1.0) << "frames";
    EXPECT_LT(watch.worstMs, 1.0);
    RecordProperty("worst_microseconds", int(watch.worstMs * 1000));
    const double last = Machine::firstFrame / fps + (messages - 1) / quartersPerSecond;
    EXPECT_NEAR(secondsOf(song.seq->getPos()), last, 0.5 / rate);
    EXPECT_EQ(song.host.deviceMidi->codeIn.speed(), 1.0);
}

/// A minute of the song's own code: each message at its frame, the moments one behind the other.
TEST_F(TimeCodeSync, TellsAnotherMachineWhereTheSongIs) {
    song.host.deviceMidi->codeOut.device = anyClockDevice;
    song.host.deviceMidi->codeOut.startHour = 1;
    open();
    machine->hurry(true);
    song.host.start();
    constexpr size_t messages = size_t(60 * quartersPerSecond);
    EXPECT_TRUE(comes([&] { return song.host.framesPlayed > int64_t(61 * rate); }));
    machine->off();
    bridge->audioClose();
    const auto& heard = machine->heard;
    ASSERT_GE(heard.size(), messages);
    for (size_t i = 0; i < messages; i++) {
        const double frame = double(i) * rate / quartersPerSecond;
        ASSERT_NEAR(double(heard[i].frame - heard[0].frame), frame, 1.0) << i;
        ASSERT_EQ(heard[i].data >> 4, int(i % 8));
    }
    for (size_t i = 0; i + 8 <= messages; i += 8) {
        std::array<int, 8> pieces{};
        for (size_t k = 0; k < 8; k++) pieces[k] = heard[i + k].data & 15;
        const TimeCode code = TimeCode::ofPieces(pieces);
        const int frame = int(i / 4);
        ASSERT_EQ(code, (TimeCode{1, frame / 1500, frame / 25 % 60, frame % 25, CodeRate::fps25}));
    }
}

/// While they stand, one places the other by whole moments.
TEST_F(TimeCodeSync, PlacesAreTold) {
    song.host.sync = 1;
    song.host.deviceMidi->codeIn.device = 0;
    song.host.deviceMidi->codeOut.device = 0;
    song.host.deviceMidi->codeOut.startHour = 1;
    open();
    machine->places = true;
    EXPECT_TRUE(comes([&] {
        song.host.idle();
        return std::fabs(secondsOf(song.seq->getPos()) - 3.2) < 0.5 / rate && machine->placed == 80;
    }));
    song.host.setPos(changeTick);
    EXPECT_TRUE(comes([&] {
        song.host.idle();
        return machine->placed == 50;
    }));
    EXPECT_EQ(song.host.playing, 0);
    bridge->audioClose();
}

#include "audiofiles/CSample.h"
#include "effects/CEffect.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "engine/MidiBytes.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"
#include "engine/plan/PlanBuilder.h"
#include "instruments/CSampler.h"
#include "sequencer/render/CRender.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int rate = 44100;

/// A host that runs blocks when it is told to.
struct Bench {
    explicit Bench(int blockFrames) : host(std::make_unique<CQV>()), frames(blockFrames) {
        qv = host.get();
        host->settingsEnabled = false;
        host->setFrames(frames);
        host->setRate(rate);
        host->init();
        out = static_cast<CAudioOut*>(host->getAudioOut());
        out->channelUsed[0] = out->channelUsed[1] = 1;
        left.resize(size_t(frames));
        right.resize(size_t(frames));
    }
    void block() {
        float* outs[] = {left.data(), right.data()};
        libio(nullptr, outs, 0, 2, frames, nullptr, 0);
    }
    template <class T>
    T* add(T* comp) {
        comp->init();
        comp->createBuffers(frames);
        const GraphHold hold(host.get());
        host->comps.add(comp);
        return comp;
    }

    std::unique_ptr<CQV> host;
    int frames;
    CAudioOut* out;
    std::vector<float> left, right;
};

/// Takes what a track plays.
class Listener : public CComp {
public:
    explicit Listener(CQV* root) : CComp(root) {}
    void init() override {
        inPorts.add(new CInputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (guard.enter) mergeMIDI(frames);
    }
};

/// The cost of a block in which 500 components have nothing to do but to be pulled and mixed.
void emptyGraph(benchmark::State& state) {
    constexpr int components = 500;
    Bench bench(int(state.range(0)));
    for (int i = 0; i < components; i++) {
        auto* comp = bench.add(new CGroupCh(bench.host.get()));
        const GraphHold hold(bench.host.get());
        bench.out->addAudioCable(comp->output(), nullptr);
    }
    for (auto _ : state) bench.block();
    const double seconds = double(state.iterations()) * bench.frames / rate;
    state.counters["share of a core"] =
        benchmark::Counter(seconds, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["ns per component"] =
        benchmark::Counter(double(state.iterations()) * components * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(emptyGraph)->Arg(128)->Arg(1024);

/// Says that it is late.
class LateGroup : public CGroupCh {
public:
    using CGroupCh::CGroupCh;
    int getDelay() override { return 1000; }
};

/// A plan of so many components that lead to the audio out, of which one is late.
void planOfMany(benchmark::State& state) {
    Bench bench(128);
    const GraphHold hold(bench.host.get());
    for (int i = 0; i < state.range(0); i++) {
        CComp* comp =
            bench.add(i ? new CGroupCh(bench.host.get()) : new LateGroup(bench.host.get()));
        bench.out->addAudioCable(comp->output(), nullptr);
    }
    bench.host->plans->refresh();
    for (auto _ : state)
        PlanBuilder(bench.host.get(), PlanLists(), &bench.host->plans->current()).build();
}
BENCHMARK(planOfMany)->Arg(500)->Arg(2000)->Unit(benchmark::kMillisecond);

/// The cost of an event on its way from its part to an instrument, against blocks without any.
void songEvents(benchmark::State& state) {
    constexpr int blockFrames = 1024, notes = 200000, ticksBetween = 4;
    Bench bench(blockFrames);
    auto* seq = bench.add(new CSeq(bench.host.get()));
    auto* ear = bench.add(new Listener(bench.host.get()));
    CSongTrack* songTrack = seq->addTrack(trackMIDI, seq->getProg(), nullptr);
    {
        const GraphHold hold(bench.host.get());
        bench.out->addAudioCable(ear->output(), nullptr);
        ear->addMIDICable(songTrack->track->outPort(), nullptr);
    }
    auto* part = new CMIDIPart;
    part->length = notes * ticksBetween;
    EventCollector events;
    if (state.range(0))
        for (int i = 0; i < notes; i++) {
            CMIDIEvent* event = createMIDIEvent();
            event->data = asData(midiController, 1, i & 127);
            events.add(i * ticksBetween, event);
        }
    part->setEvents(events.takeList());
    songTrack->addPart(part, nullptr);
    bench.host->start();
    for (auto _ : state) {
        bench.block();
        if (seq->getPos() > part->length - 2 * blockFrames) bench.host->setPos(0.0);
    }
    const double ticksPerBlock = blockFrames * 120.0 * 16.0 / rate;
    state.counters["events per block"] = state.range(0) ? ticksPerBlock / ticksBetween : 0.0;
}
BENCHMARK(songEvents)->Arg(0)->Arg(1);

/// How many tracks a song has, how many of them play so many notes each, and its block.
struct SongSize {
    int tracks = 64, playing = 64, notes = 4, frames = 256;
};

/// A song of tracks with a synthesizer, a strip with four bands, and two sends to buses of which
/// one has a reverb. With so many threads that help.
class BusySong : public Bench {
public:
    static constexpr int buses = 2, ticksPerSecond = 1920;

    COutputChannel* lastStrip = nullptr; ///< of its synthesizers
    CSeq* seq = nullptr;

    explicit BusySong(int helpers, SongSize songSize = {})
        : Bench(songSize.frames), size(songSize) {
        host->workers->setCount(helpers);
        for (int k = 0; k < buses; k++) addBus(k == 0);
        seq = add(new CSeq(host.get()));
        for (int i = 0; i < size.tracks; i++) addTrack(i);
        seq->getProg()->leftLocator = 0;
        seq->getProg()->rightLocator = length;
        host->start();
    }

private:
    static constexpr int length = 4 * 3840;
    const SongSize size;

    void addBus(bool reverb) {
        auto* bus = new CGroupCh(host.get());
        bus->init();
        bus->createBuffers(frames);
        const GraphHold hold(host.get());
        host->sends.add(bus);
        out->addAudioCable(bus->output(), nullptr);
        if (!reverb) return;
        auto* rack = new CEffect(host.get());
        rack->init();
        rack->createBuffers(frames);
        rack->addProg(fxReverb);
        rack->setProg(1);
        bus->output()->inserts.add(rack);
    }
    void addTrack(int i) {
        CSongTrack* t = seq->addTrack(trackMIDI, seq->getProg(), nullptr);
        auto* synth = add(new CSampler(host.get()));
        CStr name;
        synth->factoryProg(nullptr, 0, name, true);
        COutputChannel* strip = synth->output();
        for (int band = 0; band < eqBandCount; band++) {
            strip->setEqPower(band, true);
            strip->setEqGain(band, 3.0f);
        }
        for (int k = 0; k < buses; k++) strip->sendLevels[k]->level = 0.5f;
        const GraphHold hold(host.get());
        out->addAudioCable(strip, nullptr);
        synth->addMIDICable(t->track->outPort(), nullptr);
        auto* part = new CMIDIPart;
        part->length = length;
        for (int n = 0; i < size.playing && n < size.notes; n++) {
            CMIDIEvent* event = createMIDIEvent();
            event->data = asData(midiNoteOn, 40 + i % 12 + 7 * n, 100);
            event->length = length - 10;
            part->addEvent(n, event);
        }
        t->addPart(part, nullptr);
        lastStrip = strip;
    }
};

void busySong(benchmark::State& state) {
    BusySong bench(int(state.range(0)));
    for (int i = 0; i < 200; i++) bench.block();
    for (auto _ : state) bench.block();
    state.counters["tracks in real time"] =
        benchmark::Counter(double(state.iterations()) * SongSize().tracks * bench.frames / rate,
                           benchmark::Counter::kIsRate);
    state.counters["work us"] = double(bench.host->plans->current().work()) * 1e-3;
}
BENCHMARK(busySong)->Arg(0)->Arg(1)->UseRealTime();

/// 200 tracks, of which 100 play a note, at the pace of a device with blocks of 128 frames.
void pacedSong(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    BusySong bench(int(state.range(0)), {200, 100, 1, 128});
    const std::chrono::duration<double> block(double(bench.frames) / rate);
    for (int i = 0; i < 200; i++) bench.block();
    std::vector<double> shares;
    const auto begin = Clock::now();
    for (auto _ : state) {
        std::this_thread::sleep_until(
            begin + std::chrono::duration_cast<Clock::duration>(block * double(shares.size())));
        const auto woken = Clock::now();
        bench.block();
        shares.push_back((Clock::now() - woken) / block);
    }
    std::ranges::sort(shares);
    state.counters["median"] = shares[shares.size() / 2];
    state.counters["99.9 %"] = shares[shares.size() * 999 / 1000];
    state.counters["worst"] = shares.back();
}
BENCHMARK(pacedSong)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(5000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// Eight seconds of it into a file: one track, or all.
void writeFile(benchmark::State& state) {
    BusySong bench(0);
    bench.host->stop();
    bench.block();
    COutputChannel* written = state.range(0) ? bench.out->output() : bench.lastStrip;
    ListOf<COutputChannel> outputs;
    outputs.add(written);
    const auto path = std::filesystem::temp_directory_path() / "graph_bench.wav";
    for (auto _ : state) {
        CSample file;
        file.streamed = 1;
        file.setFormat(rate, 16, 2);
        file.create(path.c_str());
        file.writeHeader();
        CRender render(bench.host.get(), bench.seq);
        render.tailMs = 0;
        render.setTarget(written, &file);
        render.process(0.0, 8 * BusySong::ticksPerSecond, &outputs, false, nullptr);
    }
    std::filesystem::remove(path);
    state.SetLabel(state.range(0) ? "all" : "one track");
}
BENCHMARK(writeFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

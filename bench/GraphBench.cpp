#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "engine/MidiBytes.h"
#include "sequencer/CSeq.h"

#include <benchmark/benchmark.h>
#include <memory>
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
    state.counters["share of a core"] = benchmark::Counter(
        seconds, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["ns per component"] =
        benchmark::Counter(double(state.iterations()) * components * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(emptyGraph)->Arg(128)->Arg(1024);

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

} // namespace

BENCHMARK_MAIN();

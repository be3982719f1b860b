#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "sequencer/CSubTrack.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>

// Songs of tracks with 25 parts each, and 100 events in a part: the argument is the number of
// tracks, so 200 stands for 5,000 parts and 500,000 events. Time must grow as they do.

namespace {

constexpr int partsOfTrack = 25, eventsOfPart = 100, partTicks = 3840;
constexpr int midiMessage = 0x643C90;

std::unique_ptr<CQV> makeHost() {
    auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->init();
    host->samples.add(new CSample);
    return host;
}

void fill(CPart* part, CSample* sample) {
    for (int n = 0; n < eventsOfPart; n++) {
        const int tick = (eventsOfPart - n) * 30; // from the end, so that each goes to the front
        if (part->type == partMIDI) {
            CMIDIEvent* event = createMIDIEvent();
            event->data = midiMessage;
            part->addEvent(tick, event);
        } else {
            CAudioEvent* event = createAudioEvent();
            event->sample = sample;
            part->addEvent(tick, event);
        }
    }
}

/// Every fourth track is one of audio, or all of them with `audioAlone`.
CSeq* makeSong(CQV* host, int tracks, bool audioAlone) {
    auto* seq = new CSeq(host);
    seq->init();
    host->comps.add(seq);
    auto* sample = static_cast<CSample*>(host->samples.getFirst());
    for (int i = 0; i < tracks; i++) {
        const bool audio = audioAlone || i % 4 == 3;
        CSongTrack* t = seq->addTrack(audio ? trackAudio : trackMIDI, seq->getProg(), nullptr);
        for (int n = 0; n < partsOfTrack; n++) {
            CPart* part = audio ? static_cast<CPart*>(new CAudioPart) : new CMIDIPart;
            part->pos = n * partTicks;
            fill(part, sample);
            t->linkPart(part);
        }
    }
    seq->orderParts(nullptr, nullptr, true);
    return seq;
}

void report(benchmark::State& state, int64_t bytes) {
    const double tracks = double(state.range(0));
    state.counters["events/s"] = benchmark::Counter(tracks * partsOfTrack * eventsOfPart,
                                                    benchmark::Counter::kIsIterationInvariantRate);
    state.counters["MB"] = double(bytes) / 1e6;
}

void save(benchmark::State& state) {
    const auto host = makeHost();
    CSeq* seq = makeSong(host.get(), int(state.range(0)), state.range(1) != 0);
    const char* path = "song-bench.tmp";
    int64_t bytes = 0;
    for (auto _ : state) {
        CFileStream stream(path, 1);
        seq->saving();
        seq->write(&stream);
        stream.flush();
        bytes = stream.getPos();
    }
    std::remove(path);
    report(state, bytes);
}

void load(benchmark::State& state) {
    const auto host = makeHost();
    CSeq* seq = makeSong(host.get(), int(state.range(0)), state.range(1) != 0);
    const char* path = "song-bench.tmp";
    {
        CFileStream stream(path, 1);
        seq->write(&stream);
    }
    int64_t bytes = 0;
    for (auto _ : state) {
        CFileStream stream(path, 0);
        auto fresh = std::make_unique<CSeq>(host.get());
        bytes = stream.getSize();
        fresh->read(&stream, int(bytes));
        fresh->afterRead();
        state.PauseTiming();
        fresh.reset();
        state.ResumeTiming();
    }
    std::remove(path);
    report(state, bytes);
}

BENCHMARK(save)->ArgNames({"tracks", "audio"})->ArgsProduct({{40, 200, 1000}, {0, 1}});
BENCHMARK(load)->ArgNames({"tracks", "audio"})->ArgsProduct({{40, 200, 1000}, {0, 1}});

} // namespace

BENCHMARK_MAIN();

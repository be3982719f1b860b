#include "audiofiles/CSample.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

// What the parts cost that do not sound: a large song, and the same song with only those parts left
// that sound at the position, block about in one run. "us" are medians of the large song, "alone"
// those of the small one, and "ratio" is what must not exceed 1.1.

namespace {

constexpr int blockFrames = 256, tracks = 200, partsOfTrack = 25, eventsOfPart = 100, lanes = 4;
constexpr int pointsOfLane = 9, tempoPoints = 1000, playedPart = 12;
constexpr int midiMessage = 0x643C90;

/// Processor time of this thread in us.
double now() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e6 + double(t.tv_nsec) * 1e-3;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + long(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// A host that runs blocks when it is told to, with a song that loops in its thirteenth bar.
class Song {
public:
    explicit Song(bool whole) : withFarParts(whole), host(std::make_unique<CQV>()) {
        use();
        host->settingsEnabled = false;
        host->setFrames(blockFrames);
        host->init();
        seq = new CSeq(host.get());
        seq->init();
        seq->createBuffers(blockFrames);
        const GraphHold hold(host.get());
        host->comps.add(seq);
    }
    ~Song() { use(); }
    Song(const Song&) = delete;
    Song& operator=(const Song&) = delete;

    /// Parts of notes, one bar each, with lanes.
    void addNotes() {
        for (int i = 0; i < tracks; i++) {
            CSongTrack* t = seq->addTrack(trackMIDI, seq->getProg(), nullptr);
            for (int n = 0; n < lanes; n++) {
                auto* lane = new CSubTrack("Lane", laneAutomation);
                lane->target = targetController;
                lane->param = n;
                t->track->addLane(lane, nullptr);
            }
            eachPart([&](int index) { t->linkPart(notes(index)); });
        }
        finish();
    }
    /// Single clips, and as many tempo points as parts.
    void addClips() {
        auto* sample = new CSample;
        sample->setFormat(44100, 16, 1);
        sample->takeData(static_cast<unsigned char*>(std::calloc(88200, 2)), 88200);
        host->samples.add(sample);
        for (int i = 0; i < tempoPoints / partsOfTrack; i++) {
            CSongTrack* t = seq->addTrack(trackAudio, seq->getProg(), nullptr);
            eachPart([&](int index) {
                auto* part = new CAudioPart;
                part->pos = index * barTicks;
                CAudioEvent* event = createAudioEvent();
                event->sample = sample;
                event->end = sample->frames - 1;
                part->addEvent(0, event);
                t->linkPart(part);
            });
        }
        for (int i = 0; i < tempoPoints; i++) {
            auto* point = new CTempoPart;
            point->pos = i * 96;
            point->setTempo(119.0f + float(i % 3));
            seq->getProg()->tempos.add(point);
        }
        finish();
    }
    double block() {
        use();
        float* outs[] = {left, right};
        const double from = now();
        libio(nullptr, outs, 0, 2, blockFrames, nullptr, 0);
        return now() - from;
    }
    /// A block from a tick on that is no start.
    double playing() {
        if (host->playing) return block();
        host->setPos(playedPart * barTicks);
        host->start();
        block();
        block();
        return block();
    }
    /// The block with which the transport starts.
    double start() {
        halt();
        host->setPos(playedPart * barTicks + 960);
        block();
        host->start();
        return block();
    }
    /// The block in which a loop wraps.
    double wrap() {
        halt();
        host->loop = 1;
        seq->setLoopSection(playedPart * barTicks, playedPart * barTicks + 1920);
        host->setPos(playedPart * barTicks + 1918);
        host->start();
        const double cost = block() + block();
        host->loop = 0;
        return cost;
    }
    double idle() {
        use();
        seq->selectTrack(seq->getProg()->tracks.first(), true);
        for (auto* t : seq->getProg()->tracks) seq->selectTrack(t, true);
        const double from = now();
        seq->idle();
        return now() - from;
    }

private:
    void use() { qv = host.get(); }
    void halt() {
        host->stop();
        block();
        block();
    }
    void finish() {
        seq->doUpdate(CComp::updateSong);
        seq->idle();
        for (int i = 0; i < tracks; i++) block();
    }
    template <class F>
    void eachPart(F&& add) {
        for (int index = 0; index < partsOfTrack; index++)
            if (withFarParts || index == playedPart) add(index);
    }
    static CPart* notes(int index) {
        auto* part = new CMIDIPart;
        part->pos = index * barTicks;
        for (int n = eventsOfPart; n-- > 0;) {
            CMIDIEvent* event = createMIDIEvent();
            event->data = midiMessage;
            part->addEvent(n * 38, event);
        }
        for (int slot = 0; slot < lanes; slot++)
            for (int n = pointsOfLane; n-- > 0;)
                part->addEventParam(n * 400, createEnvEvent(nullptr, float(n) / pointsOfLane),
                                    slot);
        return part;
    }

    bool withFarParts;
    std::unique_ptr<CQV> host;
    CSeq* seq = nullptr; ///< owned by the host
    float left[blockFrames], right[blockFrames];
};

/// Runs `what` on both songs in turn.
void compare(benchmark::State& state, void (Song::*fill)(), double (Song::*what)()) {
    Song whole(true), alone(false);
    (whole.*fill)();
    (alone.*fill)();
    std::vector<double> costs, costsAlone;
    for (auto _ : state) {
        costs.push_back((whole.*what)());
        costsAlone.push_back((alone.*what)());
        state.SetIterationTime(costs.back() * 1e-6);
    }
    state.counters["us"] = median(costs);
    state.counters["alone"] = median(costsAlone);
    state.counters["ratio"] = median(costs) / median(costsAlone);
    state.counters["worst"] = *std::ranges::max_element(costs);
}

#define PLAYED(fill, what)                                                                         \
    BENCHMARK_CAPTURE(compare, fill##_##what, &Song::fill, &Song::what)                            \
        ->UseManualTime()                                                                          \
        ->Iterations(200)
PLAYED(addNotes, playing);
PLAYED(addNotes, start);
PLAYED(addNotes, wrap);
PLAYED(addNotes, idle);
PLAYED(addClips, playing);
PLAYED(addClips, start);
PLAYED(addClips, wrap);
#undef PLAYED

} // namespace

BENCHMARK_MAIN();

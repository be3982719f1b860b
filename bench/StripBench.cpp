#include "base/Denormals.h"
#include "base/GraphMark.h"
#include "common/fx/CEQ.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/DeviceComps.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>
#include <vector>

// How much faster than real time one core runs equalisers and strips, stereo, at 44.1 kHz in blocks
// of 1024 frames, and beside each the plain loops of the same formulas, once both have been found
// to give the same. "strips" is the number of strips in real time.

namespace {

constexpr int blockFrames = 1024;
constexpr double rate = 44100.0;
constexpr int soundBlocks = 64;
constexpr int stripCount = 64, busCount = 2;
constexpr float trim = 0.1f, vol = 0.9f, pan = 0.2f, sendLevel = 0.5f;
constexpr double tolerance = 1e-5;

struct BandSetting {
    int form;
    float hz, db, q;
};
constexpr BandSetting bands[maxEqBands] = {{eqHighShelf, 10000, 4, 0.7f},
                                           {eqPeaking, 2000, -6, 1},
                                           {eqPeaking, 800, 3, 2},
                                           {eqLowShelf, 100, 6, 0.7f}};

struct Block {
    float left[blockFrames], right[blockFrames];
};

const std::vector<Block>& sound() {
    static const std::vector<Block> noise = [] {
        std::vector<Block> blocks(soundBlocks);
        unsigned seed = 1;
        for (Block& b : blocks)
            for (float* side : {b.left, b.right})
                for (int i = 0; i < blockFrames; i++) {
                    seed = seed * 1664525u + 1013904223u;
                    side[i] = float(int(seed >> 9) - (1 << 22)) / float(1 << 23) / stripCount;
                }
        return blocks;
    }();
    return noise;
}

// The formulas, one frame and one band after the other.

struct PlainSide {
    double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
    void run(const EqCoeffs& c, float* buf) {
        PlainSide s = *this;
        for (int i = 0; i < blockFrames; i++) {
            const double x = double(buf[i]);
            const double y = c.b0 * x + c.b1 * s.x1 + c.b2 * s.x2 - c.a1 * s.y1 - c.a2 * s.y2;
            s.x2 = s.x1;
            s.x1 = x;
            s.y2 = s.y1;
            s.y1 = y;
            buf[i] = float(y);
        }
        *this = s;
    }
};

struct PlainEq {
    EqCoeffs filters[maxEqBands];
    PlainSide left[maxEqBands], right[maxEqBands];

    PlainEq() {
        for (int k = 0; k < maxEqBands; k++)
            filters[k] = eqCoeffs(bands[k].form, double(bands[k].hz), double(bands[k].db),
                                  double(bands[k].q), rate);
    }
    void process(Block& b) {
        for (int k = 0; k < maxEqBands; k++) {
            left[k].run(filters[k], b.left);
            right[k].run(filters[k], b.right);
        }
    }
};

/// Fader, pan and meters with their ramps, none of which runs.
struct PlainMix {
    float gain = 1.0f, gainStep = 0.0f, panL = 1.0f, panR = 1.0f, panLStep = 0.0f, panRStep = 0.0f;
    float peakL = 0.0f, peakR = 0.0f;

    static void meter(float v, float& peak) {
        if (v >= peak)
            peak = v;
        else if (-v > peak)
            peak = -v;
    }
    void process(Block& b) {
        benchmark::DoNotOptimize(*this);
        for (int i = 0; i < blockFrames; i++) {
            const float g = gain + gainStep * float(i);
            b.left[i] = b.left[i] * (panL + panLStep * float(i)) * g * g;
            b.right[i] = b.right[i] * (panR + panRStep * float(i)) * g * g;
            meter(b.left[i], peakL);
            meter(b.right[i], peakR);
        }
    }
};

struct PlainStrip {
    PlainEq eq;
    PlainMix mix{vol, 0.0f, 1.0f - pan, 1.0f + pan * 0.5f};

    void process(Block& b) {
        const float factor = std::pow(4.0f, trim);
        for (int i = 0; i < blockFrames; i++) {
            b.left[i] *= factor;
            b.right[i] *= factor;
        }
        eq.process(b);
        mix.process(b);
    }
};

void addTo(Block& to, const Block& from, float amount) {
    for (int i = 0; i < blockFrames; i++) {
        to.left[i] += from.left[i] * amount;
        to.right[i] += from.right[i] * amount;
    }
}

struct PlainDesk {
    std::vector<PlainStrip> strips = std::vector<PlainStrip>(stripCount);
    PlainMix outMix, busMixes[busCount];

    void process(Block& b) {
        Block sum{}, buses[busCount] = {}, copy;
        for (PlainStrip& s : strips) {
            copy = b;
            s.process(copy);
            for (Block& bus : buses) addTo(bus, copy, sendLevel * sendLevel);
            addTo(sum, copy, 1.0f);
        }
        for (int k = 0; k < busCount; k++) {
            busMixes[k].process(buses[k]);
            addTo(sum, buses[k], 1.0f);
        }
        outMix.process(sum);
        b = sum;
    }
};

// The same in the engine.

CQV* benchHost() {
    static CQV* host = [] {
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->spectrumOn = 0;
        qv->setFrames(blockFrames);
        return qv;
    }();
    return host;
}

void setBands(COutputChannel& ch) {
    for (int k = 0; k < maxEqBands; k++) {
        ch.setEqType(k, bands[k].form);
        ch.setEqFrequency(k, bands[k].hz);
        ch.setEqGain(k, bands[k].db);
        ch.setEqQ(k, bands[k].q);
        ch.setEqPower(k, true);
    }
}

template <decltype(runBands)* run>
struct BandsBy {
    std::unique_ptr<CEQ> eqs[maxEqBands];
    EqBand* row[maxEqBands];

    BandsBy() {
        for (int k = 0; k < maxEqBands; k++) {
            eqs[k] = std::make_unique<CEQ>(bands[k].form);
            eqs[k]->setFrequency(bands[k].hz);
            eqs[k]->setGain(bands[k].db);
            eqs[k]->setQ(bands[k].q);
        }
    }
    void process(Block& b) {
        for (int k = 0; k < maxEqBands; k++) row[k] = eqs[k]->ready();
        run(row, maxEqBands, b.left, b.right, blockFrames);
    }
};
using Eq = BandsBy<runBands>;

/// Plays what it is given through a strip.
struct Player : CComp {
    const Block* sound = nullptr;

    Player() : CComp(benchHost()) {
        auto* ch = new COutputChannel(this);
        ch->trim = trim;
        ch->vol = vol;
        ch->pan = pan;
        ch->setVol(vol, false);
        ch->setPan(pan, false);
        setBands(*ch);
        outputs.add(ch);
        createBuffers(blockFrames);
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        std::copy_n(sound->left, frames, output()->bufL);
        std::copy_n(sound->right, frames, output()->bufR);
    }
};

struct Strip {
    Player player;

    void process(Block& b) {
        const GraphMark mark(benchHost());
        player.sound = &b;
        player.prepare(blockFrames);
        player.process(blockFrames);
        player.fx(blockFrames);
        player.mix(blockFrames);
        std::copy_n(player.output()->bufL, blockFrames, b.left);
        std::copy_n(player.output()->bufR, blockFrames, b.right);
    }
};

/// Strips and buses between which only the cables to the audio out stand. One at a time.
struct Desk {
    CQV* host = benchHost();
    std::vector<Player*> players;
    CAudioOut* out = new CAudioOut(host);

    Desk() {
        host->clear();
        add(out, host->comps);
        for (int k = 0; k < busCount; k++) cable(add(new CGroupCh(host), host->sends));
        for (int k = 0; k < stripCount; k++) {
            auto* p = new Player;
            host->comps.add(p);
            for (int bus = 0; bus < busCount; bus++)
                p->output()->sendLevels[bus]->level = sendLevel;
            players.push_back(p);
            cable(p);
        }
    }
    CComp* add(CComp* c, CList& list) const {
        c->init();
        c->createBuffers(blockFrames);
        list.add(c);
        return c;
    }
    void cable(CComp* from) const {
        const GraphMark mark(host);
        out->addAudioCable(from->output(), nullptr);
    }
    void process(Block& b) const {
        const GraphMark mark(host);
        for (Player* p : players) p->sound = &b;
        host->prepare(blockFrames);
        host->process(blockFrames);
        std::copy_n(out->output()->bufL, blockFrames, b.left);
        std::copy_n(out->output()->bufR, blockFrames, b.right);
    }
};

template <class Unit, class Plain>
double farthest() {
    Unit unit;
    Plain plain;
    double most = 0.0;
    for (const Block& b : sound()) {
        Block x = b, y = b;
        unit.process(x);
        plain.process(y);
        for (int i = 0; i < blockFrames; i++)
            most = std::max({most, std::fabs(double(x.left[i]) - double(y.left[i])),
                             std::fabs(double(x.right[i]) - double(y.right[i]))});
    }
    return most;
}

/// `other` is what the unit has to agree with.
template <class Unit, class Other, int strips = 1>
void measure(benchmark::State& state) {
    const double differs = farthest<Unit, Other>();
    if (!(differs <= tolerance)) state.SkipWithError("differs from the plain loops");
    Unit unit;
    size_t at = 0;
    for (auto _ : state) {
        Block b = sound()[at];
        unit.process(b);
        benchmark::DoNotOptimize(b);
        at = (at + 1) % soundBlocks;
    }
    using benchmark::Counter;
    const double seconds = double(state.iterations()) * blockFrames / rate;
    state.counters["times real time"] = Counter(seconds, Counter::kIsRate);
    state.counters["strips"] = Counter(seconds * strips, Counter::kIsRate);
    state.counters["differs by"] = differs;
}

} // namespace

BENCHMARK(measure<Eq, PlainEq>)->Name("four bands");
BENCHMARK(measure<BandsBy<runBandsInPairs>, PlainEq>)->Name("four bands, without AVX2");
BENCHMARK(measure<PlainEq, Eq>)->Name("four bands, plain loops");
BENCHMARK(measure<Strip, PlainStrip>)->Name("strip with four bands");
BENCHMARK(measure<PlainStrip, Strip>)->Name("strip with four bands, plain loops");
BENCHMARK(measure<Desk, PlainDesk, stripCount>)->Name("64 strips, two sends each");
BENCHMARK(measure<PlainDesk, Desk, stripCount>)->Name("64 strips, two sends each, plain loops");

int main(int argc, char** argv) {
    flushDenormals();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

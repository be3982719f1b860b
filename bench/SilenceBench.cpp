#include "FxSettings.h"
#include "common/fx/CEQ.h"
#include "common/fx/CGuitarAmp.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// What a block of silence costs at the start, and ten minutes after the last sound, at 44.1 kHz in
// blocks of 1024 frames. Denormals are not flushed here, as they are on every thread that renders:
// a state that lingers in them would show.

namespace {

constexpr int blockFrames = 1024;
constexpr float rate = 44100.0f;
constexpr int soundBlocks = 100;   ///< two seconds
constexpr int firstBlocks = 100;   ///< of silence, so that the memory it passes has been touched
constexpr int laterBlocks = 25840; ///< ten minutes

/// Renders the next block, with something to hear if `loud`.
using Unit = std::function<void(bool loud)>;

/// Corners so low that what is left behind one dies away slowly.
void lower(CFX&) {
}
void lower(CPhaser& fx) {
    fx.setRangeMin(60);
    fx.setRangeMax(100);
}
void lower(CFilterFX& fx) {
    fx.setCutoff(0.05f);
}

template <class Fx>
Unit effect(std::shared_ptr<Fx> fx) {
    loadUp(*fx);
    lower(*fx);
    fx->setEnabled(1);
    std::vector<float> noise(blockFrames), silence(blockFrames);
    for (float& v : noise) v = float(std::rand()) / float(RAND_MAX) - 0.5f;
    return [=, left = silence, right = silence](bool loud) mutable {
        left = right = loud ? noise : silence;
        fx->process(left.data(), right.data(), left.data(), right.data(), blockFrames);
        benchmark::ClobberMemory();
    };
}

template <class Fx>
Unit makeEffect() {
    return effect(std::make_shared<Fx>(rate, 0));
}

template <int channel>
Unit makeAmp() {
    auto amp = std::make_shared<CGuitarAmp>(rate, 0);
    amp->setChannel(channel);
    return effect(amp);
}

Unit makeBand() {
    auto band = std::make_shared<CEQ>(eqPeaking);
    band->setFrequency(30.0f);
    band->setQ(CEQ::maxQ);
    band->setGain(12.0f);
    return effect(band);
}

CQV* host() {
    static CQV* one = [] {
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(blockFrames);
        return qv;
    }();
    return one;
}

/// Eight keys of one sound. Loud blocks start them if they do not sound yet.
struct Keys {
    static constexpr int first = 48, count = 8;
    CSampler sampler{host()};
    CSynthProg* prog = new CSynthProg(host(), &sampler);
    CLayer* layer = prog->addLayer();
    bool held = false;

    Keys() {
        sampler.createChannels();
        sampler.createBuffers(blockFrames);
        sampler.progs.add(prog);
    }
    void add(CSound* s) {
        s->cutoff = 0.1f;
        s->q = 0.6f;
        layer->addSound(s);
    }
    void press(bool down) {
        if (down == held) return;
        held = down;
        for (int i = 0; i < count; i++) {
            CMIDIBytes event;
            event.data = asData(down ? midiNoteOn : midiNoteOff, first + i, 100);
            sampler.doMapping(&event);
        }
    }
    void render() {
        const GraphMark mark(sampler.host);
        sampler.prepare(blockFrames);
        sampler.render(blockFrames, 0);
    }
};

/// Notes that end with their keys.
Unit makeReleased() {
    auto keys = std::make_shared<Keys>();
    keys->add(new COSCSound(keys->layer, host()));
    return [keys](bool loud) {
        keys->press(loud);
        keys->render();
    };
}

/// Notes that die away while their keys are held, at first a moment after they have.
Unit makeDecayed() {
    auto keys = std::make_shared<Keys>();
    auto* sound = new COSCSound(keys->layer, host());
    sound->envelope[0]->decay = 0.3f;
    sound->envelope[0]->sustain = 0.0f;
    keys->add(sound);
    return [keys](bool) {
        keys->press(true);
        keys->render();
    };
}

/// Notes held in a loop that is silent, behind a second of sound or of silence.
Unit makeSilentLoop() {
    constexpr int frames = 2 * 44100;
    auto keys = std::make_shared<Keys>();
    auto* clip = new CSampleClip;
    clip->setFormat(44100, 32, 1);
    auto* data = static_cast<float*>(std::calloc(frames, sizeof(float)));
    clip->takeData(reinterpret_cast<unsigned char*>(data), frames);
    clip->playAll();
    clip->setLoop(loopForward);
    clip->setLoopStart(frames / 2);
    keys->sampler.clips.add(clip);
    auto* sound = new CWavSound(keys->layer, host());
    sound->addSample(clip);
    keys->add(sound);
    return [keys, data](bool loud) {
        for (int i = 0; loud && i < frames / 2; i++) data[i] = float(std::sin(i * 0.06));
        keys->press(true);
        keys->render();
    };
}

void run(benchmark::State& state, const std::function<Unit()>& make, bool later) {
    const Unit unit = make();
    for (int i = 0; later && i < soundBlocks; i++) unit(true);
    for (int i = 0; i < (later ? laterBlocks : firstBlocks); i++) unit(false);
    for (auto _ : state) unit(false);
}

void compare(const std::string& name, const std::function<Unit()>& make) {
    for (bool later : {false, true})
        benchmark::RegisterBenchmark((name + (later ? ", after sound" : "")).c_str(),
                                     [=](benchmark::State& state) { run(state, make, later); });
}

} // namespace

int main(int argc, char** argv) {
    compare("delay", makeEffect<CDelay>);
    compare("reverb", makeEffect<CReverb>);
    compare("chorus", makeEffect<CChorus>);
    compare("phaser", makeEffect<CPhaser>);
    compare("bit crusher", makeEffect<CBitcrusher>);
    compare("filter", makeEffect<CFilterFX>);
    compare("compressor", makeEffect<CCompressor>);
    compare("clean amplifier", makeAmp<0>);
    compare("crunch amplifier", makeAmp<1>);
    compare("dirty amplifier", makeAmp<2>);
    compare("equaliser band", makeBand);
    compare("notes let go", makeReleased);
    compare("notes died away", makeDecayed);
    compare("samples in a silent loop", makeSilentLoop);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

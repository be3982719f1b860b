#include "base/Denormals.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <fluidsynth.h>
#include <memory>
#include <vector>

// SoundFonts beside the synthesizer fluidsynth, which loads the same files in the same run: whole
// banks into memory, and how many voices of a bank one core renders in real time. Neither has
// reverb or chorus then. The files lie in the system's cache, so that the disk plays no part.

namespace {

constexpr int blockFrames = 1024;
constexpr double rate = 44100.0;
constexpr int voiceCount = CSampler::voiceCount;
constexpr int noteBlocks = 60; ///< length of each note, 1.4 seconds

const char* const paths[] = {"/usr/share/sounds/sf2/TimGM6mb.sf2",
                             "/usr/share/sounds/sf2/FluidR3_GM.sf2"};

CQV* benchHost() {
    static CQV* host = [] {
        flushDenormals();
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(blockFrames);
        return qv;
    }();
    return host;
}

struct FluidFreed {
    void operator()(fluid_settings_t* s) const { delete_fluid_settings(s); }
    void operator()(fluid_synth_t* s) const { delete_fluid_synth(s); }
};

struct Fluid {
    std::unique_ptr<fluid_settings_t, FluidFreed> settings{new_fluid_settings()};
    std::unique_ptr<fluid_synth_t, FluidFreed> synth;

    Fluid() {
        for (int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO})
            fluid_set_log_function(level, nullptr, nullptr);
        fluid_settings_setint(settings.get(), "synth.reverb.active", 0);
        fluid_settings_setint(settings.get(), "synth.chorus.active", 0);
        fluid_settings_setint(settings.get(), "synth.lock-memory", 0);
        fluid_settings_setnum(settings.get(), "synth.sample-rate", rate);
        synth.reset(new_fluid_synth(settings.get()));
    }
    bool load(const char* path) { return fluid_synth_sfload(synth.get(), path, 1) >= 0; }
};

bool load(benchmark::State& state, CSampler& sampler) {
    const bool good = sampler.openSF2(paths[state.range(0)], nullptr);
    if (!good) state.SkipWithError("no SoundFont");
    return good;
}

void loadBank(benchmark::State& state) {
    for (auto _ : state) {
        auto sampler = std::make_unique<CSampler>(benchHost());
        if (!load(state, *sampler)) return;
        state.PauseTiming();
        state.counters["programs"] = sampler->progs.getCount();
        sampler.reset();
        state.ResumeTiming();
    }
}

void fluidLoadBank(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto fluid = std::make_unique<Fluid>();
        state.ResumeTiming();
        if (!fluid->load(paths[state.range(0)])) return state.SkipWithError("no SoundFont");
        state.PauseTiming();
        fluid.reset();
        state.ResumeTiming();
    }
}

void countVoices(benchmark::State& state, double voiceBlocks) {
    state.counters["voices"] =
        benchmark::Counter(voiceBlocks * blockFrames / rate, benchmark::Counter::kIsRate);
}

// Strings, which are looped: `voiceCount` notes, as far as there are voices for them.
constexpr int program = 48; ///< by its number in General MIDI
constexpr int lowestNote = 36;

void selectStrings(CSampler& sampler) {
    for (int i = sampler.progs.getCount() - 1; i >= 0; i--)
        if (sampler.getProgName(i).pos("Strings") == 0) sampler.setProg(i);
}

void playBank(benchmark::State& state) {
    CSampler sampler(benchHost());
    sampler.createChannels();
    sampler.createBuffers(blockFrames);
    if (!load(state, sampler)) return;
    selectStrings(sampler);
    double voiceBlocks = 0;
    int age = noteBlocks;
    for (auto _ : state) {
        if (age++ == noteBlocks) {
            age = 1;
            sampler.allNotesOff();
            for (int note = lowestNote; note < lowestNote + voiceCount; note++) {
                CMIDIBytes on;
                on.data = asData(midiNoteOn, note, 100);
                sampler.doMapping(&on);
            }
        }
        const GraphMark mark(sampler.host);
        sampler.prepare(blockFrames);
        sampler.render(blockFrames, 0);
        for (const CVoice& v : sampler.voices) voiceBlocks += v.live();
        benchmark::DoNotOptimize(sampler.output()->bufL[0]);
    }
    countVoices(state, voiceBlocks);
}

void fluidPlayBank(benchmark::State& state) {
    Fluid fluid;
    fluid_synth_set_polyphony(fluid.synth.get(), voiceCount);
    if (!fluid.load(paths[state.range(0)])) return state.SkipWithError("no SoundFont");
    fluid_synth_program_change(fluid.synth.get(), 0, program);
    std::vector<float> left(blockFrames), right(blockFrames);
    double voiceBlocks = 0;
    int age = noteBlocks;
    for (auto _ : state) {
        if (age++ == noteBlocks) {
            age = 1;
            fluid_synth_all_sounds_off(fluid.synth.get(), 0);
            for (int note = lowestNote; note < lowestNote + voiceCount; note++)
                fluid_synth_noteon(fluid.synth.get(), 0, note, 100);
        }
        fluid_synth_write_float(fluid.synth.get(), blockFrames, left.data(), 0, 1, right.data(), 0,
                                1);
        voiceBlocks += fluid_synth_get_active_voice_count(fluid.synth.get());
        benchmark::DoNotOptimize(left[0]);
    }
    countVoices(state, voiceBlocks);
}

} // namespace

BENCHMARK(loadBank)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(fluidLoadBank)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(playBank)->Arg(0)->Arg(1);
BENCHMARK(fluidPlayBank)->Arg(0)->Arg(1);

BENCHMARK_MAIN();

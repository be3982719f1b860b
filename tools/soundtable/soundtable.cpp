#include "audiofiles/CSample.h"
#include "base/Denormals.h"
#include "data/generalmidi/GeneralMidi.h"
#include "engine/CQV.h"
#include "instruments/FactoryPrograms.h"
#include "tools/soundtable/SoundPicture.h"
#include "tools/soundtable/SoundProbe.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

// sondrava-sounds [--picture FILE.svg] factory|gm|FILE.wav...
//
// Prints a table of what programs sound like. `factory` is the bank of the synthesizer, `gm` the
// General MIDI set; a WAV file
// holds the row of notes of SoundFigures.h, played by anything, one every 2.5 s from its start.

namespace {

using namespace soundtable;

Figures measureProgram(CQV* host, const char* name, const MakeProgram& make) {
    int voices = 0;
    Figures f = measure(name, playProbe(host, make, voices));
    f.voices = voices;
    return f;
}

void measureFactory(CQV* host, std::vector<Figures>& bank) {
    for (int i = 0; i < factoryCount; i++)
        bank.push_back(measureProgram(host, factoryName(i), [&](CQV* root, CSampler* sampler) {
            return buildFactoryProg(root, sampler, i);
        }));
}

void measureGeneralMidi(CQV* host, std::vector<Figures>& bank) {
    for (const gm::Family& family : gm::allFamilies())
        for (const gm::Program& program : family.programs)
            bank.push_back(measureProgram(host, program.name, [&](CQV* root, CSampler* sampler) {
                return gm::buildGmProgram(root, sampler, family, program);
            }));
}

/// The notes of a file; empty if it cannot be read.
std::vector<Sound> readProbe(const char* path) {
    CSample sample;
    if (!sample.open(path) || sample.chs < 1) return {};
    std::vector<Sound> sounds;
    const int frames = int(noteSeconds * double(sample.rate));
    std::vector<float> in(size_t(frames) * size_t(sample.chs));
    for (size_t i = 0; i < probeNotes.size(); i++) {
        sample.readFrames(int64_t(i) * frames, frames, in.data());
        Sound& s = sounds.emplace_back();
        for (size_t k = 0; k < in.size(); k += size_t(sample.chs)) {
            s.left.push_back(in[k]);
            s.right.push_back(in[k + (sample.chs > 1 ? 1 : 0)]);
        }
    }
    return sounds;
}

void printTable(const std::vector<Figures>& bank) {
    std::printf(
        "| Program | chord LUFS | peak dB | DC dB | > 2 kHz | > 5 kHz | velocity dB | colour "
        "dB | range dB | width dB | nearest dB | neighbour | voices |\n");
    std::printf("|---|---|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const Figures& f : bank)
        std::printf(
            "| %s | %.1f | %.1f | %.0f | %.0f | %.0f | %.1f | %.1f | %.1f | %.0f | %.1f | %s | "
            "%d |\n",
            f.name.c_str(), f.chordLufs, f.chordPeak, f.worstDc, f.above2k, f.above5k,
            f.velocitySpan, f.velocityColour, f.range, f.width, f.nearest, f.neighbour.c_str(),
            f.voices);
}

} // namespace

int main(int argc, char** argv) {
    flushDenormals();
    const auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(256);
    host->setRate(probeRate);
    std::vector<Figures> bank;
    const char* picture = nullptr;
    for (int i = 1; i < argc; i++) {
        if (std::strcmp(argv[i], "--picture") == 0 && i + 1 < argc) {
            picture = argv[++i];
        } else if (std::strcmp(argv[i], "factory") == 0) {
            measureFactory(host.get(), bank);
        } else if (std::strcmp(argv[i], "gm") == 0) {
            measureGeneralMidi(host.get(), bank);
        } else if (const auto sounds = readProbe(argv[i]); !sounds.empty()) {
            bank.push_back(measure(std::filesystem::path(argv[i]).stem().string(), sounds));
        } else {
            std::fprintf(stderr, "sondrava-sounds: %s: cannot be read\n", argv[i]);
            return 1;
        }
    }
    findNearest(bank);
    printTable(bank);
    return picture && !writePicture(picture, bank) ? 1 : 0;
}

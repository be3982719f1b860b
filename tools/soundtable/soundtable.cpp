#include "audiofiles/CSample.h"
#include "base/Denormals.h"
#include "common/Loudness.h"
#include "data/generalmidi/GeneralMidi.h"
#include "engine/CQV.h"
#include "instruments/FactoryPrograms.h"
#include "tools/soundtable/MusicProbe.h"
#include "tools/soundtable/PresetProbe.h"
#include "tools/soundtable/SoundPicture.h"
#include "tools/soundtable/SoundProbe.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>

// sondrava-sounds [--picture FILE.svg] factory|gm|racks|kits|arps|tracks|clips|FILE.wav...
// sondrava-sounds --pairs factory|gm|racks|kits|arps|tracks|clips...
// sondrava-sounds --keys factory|gm
// sondrava-sounds --songs FILE.wav...
//
// Prints a table of what programs sound like. `factory` is the bank of the synthesizer, `gm` the
// General MIDI set, the others the presets of those kinds, of which fewer columns count; a WAV file
// holds the row of notes of SoundFigures.h, played by anything, one every 2.5 s from its start.
// `--pairs` prints what is too near to something else instead, `--keys` by how much each C from C2
// to C7 is louder than C4, and the range. Of songs it tells how loud they are, whether they survive
// mono, and what they hold of the highest and of no frequency.

namespace {

using namespace soundtable;

/// A bank that is measured; with `onlyPairs` just the notes that distances are made of.
struct Measured {
    CQV* host;
    bool onlyPairs = false;
    std::vector<Figures> bank = {};

    void add(const char* name, const char* family, const MakeProgram& make);
    void addFactory();
    void addGeneralMidi();
    void addRacks();
    void addKits();
    void addArpeggios();
    void addTracks();
    void addClips();
    bool addFile(const char* path); ///< false if it cannot be read
};

void Measured::add(const char* name, const char* family, const MakeProgram& make) {
    Figures f;
    if (onlyPairs) {
        f.name = name;
        for (const int note : {probeC3, probeC4})
            f.shapes.push_back(shapeOf(playNote(host, make, probeNotes[size_t(note)])));
    } else {
        f = measure(name, playProbe(host, make));
    }
    f.family = family;
    bank.push_back(f);
}

void Measured::addFactory() {
    for (int i = 0; i < factoryCount; i++)
        add(factoryName(i), factoryFamily(i),
            [&](CQV* root, CSampler* sampler) { return buildFactoryProg(root, sampler, i); });
}

void Measured::addGeneralMidi() {
    for (const gm::Family& family : gm::allFamilies())
        for (const gm::Program& program : family.programs) {
            const float level = gm::evenLevel(host, family, program);
            add(program.name, family.name, [&](CQV* root, CSampler* sampler) {
                return gm::buildGmProgram(root, sampler, family, program, level);
            });
        }
}

void Measured::addRacks() {
    for (const presets::RackPreset& preset : presets::rackPresets()) {
        bank.push_back(measureRack(host, preset));
        bank.back().family = preset.use;
    }
}

void Measured::addKits() {
    for (const presets::Kit& kit : presets::kits()) bank.push_back(measureKit(kit));
}

void Measured::addArpeggios() {
    for (const auto& preset : presets::arpPresets()) bank.push_back(measureArpeggio(host, preset));
}

void Measured::addTracks() {
    for (const auto& preset : presets::trackPresets()) bank.push_back(measureTrack(host, preset));
}

void Measured::addClips() {
    for (const auto& clip : presets::drumClips()) bank.push_back(measureClip(clip));
    for (const auto& clip : presets::noteClips()) bank.push_back(measureClip(host, clip));
    for (const auto& loop : presets::soundLoops()) bank.push_back(measureClip(loop));
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

bool Measured::addFile(const char* path) {
    const auto sounds = readProbe(path);
    if (!sounds.empty())
        bank.push_back(measure(std::filesystem::path(path).stem().string(), sounds));
    return !sounds.empty();
}

void printPairs(const std::vector<Figures>& bank) {
    for (const Pair& pair : pairsOf(bank))
        if (pair.tooNear())
            std::printf("%4.1f  %s, %s%s\n", pair.apart, pair.first->name.c_str(),
                        pair.second->name.c_str(), pair.oneFamily() ? "" : "  (other family)");
}

void printTable(const std::vector<Figures>& bank) {
    std::printf(
        "| Program | chord LUFS | peak dB | DC dB | > 2 kHz | > 5 kHz | velocity dB | colour "
        "dB | range dB | width dB | nearest dB | neighbour | voices | "
        "lanes |\n");
    std::printf("|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const Figures& f : bank)
        std::printf(
            "| %s | %.1f | %.1f | %.0f | %.0f | %.0f | %.1f | %.1f | %.1f | %.0f | %.1f | %s | "
            "%d | %.1f |\n",
            f.name.c_str(), f.chordLufs, f.chordPeak, f.worstDc, f.above2k, f.above5k,
            f.velocitySpan, f.velocityColour, f.range, f.width, f.nearest, f.neighbour.c_str(),
            f.voices, f.lanes);
}

void printKeys(const std::vector<Figures>& bank) {
    for (const Figures& f : bank) {
        std::printf("%-20s", f.name.c_str());
        for (const double lufs : f.octaves) std::printf("%7.1f", lufs - f.octaves[probeC4]);
        std::printf("%7.1f\n", f.range);
    }
}

struct Kind {
    const char* word;
    void (Measured::*add)();
};

const Kind* find(std::string_view word) {
    static constexpr Kind kinds[] = {
        {"factory", &Measured::addFactory}, {"gm", &Measured::addGeneralMidi},
        {"racks", &Measured::addRacks},     {"kits", &Measured::addKits},
        {"arps", &Measured::addArpeggios},  {"tracks", &Measured::addTracks},
        {"clips", &Measured::addClips}};
    const auto* found = std::ranges::find(kinds, word, &Kind::word);
    return found == std::end(kinds) ? nullptr : found;
}

/// One line on a finished song.
bool printSong(const char* path) {
    constexpr int step = 4410;
    CSample sample;
    if (!sample.open(path) || sample.chs != 2) return false;
    Loudness meter;
    meter.setRate(double(sample.rate));
    meter.measure(true);
    std::vector<float> in(size_t(step) * 2);
    Sound block{std::vector<float>(step), std::vector<float>(step)};
    double sum = 0.0, power = 1e-20, mid = 1e-20, air = 0.0, all = 1e-20;
    for (int64_t at = 0; at + step <= sample.frames; at += step) {
        sample.readFrames(at, step, in.data());
        for (size_t i = 0; i < size_t(step); i++) {
            const float left = block.left[i] = in[2 * i], right = block.right[i] = in[2 * i + 1];
            sum += double(left) + double(right);
            power += double(left) * double(left) + double(right) * double(right);
            mid += double(left + right) * double(left + right) * 0.5;
        }
        meter.process(block.left.data(), block.right.data(), step);
        meter.follow();
        const auto bins = powerSpectrum(block, 0, 4096);
        for (size_t i = 1; i < bins.size(); i++) {
            all += bins[i];
            if (double(i) * double(sample.rate) / 4096 > 10000.0) air += bins[i];
        }
    }
    const double mean = sum / (2.0 * double(sample.frames)),
                 square = power / (2.0 * double(sample.frames));
    const Loudness::Levels told = meter.levels();
    std::printf(
        "| %s | %.1f LUFS | %.1f dBTP | mono %.1f dB | offset %.0f dB | above 10 kHz %.0f dB |\n",
        std::filesystem::path(path).stem().c_str(), told.integrated, told.truePeak,
        10.0 * std::log10(mid / power), 10.0 * std::log10(mean * mean / square + 1e-20),
        10.0 * std::log10(air / all));
    return true;
}

} // namespace

int main(int argc, char** argv) {
    flushDenormals();
    const auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(256);
    host->setRate(probeRate);
    Measured measured{host.get()};
    const char* picture = nullptr;
    bool keys = false;
    const bool songs = argc > 1 && std::strcmp(argv[1], "--songs") == 0;
    for (int i = 2; songs && i < argc; i++)
        if (!printSong(argv[i])) return 1;
    if (songs) return 0;
    for (int i = 1; i < argc; i++) {
        const std::string_view word = argv[i];
        if (word == "--picture" && i + 1 < argc) {
            picture = argv[++i];
        } else if (word == "--pairs") {
            measured.onlyPairs = true;
        } else if (word == "--keys") {
            keys = true;
        } else if (const auto* kind = find(word)) {
            (measured.*kind->add)();
        } else if (!measured.addFile(argv[i])) {
            std::fprintf(stderr, "sondrava-sounds: %s: cannot be read\n", argv[i]);
            return 1;
        }
    }
    if (measured.onlyPairs) {
        printPairs(measured.bank);
        return 0;
    }
    if (keys) {
        printKeys(measured.bank);
        return 0;
    }
    findNearest(measured.bank);
    printTable(measured.bank);
    return picture && !writePicture(picture, measured.bank) ? 1 : 0;
}

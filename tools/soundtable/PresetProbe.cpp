#include "tools/soundtable/PresetProbe.h"

#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace soundtable {

namespace {

constexpr size_t window = 16384;
constexpr double sliceSeconds = double(window) / probeRate;
constexpr double wholeSeconds = sliceSeconds * sliceCount;
constexpr double kitSeconds = 2.0, strokeSeconds = heldSeconds / sliceCount;

size_t frames(double seconds) {
    return size_t(seconds * probeRate);
}

Sound silence(double seconds) {
    Sound s;
    s.left.assign(frames(seconds), 0.0f);
    s.right = s.left;
    return s;
}

void mix(Sound& to, const std::vector<float>& from, double at, float left, float right) {
    for (size_t i = 0; i < from.size() && frames(at) + i < to.left.size(); i++) {
        to.left[frames(at) + i] += left * from[i];
        to.right[frames(at) + i] += right * from[i];
    }
}

/// Saws of a chord that is held, with an edge at its start.
std::vector<float> chord(double seconds) {
    std::vector<float> out(frames(seconds));
    constexpr double fade = 0.01;
    for (const double hz : {65.4, 130.8, 196.0, 311.1, 466.2})
        for (size_t i = 0; i < out.size(); i++) {
            const double t = double(i) / probeRate, turn = t * hz;
            const double level = 0.6 + 0.4 * std::exp(-t / 0.06);
            out[i] += float(0.1 * level * std::clamp((seconds - t) / fade, 0.0, 1.0) *
                            (2.0 * (turn - std::floor(turn)) - 1.0));
        }
    return out;
}

Sound strokesOf(const presets::Kit& kit, size_t first, size_t count) {
    Sound s = silence(kitSeconds);
    for (size_t i = 0; i < count && first + i < kit.voices.size(); i++) {
        const presets::DrumVoice& voice = kit.voices[first + i];
        const float level = voice.place.volume * voice.place.volume, pan = voice.place.pan;
        mix(s, presets::synthesize(voice), double(i) * strokeSeconds,
            level * (1.0f - std::max(0.0f, pan)), level * (1.0f + std::min(0.0f, pan)));
    }
    return s;
}

Figures figuresOf(const char* name, const Sound& s) {
    Figures f;
    f.name = name;
    f.chordLufs = loudnessOf(s);
    f.chordPeak = peakOf(s);
    f.width = widthOf(s);
    return f;
}

} // namespace

Sound probeOf(bool beat) {
    constexpr float loud = 0.8f, soft = 0.05f;
    constexpr int parts = 2, strokesOfSlice = 2;
    Sound s = silence(wholeSeconds);
    const std::vector<float> held = chord(parts * sliceSeconds);
    for (int part = 0; part < parts; part++) {
        const float level = part ? soft : loud;
        const double from = part * parts * sliceSeconds;
        if (!beat) mix(s, held, from, level, level);
        for (int i = 0; beat && i < parts * strokesOfSlice; i++) {
            constexpr size_t strokes[] = {0, 3, 1, 3};
            const auto& voice = presets::kits().front().voices[strokes[i]];
            mix(s, presets::synthesize(voice), from + i * sliceSeconds / strokesOfSlice, level,
                level);
        }
    }
    return s;
}

Sound playRack(CQV* host, const presets::RackPreset& preset, const Sound& in) {
    const GraphHold hold(host);
    CEffect rack(host);
    rack.createIO();
    rack.createBuffers(host->frames);
    presets::fillRack(&rack, preset);
    rack.setRate(double(probeRate));
    rack.restart();
    const size_t block = size_t(host->frames);
    Sound out;
    for (size_t at = 0; at + block <= in.left.size(); at += block) {
        rack.prepare(int(block));
        std::copy_n(&in.left[at], block, rack.input()->bufL);
        std::copy_n(&in.right[at], block, rack.input()->bufR);
        rack.subProcess(int(block), 0);
        const COutputChannel* strip = rack.output();
        out.left.insert(out.left.end(), strip->bufL, strip->bufL + block);
        out.right.insert(out.right.end(), strip->bufR, strip->bufR + block);
    }
    return out;
}

Figures measureRack(CQV* host, const presets::RackPreset& preset) {
    const Sound held = playRack(host, preset, probeOf(false));
    Figures f = figuresOf(preset.name, held);
    f.onlyHeard = true;
    for (const Sound& s : {playRack(host, preset, probeOf(true)), held})
        for (const Shape& shape : shapesOfWidth(s, {0.0, wholeSeconds, window}))
            f.shapes.push_back(shape);
    return f;
}

Figures measureKit(const presets::Kit& kit) {
    constexpr size_t standard = 5;
    const Sound rest = strokesOf(kit, standard, kit.voices.size());
    Figures f = figuresOf(kit.name, rest);
    f.shapes = {shapeOf(strokesOf(kit, 0, standard)), shapeOf(rest)};
    return f;
}

} // namespace soundtable

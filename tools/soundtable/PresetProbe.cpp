#include "tools/soundtable/PresetProbe.h"

#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace soundtable {

namespace {

constexpr double wholeSeconds = 2.0;
constexpr double strokeSeconds = heldSeconds / sliceCount;

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

/// Saws of a chord that die away.
std::vector<float> chord(double seconds) {
    std::vector<float> out(frames(seconds));
    for (const double hz : {130.8, 196.0, 311.1, 466.2})
        for (size_t i = 0; i < out.size(); i++) {
            const double t = double(i) / probeRate, turn = t * hz;
            out[i] += float(0.12 * std::exp(-t / 0.12) * (2.0 * (turn - std::floor(turn)) - 1.0));
        }
    return out;
}

Sound strokesOf(const presets::Kit& kit, size_t first, size_t count) {
    Sound s = silence(wholeSeconds);
    for (size_t i = 0; i < count && first + i < kit.voices.size(); i++) {
        const presets::DrumVoice& voice = kit.voices[first + i];
        const float level = voice.place.volume * voice.place.volume, pan = voice.place.pan;
        mix(s, presets::synthesize(voice), double(i) * strokeSeconds,
            level * (1.0f - std::max(0.0f, pan)), level * (1.0f + std::min(0.0f, pan)));
    }
    return s;
}

Figures figuresOf(const char* name, const Sound& first, const Sound& second) {
    Figures f;
    f.name = name;
    f.chordLufs = loudnessOf(second);
    f.chordPeak = peakOf(second);
    f.width = widthOf(second);
    f.low = shapeOf(first);
    f.middle = shapeOf(second);
    return f;
}

} // namespace

Sound probeOf(bool beat) {
    constexpr float loud = 0.8f, soft = 0.06f;
    Sound s = silence(wholeSeconds);
    if (beat) {
        const presets::Kit& kit = presets::kits().front();
        for (const size_t i : {0, 3, 1, 3})
            mix(s, presets::synthesize(kit.voices[i]), double(i) * strokeSeconds, loud, loud);
        return s;
    }
    const std::vector<float> stroke = chord(2 * strokeSeconds);
    mix(s, stroke, 0.0, loud, loud * 0.8f);
    mix(s, stroke, 2 * strokeSeconds, soft, soft);
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
    return figuresOf(preset.name, playRack(host, preset, probeOf(true)),
                     playRack(host, preset, probeOf(false)));
}

Figures measureKit(const presets::Kit& kit) {
    constexpr size_t standard = 5;
    return figuresOf(kit.name, strokesOf(kit, 0, standard),
                     strokesOf(kit, standard, kit.voices.size()));
}

} // namespace soundtable

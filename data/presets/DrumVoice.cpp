#include "data/presets/Kits.h"

#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "instruments/DrumPieces.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace presets {

namespace {

using namespace drumsynth;

/// Partials without harmony, evenly strewn, the high ones dying sooner.
Buffer metalOf(const DrumVoice& v, int frames) {
    constexpr int count = 64;
    Noise dice(20270u);
    std::vector<Partial> field;
    for (int i = 0; i < count; i++) {
        const double at = (i + dice.between(0.0, 1.0)) / count;
        const double hz = v.metal.low * std::pow(v.metal.high / v.metal.low, at);
        const double tau =
            v.metal.tau * std::pow(v.metal.low / hz, 0.5) * 1.6 * dice.between(0.6, 1.4);
        field.push_back({hz, dice.between(0.3, 1.0), tau, dice.between(0.0, 2.0 * pi)});
    }
    Buffer out(static_cast<size_t>(frames));
    addPartials(out, field);
    const double even = 3.0 / count;
    for (double& x : out) x *= even;
    return out;
}

/// The noise of one or several strokes, the last of which rings.
double strokes(const DrumVoice& v, double t) {
    constexpr double apart = 0.0105, brief = 0.0045;
    double sum = 0.0;
    for (int i = 0; i < v.noise.hands; i++) {
        const double since = t - i * apart;
        const bool last = i == v.noise.hands - 1;
        if (since >= 0.0)
            sum += rise(since, v.noise.attack) * fall(since, last ? v.noise.tau : brief);
    }
    return sum;
}

} // namespace

std::vector<float> synthesize(const DrumVoice& v) {
    constexpr double onset = 0.0008, lowest = 25.0, fadeShare = 0.2, peak = 0.85;
    const int frames = int(v.seconds * rate);
    const Buffer metal =
        v.metal.level > 0.0 ? metalOf(v, frames) : Buffer(static_cast<size_t>(frames));
    Noise noise(4711u);
    Filter band(v.noise.hz, v.noise.q), air(std::min(v.noise.hz * 1.5, 12000.0), 0.7);
    const Buffer raw = render(frames, [&, i = size_t(0)](double t) mutable {
        const double white = noise.next();
        band.next(white);
        air.next(white);
        const double ground =
            sweptSine(t, v.body.hz, v.body.drop, v.body.dropTau) * fall(t, v.body.tau);
        const double above =
            v.body.second *
            sweptSine(t, v.body.hz * v.body.ratio, v.body.drop * v.body.ratio, v.body.dropTau) *
            fall(t, v.body.tau * 0.7);
        double x = v.body.level * rise(t, onset) * (ground + above) +
                   strokes(v, t) * (v.noise.level * band.band + v.noise.hiss * air.high) +
                   v.metal.level * rise(t, onset) * metal[i++];
        if (v.drive > 0.0) x = std::tanh(x * v.drive) / std::tanh(v.drive);
        return v.coarse > 0 ? std::round(x * v.coarse) / v.coarse : x;
    });
    return finish(raw, lowest, v.seconds * fadeShare, peak);
}

void takeKit(CSeq* seq, CTrack* track, const Kit& kit) {
    CLayer* layer = track->drumLayer();
    track->synthProg->id = kit.name;
    for (const DrumVoice& v : kit.voices) {
        auto* clip = new CSampleClip;
        takeValues(clip, CStr(v.name) + ".wav", synthesize(v));
        clip->playAll();
        clip->peakfile();
        seq->drumClips.add(clip);
        auto* sound = new CDrumSound(layer, seq->host, seq);
        sound->addSample(clip);
        sound->volume = v.place.volume;
        sound->pan = v.place.pan;
        sound->group = static_cast<unsigned char>(v.place.group);
        layer->addSound(sound);
        track->openHeight = track->openHeight + sound->getHeight();
    }
}

} // namespace presets

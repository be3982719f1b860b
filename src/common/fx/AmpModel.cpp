#include "common/fx/AmpModel.h"

#include "base/Numbers.h"
#include "common/Silence.h"
#include "common/fx/amp/AmpKnobs.h"
#include "common/fx/amp/Oversampler.h"

#include <algorithm>
#include <numbers>

namespace {

constexpr int piece = AmpKnobs::piece;
static_assert(piece <= Oversampler::maxFrames);
constexpr double loudest = 100.0;       // beyond any signal; the tubes are in full bend long before
constexpr double eightTimesBelow = 7e4; // Hz; from here on, four times the rate is enough

/// High-passed part of the signal, by one pole: x - y with y += g (x - y).
struct Highs {
    double g = 1.0;
    Sides low = {};

    void set(double hz, double rate) {
        g = 1.0 - std::exp(-2.0 * std::numbers::pi * hz / rate);
        low = Sides{};
    }
    Sides next(const Sides& x) {
        low += g * (x - low);
        return x - low;
    }
};

class Amp {
public:
    AmpKnobs knobs;

    explicit Amp(const AmpVoicing& parts) : knobs(parts), voicing(parts) { setRate(44100.0); }

    const AmpVoicing& parts() const { return voicing; }
    void setRate(double hz);
    void clear();
    void process(const float* const* in, float* const* out, int channels, int frames);
    bool rests() const { return quiet && knobs.still(); }

private:
    void pass(float* const* out, int channels, int frames);
    void read(const float* const* in, int channels, int at, int count, Sides* x);
    void amplify(Sides* x, int count);
    void runTone(Sides* x, int count);
    void runPower(Sides* x, int count);
    void settle();

    bool isQuiet() const;

    const AmpVoicing& voicing;
    int inPiece = 0;    ///< frames since the piece began
    bool quiet = false; ///< nothing was left of the past when the last one ended
    Highs input, shelf;
    Oversampler oversampler;
    GainStage stages[AmpVoicing::maxStages];
    ToneStack tone;
    Cabinet cabinet;
};

void Amp::setRate(double hz) {
    const int factor = hz < eightTimesBelow ? 8 : 4;
    oversampler.setFactor(factor);
    for (int i = 0; i < voicing.stages; i++) stages[i].set(voicing.stage[i], hz * factor);
    input.set(voicing.inputHz, hz);
    shelf.set(voicing.shelfHz, hz);
    cabinet.set(voicing.cabinet, hz);
    knobs.setRate(hz);
    clear();
}

void Amp::clear() {
    inPiece = 0;
    quiet = false;
    knobs.jump();
    input.low = shelf.low = Sides{};
    oversampler.clear();
    for (GainStage& s : stages) s.clear();
    tone.clear();
    cabinet.clear();
}

void Amp::process(const float* const* in, float* const* out, int channels, int frames) {
    if (rests() && isSilent(in[0], in[channels - 1], frames)) return pass(out, channels, frames);
    quiet = false;
    for (int at = 0; at < frames;) {
        if (inPiece == 0) knobs.startPiece();
        const int count = std::min(piece - inPiece, frames - at);
        Sides x[piece];
        read(in, channels, at, count, x);
        if (voicing.toneFirst) runTone(x, count);
        amplify(x, count);
        if (!voicing.toneFirst) runTone(x, count);
        runPower(x, count);
        for (int c = 0; c < channels; c++)
            for (int i = 0; i < count; i++) out[c][at + i] = float(x[i][c]);
        inPiece += count;
        at += count;
        if (inPiece < piece) continue;
        inPiece = 0;
        settle();
    }
}

void Amp::pass(float* const* out, int channels, int frames) {
    for (int c = 0; c < channels; c++) std::fill_n(out[c], frames, 0.0f);
    inPiece = (inPiece + frames) % piece;
}

/// At the end of a piece: what has died away goes.
void Amp::settle() {
    cutTiny(input.low);
    cutTiny(shelf.low);
    for (int i = 0; i < voicing.stages; i++) stages[i].settle();
    tone.settle();
    cabinet.settle();
    quiet = isQuiet();
}

bool Amp::isQuiet() const {
    const auto dead = [](const GainStage& s) { return s.quiet(); };
    return allZero(input.low, shelf.low) && tone.quiet() && cabinet.quiet() &&
           std::all_of(stages, stages + voicing.stages, dead) && oversampler.quiet();
}

double tame(float x) {
    return std::isfinite(x) ? fLimit(double(x), -loudest, loudest) : 0.0;
}

void Amp::read(const float* const* in, int channels, int at, int count, Sides* x) {
    const float *left = in[0] + at, *right = in[channels - 1] + at;
    for (int i = 0; i < count; i++) x[i] = input.next(Sides{tame(left[i]), tame(right[i])});
}

void Amp::amplify(Sides* x, int count) {
    const double gain = knobs.start.drive, step = knobs.step.drive;
    for (int i = 0; i < count; i++) x[i] *= gain + step * (inPiece + i + 1);
    Floats8 over[piece * Oversampler::maxGroups];
    oversampler.up(x, count, over);
    for (int i = 0; i < voicing.stages; i++)
        stages[i].process(over, count * oversampler.getGroups());
    oversampler.down(over, count, x);
}

void Amp::runTone(Sides* x, int count) {
    tone.process(x, count, knobs.start.tone, knobs.step.tone, inPiece + 1);
}

/// The power stage, which does not bend, and the loudspeaker.
void Amp::runPower(Sides* x, int count) {
    const AmpSettings &start = knobs.start, &step = knobs.step;
    for (int i = 0; i < count; i++) {
        const int n = inPiece + i + 1;
        x[i] += (start.shelf + step.shelf * n) * shelf.next(x[i]);
        x[i] *= start.volume + step.volume * n;
    }
    cabinet.process(x, count);
}

Amp* asAmp(void* handle) {
    return static_cast<Amp*>(handle);
}

/// The knob behind a parameter, or null.
Shared<float>* findKnob(void* handle, int index) {
    Amp* amp = asAmp(handle);
    if (!amp || index < 0 || index >= amp->parts().parameters) return nullptr;
    return &amp->knobs.targets[amp->parts().knobs[index]];
}

} // namespace

void* Overloud_create(int type) {
    return type >= 0 && type < ampTypes ? new Amp(ampVoicings[type]) : nullptr;
}

void Overloud_destroy(void* amp) {
    delete asAmp(amp);
}

void Overloud_process(void* amp, const float** in, float** out, int channels, int frames) {
    if (amp && (channels == 1 || channels == 2)) asAmp(amp)->process(in, out, channels, frames);
}

bool Overloud_rests(const void* amp) {
    return amp && static_cast<const Amp*>(amp)->rests();
}

void Overloud_setfrequency(void* amp, float hz) {
    if (amp) asAmp(amp)->setRate(fLimit(double(hz), 8000.0, 768000.0));
}

void Overloud_setparameter(void* amp, int index, float value) {
    Shared<float>* knob = findKnob(amp, index);
    if (knob && std::isfinite(value)) *knob = fLimit(value, 0.0f, 1.0f);
}

float Overloud_getparameter(void* amp, int index) {
    const Shared<float>* knob = findKnob(amp, index);
    return knob ? float(*knob) : 0.0f;
}

void Overloud_reset(void* amp) {
    if (amp) asAmp(amp)->clear();
}

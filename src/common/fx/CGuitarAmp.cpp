#include "common/fx/CGuitarAmp.h"

#include "base/Numbers.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int piece = 64; // frames of a fade at a time
constexpr double fadeSeconds = 0.01;

void gate(float* x, float threshold, long frames) {
    for (long i = 0; i < frames; i++) x[i] = std::fabs(x[i]) > threshold ? x[i] : 0.0f;
}

bool isQuiet(const float* x, long frames) {
    constexpr float level = 1e-6f;
    return std::all_of(x, x + frames, [](float v) { return std::fabs(v) < level; });
}

} // namespace

CGuitarAmp::CGuitarAmp(float hz, int frames) : CFX(hz, frames) {
    id = "Guitar Amp";
    type = fxGuitarAmp;
    for (int i = 0; i < ampTypes; i++) amps[i] = Overloud_create(i);
    CGuitarAmp::setRate(hz);
}

CGuitarAmp::~CGuitarAmp() {
    for (void* amp : amps) Overloud_destroy(amp);
}

void CGuitarAmp::setRate(float hz) {
    CFX::setRate(hz);
    for (void* amp : amps) Overloud_setfrequency(amp, hz);
    playing = -1;
    fadeLeft = 0;
}

void CGuitarAmp::clear() {
    for (void* amp : amps) Overloud_reset(amp);
    playing = -1;
    fadeLeft = 0;
}

void CGuitarAmp::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    const float level = threshold;
    gate(inL, level, frames);
    gate(inR, level, frames);
    const int wanted = channel;
    if (wanted < 0 || wanted >= ampTypes) return;
    if (wanted != playing && fadeLeft == 0) changeChannel(wanted);
    quiet = isQuiet(inL, frames) && isQuiet(inR, frames);
    for (long done = 0; done < frames;) {
        const float* in[] = {inL + done, inR + done};
        float* out[] = {outL + done, outR + done};
        const long most =
            fadeLeft > 0 ? std::min(piece, fadeLeft) : std::numeric_limits<int>::max();
        const int count = int(std::min(most, frames - done));
        if (fadeLeft > 0)
            fade(in, out, count);
        else
            Overloud_process(amps[playing], in, out, 2, count);
        done += count;
    }
    quiet = quiet && isQuiet(outL, frames) && isQuiet(outR, frames);
}

bool CGuitarAmp::rests() const {
    return fadeLeft == 0 && playing >= 0 && playing == channel && Overloud_rests(amps[playing]);
}

void CGuitarAmp::start() {
    if (quiet) clear();
}

/// The new one knows nothing of what was played when it was last heard.
void CGuitarAmp::changeChannel(int to) {
    if (playing >= 0) {
        Overloud_reset(amps[to]);
        fadeLeft = fadeFrames();
    }
    leaving = playing;
    playing = to;
}

int CGuitarAmp::fadeFrames() const {
    return std::max(1, asInt(double(rate) * fadeSeconds));
}

/// At most `piece` frames.
void CGuitarAmp::fade(const float** in, float** out, int frames) {
    float buffers[2][piece];
    float* old[] = {buffers[0], buffers[1]};
    Overloud_process(amps[leaving], in, old, 2, frames);
    Overloud_process(amps[playing], in, out, 2, frames);
    const float step = 1.0f / float(fadeFrames());
    for (int i = 0; i < frames; i++, fadeLeft--)
        for (int c = 0; c < 2; c++) out[c][i] += (old[c][i] - out[c][i]) * (step * float(fadeLeft));
}

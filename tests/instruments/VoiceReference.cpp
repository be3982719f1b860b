#include "VoiceReference.h"

#include <algorithm>
#include <cmath>

// Settings are floats, and every one of them is meant to become a double here.
#pragma GCC diagnostic ignored "-Wdouble-promotion"

namespace {

const double pi = std::acos(-1.0);

double roundUp(double v) {
    return std::floor(v + 0.5);
}

double curved(double from, double to, double t, double c) {
    const double k = 1 + 63 * c * c;
    const double a = c >= 0 ? 1 / k : k;
    if (k == 1) return from + (to - from) * t;
    const double u = 1 - (a / ((1 - a) * t + a) - a) / (1 - a);
    return from + (to - from) * u;
}

double lfoTable(int wave, int i) {
    switch (wave) {
    case 1:
        if (i < 16384) return i / 16384.0;
        return i >= 49152 ? (i - 49152) / 16384.0 - 1 : 1 - (i - 16384) * 2 / 32768.0;
    case 2:
        return i < 32768 ? i / 32768.0 : (i - 32768) / 32768.0 - 1;
    case 3:
        return i <= 32767 ? 1 : -1;
    default:
        return std::sin(2 * pi * i / 65536);
    }
}

} // namespace

VoiceReference::VoiceReference(CSound* s, double engineRate, int key, int vel, double tempo)
    : sound(s), rate(engineRate), velocity(vel / 127.0), bpm(tempo), note(key), tap(s->filter) {
    if (s->type == 2) {
        osc = static_cast<COSCSound*>(s);
        car[1].phase = osc->phase * 0.5;
        mod[1].phase = osc->phase * 0.5 + osc->phase2 * 0.5;
    } else {
        wav = static_cast<CWavSound*>(s);
        pos = wav->clips[0]->start;
    }
    for (int i = 0; i < 6; i++) {
        const CEnv& e = *s->envelope[i];
        env[i].from = env[i].value = e.initial;
        env[i].curve = e.ac;
        env[i].remaining = env[i].total = stageLength(e.attack, e.maxTime);
    }
    for (int i = 0; i < 4; i++) lfo[i].delay = int(roundUp(s->lfo[i]->delay * rate * 0.001));
}

int VoiceReference::stageLength(double setting, int maxTime) const {
    return int(roundUp(setting * setting * maxTime * rate * 0.001));
}

void VoiceReference::release() {
    for (int i = 0; i < 6; i++) {
        const CEnv& e = *sound->envelope[i];
        env[i].active = i == 0 || e.release != 1.0f;
        env[i].stage = 3;
        env[i].from = env[i].value;
        env[i].to = 0;
        env[i].remaining = env[i].total = stageLength(e.release, e.maxTime);
    }
}

void VoiceReference::nextStage(int i) {
    const CEnv& e = *sound->envelope[i];
    Stage& s = env[i];
    s.value = s.to;
    if (s.stage == 0) {
        s.stage = 1;
        s.from = 1;
        s.to = e.sustain;
        s.curve = e.dc;
        s.remaining = s.total = stageLength(e.decay, e.maxTime);
    } else {
        s.active = false;
        s.stage = s.stage == 1 ? 2 : 4;
        s.curve = 0;
    }
}

void VoiceReference::loadCur() {
    cur[0] = 0;
    cur[1] = bend * sound->bendRange;
    cur[2] = sound->volume * (osc ? 0.6 : 1.0);
    cur[3] = sound->pan;
    cur[4] = sound->cutoff;
    cur[5] = sound->q;
    if (!osc) return;
    cur[6] = osc->feed1;
    cur[7] = osc->feed2;
    cur[8] = osc->phaseMod;
    cur[9] = double(osc->detune) * osc->detune * 0.5;
}

int VoiceReference::cutSlice(int n) {
    for (const Stage& s : env)
        if (s.active) n = std::min(n, s.remaining);
    for (int i = 0; i < 4; i++) {
        const CLFO& l = *sound->lfo[i];
        const double hz = l.sync ? double(l.div) / l.mul * (bpm / 60) : double(l.rate);
        lfo[i].incr = hz / rate;
        lfo[i].ran = lfo[i].delay == 0;
        if (!lfo[i].ran) {
            n = std::min(n, lfo[i].delay);
            continue;
        }
        const double rest = (1 - lfo[i].phase) / lfo[i].incr;
        lfo[i].toWrap = std::max(0, int(osc ? roundUp(rest) : rest));
        n = std::min(n, lfo[i].toWrap);
    }
    return n;
}

int VoiceReference::cutToClip(int n, int& ending) {
    ending = 0;
    if (!wav) return n;
    const CSampleClip& clip = *wav->clips[0];
    if (int(pos + n * speed) <= clip.end) return n;
    ending = clip.loop == 1 && clip.loopStart < clip.end ? 2 : 1;
    return std::max(0, int((clip.end - pos) / speed));
}

void VoiceReference::apply(const CMod& m, double source) {
    for (const auto& p : m.params) {
        const int t = p.index;
        if (t == 1 || t == 3)
            cur[t] += p.amount * (2 * source - 1);
        else
            cur[t] *= 1 + p.amount * (source - 1);
    }
}

void VoiceReference::modulate(int n) {
    for (int i = 0; i < 6; i++) {
        Stage& s = env[i];
        if (s.active && s.total > 0)
            s.value = curved(s.from, s.to, double(s.total - s.remaining + n) / s.total, s.curve);
        apply(*sound->envelope[i], s.value);
    }
    for (int i = 0; i < 4; i++) {
        Lfo& l = lfo[i];
        if (!l.ran) {
            l.value = 0.5;
            l.delay -= n;
        } else {
            const int index = int((long long)(roundUp(l.phase * 65535)) & 0xFFFF);
            l.value = lfoTable(sound->lfo[i]->wave, index) * 0.5 + 0.5;
            l.phase += l.incr * n;
        }
        apply(*sound->lfo[i], l.value);
    }
    apply(*sound->vel, velocity);
}

/// False when the amp envelope has ended with this slice.
bool VoiceReference::advance(int n) {
    for (int i = 0; i < 6; i++) {
        if (!env[i].active) continue;
        env[i].remaining -= n;
        if (env[i].remaining == 0) nextStage(i);
        if (i == 0 && env[0].stage == 4) return false;
    }
    for (Lfo& l : lfo) {
        if (!l.ran) continue;
        l.toWrap -= n;
        if (l.toWrap == 0) l.phase -= 1;
    }
    return true;
}

VoiceReference::Line VoiceReference::ramp(double& value, double target, int n) const {
    const double limit = 1 / (rate * 6.2831855 * 0.001);
    if (first) value = target;
    const Line line{value, std::clamp((target - value) / n, -limit, limit)};
    value += n * line.step;
    return line;
}

double VoiceReference::sine(double x) {
    const double steps = x * 65535.0;
    const int index = std::fabs(steps) < 2147483648.0 ? int(steps) & 0xFFFF : 0;
    return std::sin(2 * pi * index / 65536);
}

double VoiceReference::oscillate(int side, int i, const Line& f1, const Line& f2, const Line& pm) {
    const double apart = side == 0 ? cur[9] : -cur[9];
    const double p = cur[1] + note - 9 + apart + osc->coarse + osc->fine;
    const double m = sine((f2.at + i * f2.step) * 0.2 * mod[side].last + mod[side].phase);
    mod[side].last = m;
    mod[side].phase += std::exp((p + osc->coarse2) / 12 * std::log(2.0)) * 13.75 / rate;
    const double shaped = (osc->modRing - 1.0) * m + osc->modRing * m * m;
    const double c = sine(osc->pmMul * (pm.at + i * pm.step) * shaped +
                          (f1.at + i * f1.step) * 0.2 * car[side].last + car[side].phase);
    car[side].last = (osc->oscRing - 1.0) * c + osc->oscRing * c * c;
    car[side].phase += std::exp(p / 12 * std::log(2.0)) * 13.75 / rate;
    return car[side].last;
}

double VoiceReference::readClip(int channel, double x) const {
    const CSampleClip& clip = *wav->clips[0];
    const int n = int(x);
    const double t = x - n;
    double y[4];
    for (int k = 0; k < 4; k++) {
        const int frame = n - 1 + k;
        float values[2] = {};
        if (frame >= 0 && frame < clip.frames) clip.readFrames(frame, 1, values);
        y[k] = double(values[clip.chs == 2 ? channel : 0]);
    }
    const double c3 = (y[1] - y[2]) * 1.5 + (y[0] - y[3]) * -0.5;
    const double c2 = 2 * y[2] + y[0] + (5 * y[1] + y[3]) * -0.5;
    return ((c3 * t + c2) * t + (y[2] - y[0]) * 0.5) * t + y[1];
}

void VoiceReference::renderSlice(int n) {
    const double pan = std::clamp(cur[3], -1.0, 1.0), v = cur[2] * cur[2];
    const double targets[2] = {pan >= 0 ? v * (1 - pan) : v * (pan * -0.5 + 1),
                               pan >= 0 ? v * (pan * 0.5 + 1) : v * (pan + 1)};
    const Line gains[2] = {ramp(gain[0], targets[0], n), ramp(gain[1], targets[1], n)};
    const double cutoff = std::clamp(cur[4], 0.0, 1.0);
    const Line cut = ramp(cut2, cutoff * cutoff, n);
    const double q = std::min(cur[5], 0.97);
    const Line f1 = ramp(feed1Sq, cur[6] * cur[6], n), f2 = ramp(feed2Sq, cur[7] * cur[7], n);
    const Line pm = ramp(phaseModSq, cur[8] * cur[8], n);
    if (wav) {
        const CSampleClip& clip = *wav->clips[0];
        speed = std::exp((cur[1] + (note - clip.orgKey) + sound->coarse + sound->fine) / 12 *
                         std::log(2.0)) *
                float(clip.rate / float(rate));
    }
    for (int i = 0; i < n; i++) {
        double in[2];
        if (osc) {
            const double l = oscillate(0, i, f1, f2, pm);
            const double r = osc->oscInv * oscillate(1, i, f1, f2, pm);
            const double w = osc->width;
            in[0] = (w * l + l + (1 - w) * r) * 0.5;
            in[1] = ((1 - w) * l + r + w * r) * 0.5;
        } else {
            in[0] = readClip(0, pos + i * speed);
            in[1] = readClip(1, pos + i * speed);
        }
        for (int side = 0; side < 2; side++) {
            Filter& s = filters[side];
            const double f = cut.at + i * cut.step;
            s.low += f * s.band;
            s.high = in[side] - s.low - (1 - q) * s.band;
            s.band += f * s.high;
            double y = tap == 0 ? s.low : tap == 1 ? s.band : s.high;
            if (osc && osc->dist) y = std::tanh(y);
            (side == 0 ? left : right).push_back(y * (gains[side].at + i * gains[side].step));
        }
    }
    pos += n * speed;
    first = false;
}

void VoiceReference::render(int frames) {
    const int sliceMax = int(roundUp(rate * 0.001));
    const size_t end = left.size() + size_t(frames);
    if (tail > 0)
        ended = (tail -= frames) <= 0;
    else
        for (int rest = frames; rest > 0 && !ended;) {
            loadCur();
            int ending = 0;
            const int n = cutToClip(cutSlice(std::min(rest, sliceMax)), ending);
            modulate(n);
            if (n > 0) renderSlice(n);
            rest -= n;
            if (!advance(n)) tail = int(rate * 0.01);
            if (ending == 1) ended = true;
            if (ending == 2) pos = wav->clips[0]->loopStart;
        }
    left.resize(end);
    right.resize(end);
}

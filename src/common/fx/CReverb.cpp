#include "common/fx/CReverb.h"

#include "base/Clones.h"
#include "base/Floats4.h"
#include "base/Numbers.h"
#include "common/WaveTables.h"

#include <algorithm>
#include <numbers>

namespace {

constexpr int chunk = MSVRAP1ModDelayLine::maxTaps; // frames at a time, fewer than any delay
constexpr int lines = CReverb::lineCount, modCount = CReverb::modLineCount;
constexpr int lineLengths[lines] = {601,  691,  773,  839,  919,  997,
                                    1061, 1093, 1129, 1151, 1171, 1187};
constexpr int modulation = 6; // samples, to either side
constexpr double modulationHz = 2.0;
constexpr int phaseStep = 45;           // degrees between the modulations of two lines
constexpr double decayRatio = 2.4;      // how much faster the top decays
constexpr float mixGain = -0.16666667f; // -2 / 12: the reflection that keeps the energy
constexpr float outGain = 0.167f;
constexpr double silentPower = 1e-10; // sum of squares between two settlings: silence

constexpr int four = 4; // lines that are filtered in step, and frames that are turned at a time
constexpr int groups = lines / four;
constexpr int sweptGroups = (modCount + four - 1) / four;

/// Turns four frames of four lines, of which one stands `chunk` floats behind the other.
[[gnu::always_inline]] inline void loadTurned(const float* rows, Floats4 (&r)[four]) {
    for (int i = 0; i < four; i++) r[i] = loadFloats(rows + std::ptrdiff_t(i) * chunk);
    transpose(r[0], r[1], r[2], r[3]);
}

/// Interpolates the modulated taps and filters all of them. The plain lines that share a group with
/// modulated ones have `next` and `fraction` 0, which leaves their taps alone.
struct Network {
    Floats4 last[sweptGroups], filtered[groups], a[groups], b[groups];

    /// `count` is up to four; beyond it the lines may hold anything.
    [[gnu::always_inline]] void run(float (*y)[chunk], const float (*next)[chunk],
                                    const float (*fraction)[chunk], int k, int count) {
        const Floats4 quiet = Floats4{} + MLPF1a::quiet;
        Floats4 x[groups][four], n[sweptGroups][four], f[sweptGroups][four];
        for (int g = 0; g < groups; g++) loadTurned(&y[g * four][k], x[g]);
        for (int g = 0; g < sweptGroups; g++) {
            loadTurned(&next[g * four][k], n[g]);
            loadTurned(&fraction[g * four][k], f[g]);
        }
        for (int j = 0; j < count; j++)
            for (int g = 0; g < groups; g++) {
                if (g < sweptGroups) x[g][j] = last[g] = (n[g][j] - last[g]) * f[g][j] + x[g][j];
                const Floats4 out = a[g] * x[g][j] - b[g] * filtered[g];
                x[g][j] = filtered[g] = (out < quiet) & (out > -quiet) ? Floats4{} : out;
            }
        for (int g = 0; g < groups; g++) {
            transpose(x[g][0], x[g][1], x[g][2], x[g][3]);
            for (int i = 0; i < four; i++) saveFloats(&y[g * four + i][k], x[g][i]);
        }
    }
};

/// The taps in `y` become what the filters make of them.
SONDRAVA_CLONES void runNetwork(Network& network, float (*y)[chunk], const float (*next)[chunk],
                                const float (*fraction)[chunk], int count) {
    Network n = network;
    int k = 0;
    for (; k + four <= count; k += four) n.run(y, next, fraction, k, four);
    if (k < count) n.run(y, next, fraction, k, count - k);
    network = n;
}

/// The two outputs and the part that all lines get back, of the lines' samples.
SONDRAVA_CLONES void sumLines(const float (*y)[chunk], const float* signL, const float* signR,
                              const float* mono, int count, float* __restrict accL,
                              float* __restrict accR, float* __restrict common) {
    for (int k = 0; k < count; k++) {
        float left = mono[k], right = mono[k], sum = 0.0f;
        for (int i = 0; i < lines; i++) {
            left += signL[i] * y[i][k];
            right += signR[i] * y[i][k];
            sum += y[i][k];
        }
        accL[k] = left;
        accR[k] = right;
        common[k] = sum * mixGain;
    }
}

/// What goes into a line: the sample of the next one, the common part and the delayed input.
SONDRAVA_CLONES void feedLine(const float* y, const float* common, const float* delayed, int count,
                              float* __restrict out) {
    for (int k = 0; k < count; k++) out[k] = y[k] + common[k] + delayed[k];
}

double square(float v) {
    return double(v) * double(v);
}

/// Sums in lanes that do not wait for each other.
double power(const float* left, const float* right, long frames) {
    constexpr long lanes = 8;
    double sums[lanes] = {};
    long i = 0;
    for (; i + lanes <= frames; i += lanes)
        for (long k = 0; k < lanes; k++) sums[k] += square(left[i + k]) + square(right[i + k]);
    double sum = 0.0;
    for (; i < frames; i++) sum += square(left[i]) + square(right[i]);
    for (double lane : sums) sum += lane;
    return sum;
}

SONDRAVA_CLONES void addOut(float* __restrict out, const float* in, const float* acc, float wet,
                            float dry, int count) {
    for (int i = 0; i < count; i++) out[i] += wet * acc[i] * outGain + in[i] * dry;
}

} // namespace

struct CReverb::Chunk {
    float inL[chunk], inR[chunk], mono[chunk], delayed[chunk];
    float y[lines][chunk]; ///< of a line side by side: first its taps, then what it gives
    float next[sweptGroups * four][chunk], fraction[sweptGroups * four][chunk];
    float accL[chunk], accR[chunk], common[chunk];
};

CReverb::CReverb(float hz, int frames) : CFX(hz, frames) {
    id = "Reverb";
    type = fxReverb;
    dry = 1.0f;
    wet = 0.2f;
    createSinus2();
    for (int i = 0; i < lines; i++) {
        const bool flipped = i % 4 == 1 || i % 4 == 2;
        lengths[i] = lineLengths[i];
        signL[i] = i % 2 ? -1.0f : 1.0f;
        signR[i] = flipped ? -signL[i] : signL[i];
    }
    for (int i = 0; i < modCount; i++) {
        modLines[i].SetNomDelay(lengths[i]);
        modLines[i].SetModDepth(modulation);
        modLines[i].incr = modulationHz / double(rate);
    }
    for (int i = 0; i < plainLineCount; i++) plainLines[i].SetMaxDelay(lengths[modCount + i]);
    preDelayLine.SetMaxDelay(preDelayFrames);
    startModulation();
    CReverb::setRate(hz);
}

void CReverb::startModulation() {
    for (int i = 0; i < modCount; i++) modLines[i].phase = double(i * phaseStep) / 360.0;
}

void CReverb::setRate(float hz) {
    CFX::setRate(hz);
    setDecay(size);
    calculateFilter(0, lowCut);
    calculateFilter(1, highCut);
}

void CReverb::setEnabled(int on) {
    CFX::setEnabled(on);
    if (!on) clearRequest = 1;
}

void CReverb::suspend() {
    for (MSVRAP1ModDelayLine& line : modLines) line.Suspend();
    for (MDelayLine& line : plainLines) line.Suspend();
    for (MLPF1a& filter : filters) filter.Suspend();
    preDelayLine.Suspend();
}

void CReverb::clear() {
    suspend();
    startModulation();
    state = 1;
    sinceSettled = 0;
    heard = arrived = 0.0;
    rings = false;
}

void CReverb::start() {
    if (state == 1 || !(rings || heard >= silentPower)) clear();
    sinceSettled = 0;
}

void CReverb::setSize(ToStore<int> ms) {
    size = asMinMax(ms, 1000, 60000);
    setDecay(size);
}

void CReverb::setRevTimeOld(ToStore<int> ms) {
    setSize(ms / 1000 * 1000);
}

void CReverb::setDecay(ToStore<int> ms) {
    const double seconds = ms * 0.001;
    for (int i = 0; i < lines; i++) {
        const double gain = std::pow(10.0, -3.0 * lengths[i] / (double(rate) * seconds));
        const double db = 20.0 * std::log10(gain);
        const double p = std::numbers::ln10 * db / 80.0 * (1.0 - decayRatio * decayRatio);
        filters[i].SetCoeffs(float(gain * (1.0 - p)), float(-p));
    }
}

void CReverb::setLowCutFrq(ToStore<float> hz) {
    store(lowCut, hz, 20.0f, 20000.0f);
    calculateFilter(0, lowCut);
}

void CReverb::setHighCutFrq(ToStore<float> hz) {
    store(highCut, hz, 20.0f, 20000.0f);
    calculateFilter(1, highCut);
}

void CReverb::calculateFilter(int mode, float frequency) {
    const double x = 2.0 * std::numbers::pi * double(frequency) / double(rate);
    const double c = std::cos(x), q = std::sin(x) / 2.0, norm = 1.0 / (1.0 + q);
    const double edge = mode == 0 ? 1.0 + c : 1.0 - c;
    const double b1 = mode == 0 ? -edge : edge;
    float* out = mode == 0 ? lowCutCoeffs : highCutCoeffs;
    out[0] = out[2] = float(edge / 2.0 * norm);
    out[1] = float(b1 * norm);
    out[3] = float(-2.0 * c * norm);
    out[4] = float((1.0 - q) * norm);
}

void CReverb::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    if (clearRequest && clearRequest.exchange(0)) suspend();
    const int pd = asMinMax(asInt(double(rate) * preDelay * 0.001), 0, preDelayFrames);
    const int most = std::min(chunk, preDelayLine.size - pd);
    const float wetGain = wet, dryGain = dry;
    Chunk c; // NOLINT(cppcoreguidelines-pro-type-member-init): filled before it is read
    for (int i = modCount; i < sweptGroups * four; i++) {
        std::fill_n(c.next[i], chunk, 0.0f);
        std::fill_n(c.fraction[i], chunk, 0.0f);
    }
    for (long done = 0; done < frames;) {
        if (state == 1) {
            done += toFirstSound(inL + done, inR + done, frames - done);
            if (done == frames) break;
            wake(sinceSettled + int(done));
        }
        const int count = int(std::min<long>(most, frames - done));
        std::copy_n(inL + done, count, c.inL);
        std::copy_n(inR + done, count, c.inR);
        for (int k = 0; k < count; k++) c.mono[k] = (c.inL[k] + c.inR[k]) * 0.5f;
        const int first = preDelayLine.write - pd;
        preDelayLine.append(c.mono, count);
        preDelayLine.copyFrom(first, count, c.delayed);
        readLines(c, count);
        filterLines(c, count);
        sumLines(c.y, signL, signR, c.mono, count, c.accL, c.accR, c.common);
        writeLines(c, count);
        addOut(outL + done, c.inL, c.accL, wetGain, dryGain, count);
        addOut(outR + done, c.inR, c.accR, wetGain, dryGain, count);
        heard += power(c.accL, c.accR, count);
        done += count;
    }
    sinceSettled += int(frames);
    if (settles) settle();
}

/// Frames before the one with which what arrives is no silence any more.
long CReverb::toFirstSound(const float* inL, const float* inR, long frames) {
    if (power(inL, inR, frames) == 0.0) return frames;
    for (long i = 0; i < frames; i++) {
        arrived += square(inL[i]) + square(inR[i]);
        if (arrived > silentPower) return i;
    }
    return frames;
}

/// The modulation goes on from so many frames ago, since a stretch that is not silent counts whole.
void CReverb::wake(int framesAgo) {
    state = 2;
    silence = 0;
    heard = 0.0;
    for (MSVRAP1ModDelayLine& line : modLines) line.movePhase(line.phase + framesAgo * line.incr);
}

/// Rests when nothing has been heard for long enough.
void CReverb::settle() {
    rings = state == 2 && heard >= silentPower;
    if (state == 2 && heard < silentPower) {
        silence += sinceSettled;
        if (double(silence) >= double(rate) * bypasstreshold) state = 1;
    }
    sinceSettled = 0;
    heard = arrived = 0.0;
}

void CReverb::readLines(Chunk& c, int count) {
    double phases[modCount][chunk], phase[modCount], step[modCount];
    for (int i = 0; i < modCount; i++) {
        phase[i] = modLines[i].phase;
        step[i] = modLines[i].incr;
    }
    // In step, since each addition to a phase waits for the one before.
    for (int k = 0; k < count; k++)
        for (int i = 0; i < modCount; i++) {
            phases[i][k] = phase[i];
            phase[i] += step[i];
        }
    for (int i = 0; i < modCount; i++) {
        modLines[i].getTaps(phases[i], count, c.y[i], c.next[i], c.fraction[i]);
        modLines[i].movePhase(phase[i]);
    }
    for (int i = 0; i < plainLineCount; i++) {
        MDelayLine& line = plainLines[i];
        line.copyFrom(line.read, count, c.y[modCount + i]);
        line.read = (line.read + count) % line.size;
    }
}

void CReverb::filterLines(Chunk& c, int count) {
    float last[lines] = {}, y[lines], a[lines], b[lines];
    for (int i = 0; i < modCount; i++) last[i] = modLines[i].last;
    for (int i = 0; i < lines; i++) {
        y[i] = filters[i].y;
        a[i] = filters[i].a;
        b[i] = filters[i].b;
    }
    Network network{};
    for (int g = 0; g < groups; g++) {
        const std::ptrdiff_t line = std::ptrdiff_t(g) * four;
        if (g < sweptGroups) network.last[g] = loadFloats(last + line);
        network.filtered[g] = loadFloats(y + line);
        network.a[g] = loadFloats(a + line);
        network.b[g] = loadFloats(b + line);
    }
    runNetwork(network, c.y, c.next, c.fraction, count);
    for (int i = 0; i < modCount; i++) modLines[i].last = network.last[i / four][i % four];
    for (int i = 0; i < lines; i++) filters[i].y = network.filtered[i / four][i % four];
}

void CReverb::writeLines(Chunk& c, int count) {
    float fed[chunk];
    for (int i = 0; i < lines; i++) {
        feedLine(c.y[(i + 1) % lines], c.common, c.delayed, count, fed);
        if (i < modCount)
            modLines[i].append(fed, count);
        else
            plainLines[i - modCount].append(fed, count);
    }
}

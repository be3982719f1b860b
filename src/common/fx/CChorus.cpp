#include "common/fx/CChorus.h"

#include "base/Clones.h"
#include "base/Numbers.h"
#include "common/Silence.h"
#include "common/fx/EchoLine.h"
#include "common/fx/Sweep.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int piece = 64; // frames at a time, unless the line is read closer behind its end
constexpr int mask = CChorus::bufferFrames - 1;
constexpr float floorLevel = 1e-10f;

// Tables and lines are looked up one by one, apart from the loops that run in lanes: a gather, or
// taking the indices out of a register, costs more.

SONDRAVA_CLONES void waveIndices(const double* places, double offset, int count,
                                 int* __restrict index) {
    for (int i = 0; i < count; i++) index[i] = int(places[i] + offset) & (lfoTableSize - 1);
}

[[gnu::noinline]] void lookUpWave(const float* wave, const int* index, int count,
                                  float* __restrict out) {
    for (int i = 0; i < count; i++) out[i] = wave[index[i]];
}

/// Where the line is read, `nearest` at the first frame if the wave is 0 there: `frame` and the
/// fraction behind it. None is below 0, where cutting the fraction off would round up.
SONDRAVA_CLONES void linePlaces(const float* wave, double nearest, double range, int count,
                                int* __restrict frame, float* __restrict fraction) {
    for (int i = 0; i < count; i++) {
        const double pos = nearest + i + range * double(wave[i]);
        frame[i] = int(pos);
        fraction[i] = float(pos - int(pos));
    }
}

/// The line there, by a straight line between two frames.
[[gnu::noinline]] void lookUpLine(const float* line, const int* frame, const float* fraction,
                                  int count, float* __restrict out) {
    for (int i = 0; i < count; i++) {
        const float a = line[frame[i] & mask], b = line[(frame[i] + 1) & mask];
        out[i] = a + (b - a) * fraction[i];
    }
}

SONDRAVA_CLONES void mixSide(const float* in, const float* y, float feedback, float dry, float wet,
                             int count, float* __restrict fed, float* __restrict out) {
    for (int i = 0; i < count; i++) {
        const float v = in[i] + feedback * y[i];
        fed[i] = std::fabs(v) < floorLevel ? 0.0f : v;
        out[i] = in[i] * dry + wet * y[i];
    }
}

} // namespace

CChorus::CChorus(float hz, int frames) : CFX(hz, frames) {
    id = "Chorus";
    type = fxChorus;
    dry = 0.5f;
    wet = 0.5f;
}

CChorus::~CChorus() {
    delete lineL.load();
    delete lineR.load();
}

void CChorus::takeRoom() {
    if (!lineL) lineL.storeRelease(new EchoLine(bufferFrames));
    if (!lineR) lineR.storeRelease(new EchoLine(bufferFrames));
}

void CChorus::clear() {
    phasePos = 0.0;
    writeL = writeR = 0;
    silentL = silentR = bufferFrames;
    for (EchoLine* line : {lineL.load(), lineR.load()})
        if (line) line->clear();
}

void CChorus::start() {
    const EchoLine *left = lineL.load(), *right = lineR.load();
    const auto quiet = [](const EchoLine& line, int write) {
        for (int i = 1; i <= piece; i++)
            if (line.data()[(write - i) & mask] != 0.0f) return false;
        return true;
    };
    if (!left || !right || (quiet(*left, writeL) && quiet(*right, writeR))) phasePos = 0.0;
}

struct CChorus::Block {
    const float* wave;
    Sweep sweep;
    double nominal, range; ///< frames
    float feedback, dry, wet;
    int most; ///< frames at a time that read only what was written before
    int reach() const { return int(nominal + range) + 2; } ///< frames back that it reads
};

bool CChorus::rests() const {
    return std::min(silentL, silentR) >= prepare().reach();
}

CChorus::Block CChorus::prepare() const {
    Block b{};
    b.sweep = sweepOf(*this);
    b.wave = waveform == 1.0f ? triangleWave : sinusWave;
    const double ms = double(fLimit(delay, 1.0f, 300.0f));
    b.nominal = std::min(ms * double(rate) * 0.001, double(bufferFrames - 2));
    b.range = b.nominal * double(fLimit(depth, 0.0f, 1.0f));
    b.feedback = feedback;
    b.dry = dry;
    b.wet = wet;
    b.most = std::clamp(int(b.nominal - b.range) - 1, 1, piece);
    return b;
}

void CChorus::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    EchoLine *left = lineL.loadAcquire(), *right = lineR.loadAcquire();
    if (!left || !right) return;
    const Block block = prepare();
    const Side sideL{*left, writeL, silentL}, sideR{*right, writeR, silentR};
    const bool silent = rests() && isSilent(inL, inR, frames);
    for (long done = 0; done < frames;) {
        // Places count from the start of the line, so a piece ends where it does.
        const int room = std::min(block.most, bufferFrames - std::max(writeL, writeR));
        const int count = int(std::min<long>(room, frames - done));
        double places[piece];
        phasePos = lfoPlaces(phasePos, block.sweep.step, count, places);
        if (silent) {
            passSide(sideL, outL + done, count);
            passSide(sideR, outR + done, count);
        } else {
            runSide(block, sideL, places, 0.0, inL + done, outL + done, count);
            runSide(block, sideR, places, block.sweep.offset, inR + done, outR + done, count);
        }
        done += count;
        if (phasePos >= lfoFar) phasePos = std::fmod(phasePos, double(lfoTableSize));
    }
    if (settles) phasePos = std::fmod(phasePos, double(lfoTableSize));
}

void CChorus::runSide(const Block& b, const Side& side, const double* places, double offset,
                      const float* in, float* out, int count) {
    const auto& [line, write, silent] = side;
    int index[piece];
    float dryIn[piece], swing[piece], fraction[piece], y[piece], fed[piece];
    std::copy_n(in, count, dryIn);
    waveIndices(places, offset, count, index);
    lookUpWave(b.wave, index, count, swing);
    linePlaces(swing, bufferFrames + write - b.nominal - 1.0, b.range, count, index, fraction);
    lookUpLine(line.data(), index, fraction, count, y);
    mixSide(dryIn, y, b.feedback, b.dry, b.wet, count, fed, out);
    std::copy_n(fed, count, line.data() + write);
    line.wroteTo(write + count);
    write = (write + count) & mask;
    silent = isSilent(fed, count) ? std::min(silent + count, bufferFrames) : 0;
}

void CChorus::passSide(const Side& side, float* out, int count) {
    const auto& [line, write, silent] = side;
    std::fill_n(line.data() + write, count, 0.0f);
    std::fill_n(out, count, 0.0f);
    line.wroteTo(write + count);
    write = (write + count) & mask;
    silent = std::min(silent + count, bufferFrames);
}

#include "common/fx/CDelay.h"

#include "base/Clones.h"
#include "base/Numbers.h"
#include "common/fx/EchoLine.h"

#include <algorithm>

namespace {

constexpr int piece = 256; // frames at a time; the taps are read before the lines are written
constexpr float floorLevel = 1e-10f;

/// line = feedback * (kept * own + inGain * in + cross * other).
SONDRAVA_CLONES void feedLine(float* __restrict line, const float* own, const float* other,
                              const float* in, float feedback, float cross, float inGain,
                              int count) {
    const float kept = 1.0f - cross;
    for (int i = 0; i < count; i++) {
        const float v = feedback * (kept * own[i] + inGain * in[i] + cross * other[i]);
        line[i] = std::fabs(v) < floorLevel ? 0.0f : v;
    }
}

/// out += first * a + second * b + in * dry.
SONDRAVA_CLONES void addOut(float* __restrict out, const float* first, float a, const float* second,
                            float b, const float* in, float dry, int count) {
    for (int i = 0; i < count; i++) out[i] += first[i] * a + second[i] * b + in[i] * dry;
}

} // namespace

struct CDelay::Block {
    float feedback, cross, dry, wet;
    float panL, panR; ///< 0 left to 1 right
    int lengthL, lengthR, spread;
};

CDelay::CDelay(float hz, int frames) : CFX(hz, frames) {
    id = "Delay";
    type = fxDelay;
    dry = 1.0f;
    wet = 0.5f;
}

CDelay::~CDelay() {
    if (shared) return;
    delete lineL.load();
    delete lineR.load();
}

void CDelay::setSharedLines(EchoLine* left, EchoLine* right) {
    if (!shared) {
        delete lineL.load();
        delete lineR.load();
    }
    shared = 1;
    lineL.storeRelease(left);
    lineR.storeRelease(right);
}

void CDelay::takeRoom() {
    if (shared) return;
    if (!lineL) lineL.storeRelease(new EchoLine(bufferFrames));
    if (!lineR) lineR.storeRelease(new EchoLine(bufferFrames));
}

void CDelay::clear() {
    posL = posR = 0;
    for (EchoLine* line : {lineL.load(), lineR.load()})
        if (line) line->clear();
}

void CDelay::start() {
    const EchoLine *left = lineL.load(), *right = lineR.load();
    if (!left || !right) return;
    const Block block = prepare();
    if (left->quiet(block.lengthL) && right->quiet(block.lengthR)) posL = posR = 0;
}

void CDelay::setTicksLeft(ToStore<int> mul, ToStore<int> div) {
    store(mulLeft, mul, 1, 32);
    store(divLeft, div, 1, 32);
}

void CDelay::setTicksRight(ToStore<int> mul, ToStore<int> div) {
    store(mulRight, mul, 1, 32);
    store(divRight, div, 1, 32);
}

void CDelay::getTicksLeft(int& mul, int& div) const {
    mul = mulLeft;
    div = divLeft;
}

void CDelay::getTicksRight(int& mul, int& div) const {
    mul = mulRight;
    div = divRight;
}

CDelay::Block CDelay::prepare() const {
    const auto length = [this](int mul, int div, float ms) {
        const double beats = double(std::max(1, mul)) / std::max(1, div);
        const double frames =
            sync ? double(rate) * 60.0 * beats / double(tempo) : double(rate) * double(ms) * 0.001;
        return asMinMax(asInt(frames), 1, bufferFrames);
    };
    Block b{};
    b.feedback = feedback;
    b.cross = cross;
    b.dry = dry;
    b.wet = wet;
    b.panL = (panLeft + 1.0f) * 0.5f;
    b.panR = (panRight + 1.0f) * 0.5f;
    b.lengthL = length(mulLeft, divLeft, timeLeft);
    b.lengthR = length(mulRight, divRight, timeRight);
    b.spread = std::max(0, asInt(double(spread) * double(rate) * 0.001)) % b.lengthR;
    return b;
}

/// A place beyond a length that has become shorter is left after one frame.
int CDelay::advance(int pos, int count, int length) {
    return pos + count >= length ? 0 : pos + count;
}

void CDelay::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    if (!lineL.loadAcquire() || !lineR.loadAcquire()) return;
    const Block block = prepare();
    for (long done = 0; done < frames;) {
        int spreadPos = posR + block.spread;
        if (spreadPos >= block.lengthR) spreadPos -= block.lengthR;
        // Up to where one of the three places wraps, and before the spread tap meets new frames.
        const int room = std::min({block.lengthL - posL, block.lengthR - posR,
                                   block.lengthR - spreadPos, block.lengthR - block.spread});
        const int count = int(std::min<long>(std::clamp(room, 1, piece), frames - done));
        run(block, inL + done, inR + done, outL + done, outR + done, count);
        done += count;
    }
}

void CDelay::run(const Block& b, float* inL, float* inR, float* outL, float* outR, int count) {
    EchoLine &left = *lineL.load(), &right = *lineR.load();
    float *placeL = left.data() + posL, *placeR = right.data() + posR;
    int spreadPos = posR + b.spread;
    if (spreadPos >= b.lengthR) spreadPos -= b.lengthR;

    float dryL[piece], dryR[piece], tapL[piece], tapR[piece], wetR[piece];
    std::copy_n(inL, count, dryL);
    std::copy_n(inR, count, dryR);
    std::copy_n(placeL, count, tapL);
    std::copy_n(placeR, count, tapR);
    std::copy_n(right.data() + spreadPos, count, wetR);

    feedLine(placeL, tapL, tapR, dryL, b.feedback, b.cross, 1.0f, count);
    feedLine(placeR, tapR, tapL, dryR, b.feedback, b.cross, 1.0f - b.cross, count);
    left.wroteTo(posL + count);
    right.wroteTo(posR + count);
    posL = advance(posL, count, b.lengthL);
    posR = advance(posR, count, b.lengthR);

    addOut(outL, tapL, (1.0f - b.panL) * b.wet, wetR, (1.0f - b.panR) * b.wet, dryL, b.dry, count);
    addOut(outR, wetR, b.panR * b.wet, tapL, b.panL * b.wet, dryR, b.dry, count);
}

#include "common/fx/CDelay.h"
#include "FxFixture.h"

#include <memory>

namespace {

/// The echo frame by frame.
struct Reference {
    double feedback, cross, dry, wet, panL, panR;
    int lenL, lenR, spread;
    std::vector<double> bufL = std::vector<double>(CDelay::bufferFrames);
    std::vector<double> bufR = bufL;
    int posL = 0, posR = 0;

    void operator()(double inL, double inR, double& outL, double& outR) {
        const double tapL = bufL[std::size_t(posL)], tapR = bufR[std::size_t(posR)];
        bufL[std::size_t(posL)] = feedback * ((1 - cross) * tapL + inL + cross * tapR);
        if (++posL >= lenL) posL = 0;
        const int ahead = posR + spread >= lenR ? posR + spread - lenR : posR + spread;
        const double wetL = tapL * wet, wetR = bufR[std::size_t(ahead)] * wet;
        bufR[std::size_t(posR)] =
            feedback * ((1 - cross) * tapR + (1 - cross) * inR + cross * tapL);
        if (++posR >= lenR) posR = 0;
        const double pl = (panL + 1) / 2, pr = (panR + 1) / 2;
        outL += (1 - pl) * wetL + (1 - pr) * wetR + inL * dry;
        outR += pr * wetR + pl * wetL + inR * dry;
    }
};

struct Case {
    const char* name;
    int sync, mulLeft, divLeft, mulRight, divRight;
    float tempo, timeLeft, timeRight, spread, feedback, cross, panLeft, panRight;
    double seconds[2]; ///< of the echo, worked out by hand
};

const Case cases[] = {
    {"beats", 1, 1, 8, 3, 16, 120, 9, 9, 0, 0.5f, 0, -1, 1, {0.0625, 0.09375}},
    {"milliseconds", 0, 1, 1, 1, 1, 120, 10, 25, 0, 0.9f, 0, -1, 1, {0.01, 0.025}},
    {"cross", 0, 1, 1, 1, 1, 120, 10, 7, 0, 0.7f, 0.3f, -0.5f, 0.25f, {0.01, 0.007}},
    {"spread", 0, 1, 1, 1, 1, 120, 10, 20, 3, 0.6f, 0.5f, -1, 1, {0.01, 0.02}},
    {"spread longer than the echo", 0, 1, 1, 1, 1, 120, 5, 4, 11, 0.6f, 0, -1, 1, {0.005, 0.004}},
    {"shorter than a block", 0, 1, 1, 1, 1, 120, 1, 1, 0, 0.8f, 1, -1, 1, {0.001, 0.001}}};

std::unique_ptr<CDelay> make(const Case& c, float rate) {
    auto fx = std::make_unique<CDelay>(rate, 0);
    fx->setSync(c.sync);
    fx->setTicksLeft(c.mulLeft, c.divLeft);
    fx->setTicksRight(c.mulRight, c.divRight);
    fx->tempo = c.tempo;
    fx->setTimeLeft(c.timeLeft);
    fx->setTimeRight(c.timeRight);
    fx->setSpread(c.spread);
    fx->setFeedback(c.feedback);
    fx->setCross(c.cross);
    fx->setPanLeft(c.panLeft);
    fx->setPanRight(c.panRight);
    fx->setDry(0.8f);
    fx->setWet(0.6f);
    fx->setEnabled(1);
    return fx;
}

Reference reference(const Case& c, float rate) {
    const auto frames = [&](double seconds) { return int(seconds * double(rate) + 1e-6); };
    Reference r{double(c.feedback),   double(c.cross),      double(0.8f),
                double(0.6f),         double(c.panLeft),    double(c.panRight),
                frames(c.seconds[0]), frames(c.seconds[1]), frames(double(c.spread) / 1000)};
    r.spread %= r.lenR;
    return r;
}

} // namespace

TEST(CDelay, FollowsItsFormulasInAnyCut) {
    for (float rate : fxRates)
        for (const Case& c : cases)
            for (int block : fxBlocks) {
                Stereo in = fxSignal(20000), out(20000);
                const auto fx = make(c, rate);
                runFx(*fx, in, out, block);
                expectLike(in, out, reference(c, rate), 1e-5,
                           std::string(c.name) + " in " + std::to_string(block));
            }
}

/// A place beyond a length that has become shorter plays one more frame there.
TEST(CDelay, KeepsItsPlaceWhenTheLengthChanges) {
    Case c = cases[1];
    const auto fx = make(c, 44100);
    Reference ref = reference(c, 44100);
    for (const float ms : {10.0f, 3.0f, 40.0f, 1.0f, 10.0f}) {
        fx->setTimeLeft(ms);
        fx->setTimeRight(ms * 2);
        ref.lenL = int(double(ms) * 44.1 + 1e-6);
        ref.lenR = int(double(ms) * 88.2 + 1e-6);
        Stereo in = fxSignal(1000, unsigned(ms)), out(1000);
        runFx(*fx, in, out, 64);
        expectLike(in, out, std::ref(ref), 1e-5, std::to_string(ms));
    }
}

/// Without lines of its own it allocates none, and two effects meet in shared ones.
TEST(CDelay, SharesLinesThatItIsGiven) {
    std::vector<float> left(CDelay::bufferFrames), right = left;
    CDelay silent(44100, 0), first(44100, 0), second(44100, 0);
    Stereo in = fxSignal(50), out(50);
    runFx(silent, in, out, 50);
    EXPECT_EQ(out.left, Stereo(50).left) << "no lines, no sound, not even the dry one";
    for (CDelay* fx : {&first, &second}) {
        fx->setSharedBuffers(left.data(), right.data());
        fx->setEnabled(1);
        fx->setDry(0.0f);
        fx->setSync(0);
        fx->setTimeLeft(1.0f);
        fx->setWet(1.0f);
    }
    runFx(first, in, out, 44);
    Stereo echo(44), none(44);
    runFx(second, none, echo, 44);
    for (std::size_t i = 6; i < 44; i++) EXPECT_EQ(echo.left[i], 0.5f * in.left[i]) << i;
}

#include "common/fx/CDelay.h"
#include "FxFixture.h"
#include "PlainFx.h"
#include "common/fx/EchoLine.h"

/// Also when a length changes: a place beyond one that has become shorter plays one more frame
/// there.
TEST(CDelay, FollowsItsFormulasInAnyCut) {
    const struct {
        const char* name;
        int sync;
        float timeLeft, timeRight, feedback, cross, panLeft, panRight;
        double left, right; ///< seconds of the echo, worked out by hand
    } cases[] = {{"beats", 1, 9, 9, 0.5f, 0, -1, 1, 0.0625, 0.09375},
                 {"cross", 0, 10, 7, 0.7f, 0.3f, -0.5f, 0.25f, 0.01, 0.007},
                 {"shorter than a block", 0, 1, 1, 0.8f, 1, -1, 1, 0.001, 0.001}};
    for (float rate : fxRates)
        for (const auto& c : cases)
            for (int block : fxBlocks) {
                CDelay fx(rate, 0);
                fx.setSync(c.sync);
                fx.setTicksLeft(1, 8);
                fx.setTicksRight(3, 16);
                fx.setTimeLeft(c.timeLeft);
                fx.setTimeRight(c.timeRight);
                fx.setFeedback(c.feedback);
                fx.setCross(c.cross);
                fx.setPanLeft(c.panLeft);
                fx.setPanRight(c.panRight);
                fx.setWet(0.6f);
                fx.setEnabled(1);
                PlainDelay plain(fx);
                plain.lenL = int(c.left * double(rate) + 1e-6);
                plain.lenR = int(c.right * double(rate) + 1e-6);
                expectLikePlain(fx, plain, 20000, block, 1e-5, c.name);
                if (c.sync) continue;
                for (const float ms : {10.0f, 3.0f, 40.0f, 1.0f, 10.0f}) {
                    fx.setTimeLeft(ms);
                    plain.lenL = int(double(ms) * 0.001 * double(rate) + 1e-6);
                    expectLikePlain(fx, plain, 1000, block, 1e-5, "changed");
                }
            }
}

/// The spread is the way round the line by which the right echo comes too soon.
TEST(CDelay, SpreadsBothSides) {
    CDelay even(44100, 0), spread(44100, 0);
    Stereo in = fxSignal(5000), late(5000), early(5000);
    for (CDelay* fx : {&even, &spread}) {
        fx->setSync(0);
        fx->setTimeRight(4); // 176 frames
        fx->setDry(0);
        fx->setEnabled(1);
    }
    spread.setSpread(11); // 485 frames
    runFx(even, in, late, 64);
    runFx(spread, in, early, 64);
    for (size_t i = 485 % 176; i < 5000; i++)
        ASSERT_EQ(early.right[i - 485 % 176], late.right[i]) << i;
}

TEST(CDelay, SharesLinesThatItIsGiven) {
    EchoLine left(CDelay::bufferFrames), right(CDelay::bufferFrames);
    CDelay first(44100, 0), second(44100, 0);
    Stereo in = fxSignal(44), out(44), echo(44), none(44);
    for (CDelay* fx : {&first, &second}) {
        fx->setSharedLines(&left, &right);
        fx->setEnabled(1);
        fx->setDry(0.0f);
        fx->setSync(0);
        fx->setTimeLeft(1.0f);
        fx->setWet(1.0f);
    }
    runFx(first, in, out, 44);
    runFx(second, none, echo, 44);
    for (size_t i = 6; i < 44; i++) EXPECT_EQ(echo.left[i], 0.5f * in.left[i]) << i;
    second.clear(); // what the other one wrote too
    EXPECT_EQ(std::vector(left.data(), left.data() + CDelay::bufferFrames),
              std::vector<float>(CDelay::bufferFrames));
}

#include "common/fx/CChorus.h"
#include "FxFixture.h"
#include "PlainFx.h"

/// Against the plain form; long enough for the line to go round, where places below 0 are cut
/// towards 0.
TEST(CChorus, FollowsItsFormulasInAnyCut) {
    const struct {
        const char* name;
        float frequency, delay, depth, phase, feedback;
    } cases[] = {{"default", 3, 20, 0.1f, 90, 0},
                 {"deep, fed back", 1, 30, 0.9f, 180, -0.8f},
                 {"read where it is written", 5, 2, 1, 45, 0.5f},
                 {"longest", 2, 300, 0.5f, 0, 0.9f},
                 {"shortest", 10, 1, 0, 0, 0.9f}};
    for (float rate : fxRates)
        for (const auto& c : cases)
            for (int block : fxBlocks) {
                CChorus fx(rate, 0);
                fx.setFrequency(c.frequency);
                fx.setDelay(c.delay);
                fx.setDepth(c.depth);
                fx.setPhase(c.phase);
                fx.setFeedback(c.feedback);
                fx.setWet(0.75f);
                PlainChorus plain(fx);
                fx.setEnabled(1);
                expectLikePlain(fx, plain, 70000, block, 1e-5, c.name);
            }
}

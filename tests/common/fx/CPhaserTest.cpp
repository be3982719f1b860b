#include "common/fx/CPhaser.h"
#include "FxFixture.h"
#include "PlainFx.h"

TEST(CPhaser, FollowsItsFormulasInAnyCut) {
    const struct {
        const char* name;
        float frequency, phase, feedback, low, high;
        int stages;
    } cases[] = {{"default", 0.1f, 0, 0.7f, 2000, 20000, 6},
                 {"negative feedback", 2, 90, -0.9f, 100, 5000, 4},
                 {"all stages", 1, 180, 0.5f, 20, 8000, CPhaser::maxStages}};
    for (float rate : fxRates)
        for (const auto& c : cases)
            for (int block : fxBlocks) {
                CPhaser fx(rate, 0);
                fx.setFrequency(c.frequency);
                fx.setPhase(c.phase);
                fx.setFeedback(c.feedback);
                fx.setRangeMin(c.low);
                fx.setRangeMax(c.high);
                fx.setStages(c.stages);
                fx.setWet(0.7f);
                PlainPhaser plain(fx);
                expectLikePlain(fx, plain, 20000, block, 1e-5, c.name);
            }
}

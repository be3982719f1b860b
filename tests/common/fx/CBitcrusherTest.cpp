#include "common/fx/CBitcrusher.h"
#include "FxFixture.h"

/// No formula has a rate in it. Three frames stand at the edge between two values.
TEST(CBitcrusher, FollowsItsFormulasInAnyCut) {
    for (int bits : {1, 4, 9, 23, 32})
        for (int degrade : {1, 2, 4, 64})
            for (int block : fxBlocks) {
                CBitcrusher fx(44100, 0);
                fx.setBits(bits);
                fx.setDegrade(degrade);
                Stereo in = fxSignal(5000);
                in.left[100] = -0.03125f;
                in.left[101] = 0.24999999f;
                in.left[102] = 0.25f;
                Stereo out = in;
                runFx(fx, out, out, block);
                int hold = 0;
                double left = 0.0, right = 0.0;
                const double step = std::pow(0.5, bits);
                const auto reference = [&](double inL, double inR, double& outL, double& outR) {
                    const bool take = hold >= degrade - 1;
                    if (take) left = inL, right = inR;
                    hold = take ? 0 : hold + 1;
                    outL = std::floor(left / step + 0.5) * step;
                    outR = std::floor(right / step + 0.5) * step;
                };
                expectLike(in, out, reference, 1e-7, std::to_string(bits) + " bits");
            }
}

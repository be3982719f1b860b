#include "common/fx/CBitcrusher.h"
#include "FxFixture.h"
#include "PlainFx.h"

/// No formula has a rate in it.
TEST(CBitcrusher, FollowsItsFormulasInAnyCut) {
    for (int bits : {1, 4, 9, 23, 32})
        for (int degrade : {1, 2, 4, 64})
            for (int block : fxBlocks) {
                CBitcrusher fx(44100, 0);
                fx.setBits(bits);
                fx.setDegrade(degrade);
                PlainBitcrusher plain(fx);
                expectLikePlain(fx, plain, 5000, block, 1e-7, std::to_string(bits));
            }
}

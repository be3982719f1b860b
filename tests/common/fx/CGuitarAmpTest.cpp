#include "common/fx/CGuitarAmp.h"
#include "FxFixture.h"

namespace {

using Amp = CGuitarAmp;

const struct {
    void (Amp::*set)(ToStore<float>);
    int type, index;
} knobs[] = {{&Amp::setBass, 0, 0},    {&Amp::setMid, 0, 1},       {&Amp::setTreble, 0, 2},
             {&Amp::setVolume, 0, 3},  {&Amp::setDrive2, 1, 0},    {&Amp::setBass2, 1, 1},
             {&Amp::setTreble2, 1, 2}, {&Amp::setTopCut2, 1, 3},   {&Amp::setVolume2, 1, 4},
             {&Amp::setDrive3, 2, 0},  {&Amp::setBass3, 2, 1},     {&Amp::setMid3, 2, 2},
             {&Amp::setTreble3, 2, 3}, {&Amp::setPresence3, 2, 4}, {&Amp::setVolume3, 2, 5}};

} // namespace

/// Each channel is the model of its type with the channel's own knobs, behind the gate, which
/// leaves its mark in the input.
TEST(CGuitarAmp, GatesThenDrivesTheModelInAnyCut) {
    for (int channel = 0; channel < ampTypes; channel++)
        for (int block : fxBlocks) {
            CGuitarAmp fx(48000, 0);
            void* model = Overloud_create(channel);
            Overloud_setfrequency(model, 48000);
            float value = 0.3f;
            for (const auto& k : knobs) {
                (fx.*k.set)(value += 0.04f);
                if (k.type == channel) Overloud_setparameter(model, k.index, value);
            }
            fx.setChannel(channel);
            fx.setThreshold(0.25f);
            Stereo in = fxSignal(3000), out(3000), gated = in, expected(3000);
            in.left[5] = 0.25f; // not above the threshold
            in.right[5] = std::nanf("");
            gated.left[5] = gated.right[5] = 0.0f;
            for (std::vector<float>* side : {&gated.left, &gated.right})
                for (float& v : *side) v = std::fabs(v) > 0.25f ? v : 0.0f;
            const float* ins[] = {gated.left.data(), gated.right.data()};
            float* outs[] = {expected.left.data(), expected.right.data()};
            Overloud_process(model, ins, outs, 2, 3000);
            Overloud_destroy(model);
            runFx(fx, in, out, block);
            EXPECT_TRUE(in.left == gated.left && in.right == gated.right) << channel;
            EXPECT_TRUE(out.left == expected.left && out.right == expected.right)
                << channel << " in " << block;
        }
}

/// A change of the channel goes over 10 ms: the output moves no faster than the two channels do
/// each by itself, but for a share of their difference.
TEST(CGuitarAmp, ChannelsFadeIntoEachOther) {
    constexpr int half = 22050; // whole cycles
    for (int from = 0; from < ampTypes; from++)
        for (int to = 0; to < ampTypes; to++) {
            CGuitarAmp fx(44100, 0);
            Stereo in(half), out(half);
            std::vector<float> all;
            for (int channel : {from, to}) {
                for (size_t i = 0; i < half; i++)
                    in.left[i] = float(0.3 * std::sin(2 * M_PI * 110 * double(i) / 44100));
                fx.setChannel(channel);
                runFx(fx, in, out, 512);
                all.insert(all.end(), out.left.begin(), out.left.end());
            }
            float alone = 0.0f, seam = 0.0f;
            for (size_t i = half / 2; i < all.size(); i++) {
                float& most = i >= half && i < half + 1000 ? seam : alone;
                most = std::max(most, std::fabs(all[i] - all[i - 1]));
            }
            EXPECT_LT(seam, alone + 2.0f / 441) << from << " to " << to;
        }
}

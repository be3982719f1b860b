#include "common/fx/CGuitarAmp.h"
#include "FxFixture.h"

namespace {

struct Knob {
    void (CGuitarAmp::*set)(float);
    float (CGuitarAmp::*get)() const;
    int type, index;
};

const Knob knobs[] = {
    {&CGuitarAmp::setBass, &CGuitarAmp::getBass, 0, 0},
    {&CGuitarAmp::setMid, &CGuitarAmp::getMid, 0, 1},
    {&CGuitarAmp::setTreble, &CGuitarAmp::getTreble, 0, 2},
    {&CGuitarAmp::setVolume, &CGuitarAmp::getVolume, 0, 3},
    {&CGuitarAmp::setDrive2, &CGuitarAmp::getDrive2, 1, 0},
    {&CGuitarAmp::setBass2, &CGuitarAmp::getBass2, 1, 1},
    {&CGuitarAmp::setTreble2, &CGuitarAmp::getTreble2, 1, 2},
    {&CGuitarAmp::setTopCut2, &CGuitarAmp::getTopCut2, 1, 3},
    {&CGuitarAmp::setVolume2, &CGuitarAmp::getVolume2, 1, 4},
    {&CGuitarAmp::setDrive3, &CGuitarAmp::getDrive3, 2, 0},
    {&CGuitarAmp::setBass3, &CGuitarAmp::getBass3, 2, 1},
    {&CGuitarAmp::setMid3, &CGuitarAmp::getMid3, 2, 2},
    {&CGuitarAmp::setTreble3, &CGuitarAmp::getTreble3, 2, 3},
    {&CGuitarAmp::setPresence3, &CGuitarAmp::getPresence3, 2, 4},
    {&CGuitarAmp::setVolume3, &CGuitarAmp::getVolume3, 2, 5},
};

} // namespace

/// Each channel is the model of its type with the channel's own knobs, behind the gate, which
/// leaves its mark in the input.
TEST(CGuitarAmp, GatesThenDrivesTheModelInAnyCut) {
    for (float rate : fxRates)
        for (int channel = 0; channel < ampTypes; channel++)
            for (int block : fxBlocks) {
                CGuitarAmp fx(rate, 0);
                void* model = Overloud_create(channel);
                Overloud_setfrequency(model, rate);
                float value = 0.3f;
                for (const Knob& k : knobs) {
                    (fx.*k.set)(value += 0.04f);
                    EXPECT_EQ((fx.*k.get)(), value) << k.type << ", " << k.index;
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
                    << channel << " in " << block << " at " << rate;
            }
}

TEST(CGuitarAmp, AnUnknownChannelLeavesTheOutput) {
    CGuitarAmp fx(44100, 0);
    Stereo in = fxSignal(100), out = fxSignal(100, 7), before = out;
    fx.channel = 3;
    runFx(fx, in, out, 100);
    EXPECT_EQ(out.left, before.left);
    fx.setChannel(9);
    EXPECT_EQ(fx.getChannel(), ampDirty);
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
                for (std::size_t i = 0; i < half; i++)
                    in.left[i] = float(0.3 * std::sin(2 * M_PI * 110 * double(i) / 44100));
                fx.setChannel(channel);
                runFx(fx, in, out, 512);
                all.insert(all.end(), out.left.begin(), out.left.end());
            }
            float alone = 0.0f, seam = 0.0f;
            for (std::size_t i = half / 2; i < all.size(); i++) {
                float& most = i >= half && i < half + 1000 ? seam : alone;
                most = std::max(most, std::fabs(all[i] - all[i - 1]));
            }
            EXPECT_LT(seam, alone + 2.0f / 441) << from << " to " << to;
        }
}

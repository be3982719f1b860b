#include "instruments/SoundModulation.h"

#include "SoundFixture.h"
#include "instruments/OperatorWave.h"
#include "instruments/SoundParams.h"
#include "instruments/SoundSettings.h"

/// What a panel tells of a value's reach, for amounts by hand, and where a voice has it.
TEST(SoundModulation, TellsHowFarAValueIsMoved) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    const Setting& cutoff = *findSetting(settingsOf(*s), "Cutoff");
    const Setting& pan = *findSetting(settingsOf(*s), "Pan");
    s->cutoff = 0.8f;
    EXPECT_FALSE(modulationOf(*s, cutoff).moved) << "its envelope stands still";
    s->lfo[3]->params[0].amount = 0.5f;
    s->vel->params[1].amount = -0.25f; // of the pan
    const ModulatedValue swept = modulationOf(*s, cutoff), aside = modulationOf(*s, pan);
    EXPECT_NEAR(swept.low, 0.4, 1e-6);
    EXPECT_NEAR(swept.high, 0.8, 1e-6);
    EXPECT_NEAR(aside.low, -0.25, 1e-6);
    EXPECT_NEAR(aside.high, 0.25, 1e-6);
    EXPECT_FALSE(swept.sounding);
    b.sampler.createChannels();
    b.sampler.createBuffers(1024);
    CVoice* v = b.play(s, 60, 127);
    b.sampler.render(300, 0);
    const ModulatedValue heard = modulationOf(*s, cutoff);
    EXPECT_TRUE(heard.sounding);
    EXPECT_NEAR(heard.now, 0.8 * (1.0 + 0.5 * (double(v->lfoStages[3].value) - 1.0)), 0.01);
    EXPECT_NEAR(modulationOf(*s, pan).now, -0.25, 1e-6) << "as hard as can be";
}

/// A controller is led to a value once, and to all sounds that are set along; others are not taken.
TEST(SoundParams, LeadAControllerToAValue) {
    SoundBench b;
    COSCSound *s = b.addOsc(), *other = b.addOsc();
    other->ccMap[74] = targetQ; // the usual one of the cutoff is in use
    const Setting& cutoff = *findSetting(settingsOf(*s), "Cutoff");
    EXPECT_FALSE(soundParamOf(b.sampler, *s, cutoff, false));
    const ParamRef made = soundParamOf(b.sampler, *s, cutoff, true, {other});
    EXPECT_EQ(made, (ParamRef{&b.sampler, 20}));
    EXPECT_EQ(s->ccMap[20], targetCutoff);
    EXPECT_EQ(other->ccMap[20], targetCutoff);
    EXPECT_EQ(soundParamOf(b.sampler, *s, cutoff, true), made);
    s->cutoff = 0.3f;
    EXPECT_FLOAT_EQ(soundParamShare(b.sampler, 20), 0.3f);
    EXPECT_STREQ(soundParamName(b.sampler, 20).asChar(), "Cutoff");
    EXPECT_FALSE(soundParamOf(b.sampler, *s, *findSetting(settingsOf(*s), "Glide"), true));
    b.host.undo();
    EXPECT_EQ(s->ccMap[20], targetNone);
    EXPECT_EQ(other->ccMap[20], targetNone);
}

/// The drawn carrier is what a voice plays. Its filter, wide open, is late by a frame.
TEST(OperatorWave, IsWhatSounds) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->phaseMod = 0.6f;
    s->coarse2 = 12.0f;
    s->feed2 = 0.5f;
    s->oscRing = 0.3f;
    s->modRing = 0.2f;
    s->width = 1.0f;
    const OperatorWaves drawn = operatorWaves(*s);
    CVoice* v = b.play(s, 33);
    const std::vector<float> heard = b.render(v, 8000);
    const double turnsPerFrame = 55.0 / 44100,
                 gain = double(COSCSound::ownGain * COSCSound::ownGain);
    const double turnsDrawn = 2.0;
    for (int i = 4000; i < 8000; i += 7) {
        const double turn = std::fmod((i - 1) * turnsPerFrame, turnsDrawn);
        const double place = turn / turnsDrawn * OperatorWaves::points;
        const size_t at = size_t(place), next = (at + 1) % OperatorWaves::points;
        const double wave =
            std::lerp(double(drawn.carrier[at]), double(drawn.carrier[next]), place - double(at));
        ASSERT_NEAR(double(heard[size_t(i)]) / gain, wave, 0.05) << i;
    }
}

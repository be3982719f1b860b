#include "SoundFixture.h"
#include "base/TempFolder.h"
#include "support/Rows.h"

namespace {

std::vector<float> ramp(int frames) {
    std::vector<float> v;
    for (int i = 0; i < frames; i++) v.push_back(float(i) / float(frames));
    return v;
}

} // namespace

TEST(CWavSound, PlaysAtTheSpeedOfTheNote) {
    for (const auto& [rate, orgKey, note, coarse, bend, speed] :
         Rows<int, int, int, float, float, double>{{44100, 60, 60, 0, 0, 1},
                                                   {44100, 60, 72, 0, 0, 2},
                                                   {22050, 60, 60, 0, 0, 0.5},
                                                   {44100, 72, 60, 7, 0, std::pow(2, -5.0 / 12)},
                                                   {44100, 60, 60, 0, 1, 2}}) {
        SoundBench b;
        CWavSound* s = b.addWav(ramp(20000), {}, rate);
        s->clips[0]->setOrgKey(orgKey);
        s->coarse = coarse;
        b.prog->bend[0] = bend;
        CVoice* v = b.play(s, note);
        b.render(v, 4000);
        EXPECT_NEAR(v->pos, 4000 * speed, 1e-2) << "note " << note;
    }
}

/// The loop is from its start to the end of the range; the jump drops the fraction. One shorter
/// than a step must neither hang nor sound for ever.
TEST(CWavSound, Loops) {
    SoundBench b;
    CWavSound* s = b.addWav(ramp(1000));
    CSampleClip* clip = s->clips[0];
    clip->setRange(0, 900);
    clip->setLoop(loopForward);
    clip->setLoopStart(400);
    CVoice* v = b.play(s, 60);
    b.render(v, 1150);
    EXPECT_NEAR(v->pos, 400 + 250, 1e-9);
    b.render(v, 1000);
    EXPECT_NEAR(v->pos, 650, 1e-9);
    clip->setLoopStart(900); // not below the end: no loop
    b.render(v, 300);
    EXPECT_EQ(v->state, CVoice::free);
    clip->setLoopStart(898);
    s->coarse = 48.0f;
    for (int note : {60, 84, 127}) {
        v = b.play(s, note);
        b.render(v, 3000);
        EXPECT_EQ(v->state, CVoice::free) << note;
    }
}

TEST(CWavSound, MetersHoldTheHighestPeak) {
    SoundBench b;
    CWavSound* s = b.addWav(std::vector<float>(3000, 0.9f));
    s->setPan(-1.0f);
    b.render(b.play(s, 60), 2048);
    EXPECT_NEAR(double(float(s->holdL)), 0.9 * 1.5, 0.2);
    EXPECT_EQ(float(s->peakL), 1.0f);
    EXPECT_EQ(float(s->peakR), 0.0f);
    b.prog->idle();
    EXPECT_FLOAT_EQ(s->peakL, 0.95f);
}

#include "SoundFixture.h"

#include <filesystem>

namespace {

std::vector<float> ramp(int frames) {
    std::vector<float> v;
    for (int i = 0; i < frames; i++) v.push_back(float(i) / float(frames));
    return v;
}

} // namespace

TEST(CWavSound, PlaysAtTheSpeedOfTheNote) {
    struct Case {
        int rate, orgKey, note;
        float coarse, bend;
        double speed;
    };
    const Case cases[] = {{44100, 60, 60, 0, 0, 1},
                          {44100, 60, 72, 0, 0, 2},
                          {22050, 60, 60, 0, 0, 0.5},
                          {44100, 72, 60, 7, 0, std::pow(2, -5.0 / 12)},
                          {44100, 60, 60, 0, 1, 2}};
    for (const Case& c : cases) {
        SoundBench b;
        CWavSound* s = b.addWav(ramp(20000), {}, c.rate);
        s->clips[0]->setOrgKey(c.orgKey);
        s->coarse = c.coarse;
        b.prog->bend[0] = c.bend;
        CVoice* v = b.play(s, c.note);
        b.render(v, 4000);
        EXPECT_NEAR(v->pos, 4000 * c.speed, 1e-2) << "note " << c.note;
    }
}

TEST(CWavSound, EndsWithItsClip) {
    for (int frames : {1, 2, 45, 1000}) {
        SoundBench b;
        CWavSound* s = b.addWav(std::vector<float>(size_t(frames), 0.5f));
        CVoice* v = b.play(s, 60);
        const auto out = b.render(v, 1500);
        EXPECT_EQ(v->state, CVoice::free) << frames;
        for (size_t i = size_t(frames); i < out.size(); i++) ASSERT_EQ(out[i], 0.0f) << frames;
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

/// A clip that was never opened gives silence, not what the scratch holds.
TEST(CWavSound, UnopenedClipIsSilent) {
    SoundBench b;
    CSampleClip empty;
    empty.end = 1000;
    CWavSound s(b.layer, b.host.host);
    s.addSample(&empty);
    CVoice* v = b.play(&s, 60);
    for (float x : b.render(v, 2000)) ASSERT_EQ(x, 0.0f);
    b.sampler.allNotesOff();
}

/// Opening a file plays all of it, and lets go of what an earlier one was set to.
TEST(CSampleClip, OpensWithItsWholeRange) {
    const std::string path = "/tmp/clip" + std::to_string(getpid()) + ".wav";
    const float silence[500] = {};
    for (int frames : {500, 0}) {
        CSample out;
        out.create(path.c_str());
        out.writeFrames(frames, silence, silence);
        out.writeHeader();
        out.finalize();
        CSampleClip clip;
        clip.start = clip.end = 777;
        EXPECT_TRUE(clip.open(path.c_str()));
        EXPECT_TRUE(clip.start == 0 && clip.end == std::max(0, frames - 1));
    }
    std::filesystem::remove(path);
}

#include "SoundFixture.h"

#include "engine/SongClock.h"
#include "support/Rows.h"

#include <complex>
#include <numbers>
#include <utility>

namespace {

constexpr double twoPi = 2 * std::numbers::pi;

std::complex<double> bin(const std::vector<float>& v, size_t from, size_t count, double cycles) {
    std::complex<double> sum = 0;
    for (size_t i = 0; i < count; i++) {
        const double window = 0.5 - 0.5 * std::cos(twoPi * double(i) / double(count));
        sum += double(v[from + i]) * window * std::polar(1.0, -twoPi * cycles * double(from + i));
    }
    return sum;
}

/// A sample sound on a constant, so that the output shows the gain.
CWavSound* addConstant(SoundBench& b, float value = 1.0f, int frames = 300000) {
    return b.addWav(std::vector<float>(size_t(frames), value));
}

} // namespace

/// The steady response of the filter's three taps to a sine, against its transfer function. At a
/// higher rate the coefficient is smaller by as much, so that the cutoff is the same frequency,
/// but for an open filter, which passes all at any rate.
TEST(CSound, FilterHasItsTransferFunction) {
    struct Case {
        int filter;
        float cutoff, q, cycles; ///< cycles of the sine per frame
        int rate = 44100;
    };
    const Case cases[] = {{filterLow, 0.5f, 0, 0.01f},           {filterLow, 0.3f, 0.9f, 0.02f},
                          {filterBand, 0.6f, 0.97f, 0.05f},      {filterBand, 1, 0, 0.2f},
                          {filterHigh, 0.4f, 0.5f, 0.01f},       {filterHigh, 0.9f, 1, 0.1f},
                          {filterLow, 0.8f, 0.8f, 0.02f, 96000}, {filterBand, 1, 0, 0.2f, 22050},
                          {filterLow, 1, 0, 0.2f, 96000}};
    for (const Case& c : cases) {
        const int frames = 40000;
        std::vector<float> wave;
        for (int i = 0; i < frames; i++)
            wave.push_back(float(0.2 * std::sin(twoPi * double(c.cycles) * i)));
        SoundBench b(c.rate);
        CWavSound* s = b.addWav(wave, {}, c.rate);
        s->setFilter(c.filter);
        s->setCutoff(c.cutoff);
        s->setQ(c.q);
        const auto out = b.render(b.play(s, 60), frames - 10);
        const double measured = std::abs(bin(out, 20000, 16000, double(c.cycles))) /
                                std::abs(bin(wave, 20000, 16000, double(c.cycles)));

        const std::complex<double> d = std::polar(1.0, -twoPi * double(c.cycles));
        const double open = double(c.cutoff) * double(c.cutoff), scale = 44100.0 / c.rate;
        const double f = std::min(1.0, open * scale + std::max(0.0, 1 - scale) * std::pow(open, 8));
        const double k = 1 - std::min(double(c.q), 0.97);
        const auto denominator = (1.0 - d) * (1.0 - d) + f * f * d + k * f * d * (1.0 - d);
        const std::complex<double> numerators[] = {f * f, f * (1.0 - d), (1.0 - d) * (1.0 - d)};
        const double wanted = std::abs(numerators[c.filter] / denominator);
        EXPECT_NEAR(measured / wanted, 1, 1e-4)
            << "tap " << c.filter << " at " << double(c.cycles) << " cycles";
    }
}

TEST(CSound, PanAndVolumeFollowTheirLaw) {
    struct Case {
        float volume, pan;
        double left, right;
    };
    const Case cases[] = {{1, 0, 1, 1},     {0.5f, 0, 0.25, 0.25}, {1, 1, 0, 1.5},
                          {1, -20, 1.5, 0}, {1, 0.5f, 0.5, 1.25},  {0.5f, -0.5f, 0.3125, 0.125}};
    for (const Case& c : cases) {
        SoundBench b;
        CWavSound* s = b.addWav(std::vector<float>(5000, 1.0f), std::vector<float>(5000, 0.5f));
        s->setVolume(c.volume);
        s->setPan(c.pan);
        std::vector<float> right;
        const auto left = b.render(b.play(s, 60), 4000, &right);
        EXPECT_NEAR(double(left[3000]), c.left, 1e-5) << double(c.pan);
        EXPECT_NEAR(double(right[3000]), c.right / 2, 1e-5) << double(c.pan);
    }
}

/// A step of the volume while a note sounds is a line of at most 1 / (2 pi) per millisecond.
TEST(CSound, StepsAreRamped) {
    SoundBench b;
    CWavSound* s = addConstant(b);
    CVoice* v = b.play(s, 60);
    b.render(v, 2048);
    s->setVolume(0.0f);
    const auto out = b.render(v, 1024);
    const double limit = 1 / (44100 * 6.2831855 * 0.001);
    for (int i : {1, 44, 200, 264}) EXPECT_NEAR(double(out[size_t(i)]), 1 - i * limit, 1e-3) << i;
    EXPECT_NEAR(double(out[400]), 0, 1e-4);
}

TEST(CEnv, StagesLastTheirTime) {
    for (const auto& [rate, curve] :
         Rows<double, float>{{44100, 0}, {48000, 0.5f}, {44100, -0.25f}}) {
        SoundBench b(rate);
        CWavSound* s = addConstant(b);
        CEnv& e = *s->envelope[0];
        e.attack = 0.2f; // 200 ms
        e.decay = 0.3f;  // 450 ms
        e.sustain = 0.5f;
        e.release = 0.1f; // 50 ms
        e.ac = e.dc = curve;
        CVoice* v = b.play(s, 60);
        const auto ms = [&](double t) { return size_t(t * 0.001 * rate); };
        auto out = b.render(v, int(ms(1000)));
        // Values are exact at the ends of slices; between them gains run straight.
        const double k = 1 + 63 * double(curve) * double(curve);
        const double a = curve >= 0 ? 1 / k : k;
        const auto bend = [&](double t) { return t / ((1 - a) * t + a); };
        EXPECT_NEAR(double(out[ms(100)]), std::pow(bend(0.5), 2), 0.01);
        EXPECT_NEAR(double(out[ms(199.9)]), 1, 0.02);
        EXPECT_NEAR(double(out[ms(425)]), std::pow(1 - 0.5 * bend(0.5), 2), 0.01);
        EXPECT_NEAR(double(out[ms(700)]), 0.25, 1e-5);
        b.event(asData(midiNoteOff, 60, 0));
        out = b.render(v, int(ms(49)));
        EXPECT_NEAR(double(out[ms(25)]), 0.0625, 0.01);
        EXPECT_EQ(v->tail, 0);
        b.render(v, int(ms(2)));
        EXPECT_EQ(v->tail, int(rate * 0.01));
    }
}

/// Release 1 holds all envelopes but the first where they are, whose release lasts 5 s then, and
/// runs with the curve of the stage that it cuts.
/// Whatever other hosts there are.
TEST(CEnv, StagesCountAtTheRateOfTheirHost) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->envelope[0]->maxTime = 1000;
    s->envelope[0]->attack = 1.0f;
    CQV other;
    other.settingsEnabled = false;
    other.setRate(96000);
    const CSampler second(&other);
    EXPECT_EQ(b.play(s, 60)->stages[0].total, int(b.host.host->rate));
}

TEST(CEnv, ReleaseGoesOnFromWhereItCuts) {
    SoundBench b;
    CWavSound* s = addConstant(b);
    for (const int i : {0, 1}) {
        s->envelope[i]->initial = 0.25f;
        s->envelope[i]->attack = 0.4f;
        s->envelope[i]->release = 1.0f;
    }
    s->envelope[0]->ac = 0.5f;
    s->envelope[0]->rc = -1.0f;
    CVoice* v = b.play(s, 60);
    b.render(v, 4410);
    const float reached = v->stages[0].value, held = v->stages[1].value;
    EXPECT_GT(held, 0.25f);
    b.event(asData(midiNoteOff, 60, 0));
    b.render(v, 22050);
    EXPECT_EQ(v->stages[1].value, held);
    EXPECT_FALSE(v->stages[1].active);
    const double t = 0.1, a = 1 / (1 + 63 * 0.5 * 0.5);
    EXPECT_NEAR(double(v->stages[0].value), double(reached) * (1 - t / ((1 - a) * t + a)), 1e-4);
}

TEST(CLFO, RunsAtItsRateAfterItsDelay) {
    for (const auto& [hz, sync, mul, div, tempo, wantedHz] :
         Rows<float, int, int, int, float, double>{{8, 0, 1, 1, 120, 8},
                                                   {1, 1, 1, 4, 90, 6},
                                                   {1, 1, 3, 4, 180, 4},
                                                   {99, 0, 1, 1, 120, 50}}) {
        SoundBench b;
        b.host.host->tempoNow = tempo;
        CWavSound* s = addConstant(b);
        CLFO& l = *s->lfo[2];
        l.rate = hz;
        l.sync = sync;
        l.mul = mul;
        l.div = div;
        l.delay = 100;
        CVoice* v = b.play(s, 60);
        b.render(v, 4410);
        EXPECT_EQ(v->lfoStages[2].phase, 0.0) << "it waits";
        b.render(v, 44100 / 80);
        EXPECT_NEAR(v->lfoStages[2].phase, wantedHz * int(44100 / 80) / 44100, 1e-9);
    }
}

/// In slices of a millisecond; the first of ten cycles a second is not through yet.
TEST(CLFO, WavesFollowTheirPhase) {
    struct Case {
        int wave;
        double (*at)(double phase);
    };
    const Case cases[] = {
        {lfoSin, [](double p) { return std::sin(twoPi * p); }},
        {lfoTri, [](double p) { return p < 0.25   ? 4 * p
                                       : p < 0.75 ? 2 - 4 * p
                                                  : 4 * p - 4; }},
        {lfoSaw, [](double p) { return p < 0.5 ? 2 * p : 2 * p - 2; }},
        {lfoPulse, [](double p) { return p < 0.5 ? 1.0 : -1.0; }},
        {lfoRandom, [](double) { return 0.0; }}}; // not drawn yet
    for (const Case& c : cases) {
        SoundBench b;
        CWavSound* s = addConstant(b);
        s->lfo[1]->wave = c.wave;
        s->lfo[1]->rate = 10.0f;
        s->lfo[1]->setSlot(0, targetPan, 1.0f);
        CVoice* v = b.play(s, 60);
        for (int i = 0; i < 100; i++) {
            b.render(v, 44);
            EXPECT_NEAR(double(v->lfoStages[1].value), c.at(i * 44 * 10 / 44100.0) / 2 + 0.5, 1e-3)
                << "wave " << c.wave << " slice " << i;
        }
        float last = v->lfoStages[1].value;
        for (int i = 0; i < 20 && c.wave == lfoRandom; i++) { // drawn anew with each cycle
            b.render(v, 4410);
            EXPECT_NE(std::exchange(last, v->lfoStages[1].value), v->lfoStages[1].value);
            EXPECT_TRUE(last >= 0.0f && last < 1.0f);
        }
    }
}

TEST(CLFO, RestartChoosesItsPhase) {
    SoundBench b;
    b.host.host->clock->advance(44100 * 3 + 4410);
    b.host.host->clock->cut();
    COSCSound* s = b.addOsc();
    for (int i = 0; i < 3; i++) {
        s->lfo[i]->restart = i;
        s->lfo[i]->rate = 2.0f;
    }
    CVoice* one = b.play(s, 60);
    EXPECT_NEAR(one->lfoStages[0].phase, 0.2, 1e-6) << "free";
    EXPECT_EQ(one->lfoStages[1].phase, 0) << "poly";
    EXPECT_EQ(one->lfoStages[2].phase, 0) << "mono, without a voice before";
    b.render(one, 6000);
    CVoice* two = b.play(s, 64);
    EXPECT_EQ(two->lfoStages[1].phase, 0);
    EXPECT_EQ(two->lfoStages[2].phase, one->lfoStages[2].phase) << "mono";
}

/// Pitch and pan are moved by what a source is beyond its middle, all else is scaled by it. Targets
/// out of the list, as a file may hold them, do nothing.
TEST(CMod, SourcesMoveTheirTargets) {
    constexpr double velocity = 32 / 127.0, away = 2 * velocity - 1;
    for (const auto& [target, amount, semitones, volume, pan] :
         Rows<int, float, double, double, double>{
             {targetPitch, 12, 12 * away, 1, 0},
             {targetVolume, 0.5f, 0, 1 + 0.5 * (velocity - 1), 0},
             {targetVolume, -0.5f, 0, 1 - 0.5 * (velocity - 1), 0},
             {targetPan, 0.5f, 0, 1, 0.5 * away},
             {0, 1, 0, 1, 0},
             {-1, 1, 0, 1, 0},
             {10, 1, 0, 1, 0},
             {1 << 30, 1, 0, 1, 0}}) {
        SoundBench b;
        CWavSound* s = addConstant(b);
        s->vel->setSlot(1, target, amount);
        CVoice* v = b.play(s, 60, 32);
        std::vector<float> right;
        const auto left = b.render(v, 4000, &right);
        const double gain = volume * volume;
        EXPECT_NEAR(double(left[3000]), gain * (1 - pan / 2), 1e-5) << target;
        EXPECT_NEAR(double(right[3000]), gain * (1 + pan), 1e-5) << target;
        EXPECT_NEAR(v->pos, 4000 * std::pow(2, semitones / 12), 1e-2) << target;
    }
}

/// Settings of all kinds out of range must not break the sound.
TEST(CSound, SurvivesWildSettings) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->coarse = 1e30f;
    s->cutoff = 7.0f;
    s->phaseMod = 1e20f;
    for (Stored<float>* f :
         {&s->volume, &s->width, &s->modRing, &s->q, &s->feed1, &s->pan, &s->lfo[0]->rate})
        *f = std::nanf("");
    s->envelope[1]->setSlot(0, targetCutoff, -40.0f);
    s->lfo[0]->setSlot(0, targetPitch, 1e30f);
    s->lfo[1]->mul = 0;
    s->lfo[1]->sync = 1;
    s->lfo[2]->delay = 1 << 30;
    s->envelope[2]->maxTime = -5;
    const auto out = b.render(b.play(s, 60), 20000);
    for (float v : out) ASSERT_TRUE(std::isfinite(v));
    s->cutoff = s->volume = 1.0f;
    for (Stored<float>* f :
         {&s->coarse, &s->width, &s->modRing, &s->q, &s->feed1, &s->phaseMod, &s->pan})
        *f = 0.0f;
    s->envelope[1]->setSlot(0, targetCutoff, 1.0f);
    s->lfo[0]->setSlot(0, targetPitch, 0.0f);
    b.sampler.allNotesOff();
    EXPECT_GT(rms(b.render(b.play(s, 60), 4000), 1000, 4000), 0.1);
}

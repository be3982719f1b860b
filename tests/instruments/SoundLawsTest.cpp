#include "SoundFixture.h"

#include <complex>
#include <numbers>

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

/// Cents between the signal and `hz`, from how the phase drifts within a second.
double centsOff(const std::vector<float>& v, double hz, double rate) {
    const size_t window = size_t(rate / 4), apart = size_t(rate / 2);
    const auto a = bin(v, 100, window, hz / rate), b = bin(v, 100 + apart, window, hz / rate);
    const double drift = std::arg(b / a) / twoPi / (double(apart) / rate);
    return 1200 * std::log2((hz + drift) / hz);
}

/// A sample sound on a constant, so that the output shows the gain.
CWavSound* addConstant(SoundBench& b, float value = 1.0f, int frames = 300000) {
    return b.addWav(std::vector<float>(size_t(frames), value));
}

} // namespace

/// A cycle is 65535 steps of a table of 65536: the pitch is a 40th of a cent below its number.
TEST(COSCSound, IsInTune) {
    for (double rate : {44100.0, 48000.0, 96000.0}) {
        struct Case {
            int note;
            float detune, coarse, fine;
        };
        const Case cases[] = {{69, 0, 0, 0}, {45, 0, 12, 0}, {69, 1, 0, 0}, {60, 0.5f, 0, 0.25f}};
        for (const Case& c : cases) {
            SoundBench b(rate);
            COSCSound* s = b.addOsc();
            s->detune = c.detune;
            s->width = 1.0f;
            s->coarse = c.coarse;
            s->fine = c.fine;
            std::vector<float> right;
            const auto left = b.render(b.play(s, c.note), int(rate), &right);
            const double apart = double(c.detune) * double(c.detune) * 0.5;
            const double middle = c.note - 69 + double(c.coarse) + double(c.fine);
            const double concert = 440.0 * 65535 / 65536;
            const double hzL = concert * std::pow(2, (middle + apart) / 12);
            const double hzR = concert * std::pow(2, (middle - apart) / 12);
            EXPECT_NEAR(centsOff(left, hzL, rate), 0, 1e-3) << "note " << c.note;
            EXPECT_NEAR(centsOff(right, hzR, rate), 0, 1e-3) << "note " << c.note;
        }
    }
}

/// The steady response of the filter's three taps to a sine, against its transfer function.
TEST(CSound, FilterHasItsTransferFunction) {
    struct Case {
        int filter;
        float cutoff, q, cycles; ///< cycles of the sine per frame
    };
    const Case cases[] = {{filterLow, 0.5f, 0, 0.01f},      {filterLow, 0.3f, 0.9f, 0.02f},
                          {filterBand, 0.6f, 0.97f, 0.05f}, {filterBand, 1, 0, 0.2f},
                          {filterHigh, 0.4f, 0.5f, 0.01f},  {filterHigh, 0.9f, 1, 0.1f}};
    for (const Case& c : cases) {
        const int frames = 40000;
        std::vector<float> wave;
        for (int i = 0; i < frames; i++)
            wave.push_back(float(0.2 * std::sin(twoPi * double(c.cycles) * i)));
        SoundBench b;
        CWavSound* s = b.addWav(wave);
        s->setFilter(c.filter);
        s->setCutoff(c.cutoff);
        s->setQ(c.q);
        const auto out = b.render(b.play(s, 60), frames - 10);
        const double measured = std::abs(bin(out, 20000, 16000, double(c.cycles))) /
                                std::abs(bin(wave, 20000, 16000, double(c.cycles)));

        const std::complex<double> d = std::polar(1.0, -twoPi * double(c.cycles));
        const double f = double(c.cutoff) * double(c.cutoff);
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
    const Case cases[] = {{1, 0, 1, 1},    {0.5f, 0, 0.25, 0.25}, {1, 1, 0, 1.5},
                          {1, -1, 1.5, 0}, {1, 0.5f, 0.5, 1.25},  {1, -0.5f, 1.25, 0.5},
                          {1, -5, 1.5, 0}, {1, -20, 1.5, 0},      {0.5f, 7, 0, 0.375}};
    for (const Case& c : cases) {
        SoundBench b;
        CWavSound* s = addConstant(b);
        s->setVolume(c.volume);
        s->setPan(c.pan);
        std::vector<float> right;
        const auto left = b.render(b.play(s, 60), 4000, &right);
        EXPECT_NEAR(double(left[3000]), c.left, 1e-5) << double(c.pan);
        EXPECT_NEAR(double(right[3000]), c.right, 1e-5) << double(c.pan);
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
    struct Case {
        double rate;
        float curve;
    };
    for (const Case& c : {Case{44100, 0}, Case{48000, 0.5f}, Case{44100, -0.25f}}) {
        SoundBench b(c.rate);
        CWavSound* s = addConstant(b);
        CEnv& e = *s->envelope[0];
        e.attack = 0.2f; // 200 ms
        e.decay = 0.3f;  // 450 ms
        e.sustain = 0.5f;
        e.release = 0.1f; // 50 ms
        e.ac = e.dc = c.curve;
        CVoice* v = b.play(s, 60);
        const auto ms = [&](double t) { return size_t(t * 0.001 * c.rate); };
        auto out = b.render(v, int(ms(1000)));
        // Values are exact at the ends of slices; between them gains run straight.
        const double k = 1 + 63 * double(c.curve) * double(c.curve);
        const double a = c.curve >= 0 ? 1 / k : k;
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
        EXPECT_EQ(v->tail, int(c.rate * 0.01));
    }
}

/// Release 1 holds envelope 1 where it is at the note's end; on the amp envelope it lasts 5 s.
TEST(CEnv, FullReleaseHoldsAllButTheAmp) {
    SoundBench b;
    CWavSound* s = addConstant(b);
    s->envelope[0]->release = 1.0f;
    s->envelope[1]->initial = 0.25f;
    s->envelope[1]->attack = 1.0f;
    CVoice* v = b.play(s, 60);
    b.render(v, 4410);
    const float held = v->stages[1].value;
    b.event(asData(midiNoteOff, 60, 0));
    b.render(v, 4410);
    EXPECT_GT(held, 0.25f);
    EXPECT_EQ(v->stages[1].value, held);
    EXPECT_FALSE(v->stages[1].active);
    EXPECT_NEAR(double(v->stages[0].value), 1 - 0.1 / 5, 1e-4);
}

/// The release runs with the curve of the stage that it cuts.
TEST(CEnv, ReleaseKeepsTheCurveItCuts) {
    SoundBench b;
    CWavSound* s = addConstant(b);
    CEnv& e = *s->envelope[0];
    e.attack = 0.4f;
    e.ac = 0.5f;
    e.release = 0.2f;
    e.rc = -1.0f;
    CVoice* v = b.play(s, 60);
    b.render(v, 8820);
    b.event(asData(midiNoteOff, 60, 0));
    EXPECT_EQ(v->stages[0].curve, 0.5f);
    b.render(v, 4410);
    EXPECT_EQ(v->stages[0].curve, 0.5f);
}

/// Edges of a pulse LFO on the pan tell its period, delay and tempo.
TEST(CLFO, RunsAtItsRate) {
    struct Case {
        float hz;
        int sync, mul, div, delayMs;
        float tempo;
        double wantedHz;
    };
    const Case cases[] = {{8, 0, 1, 1, 0, 120, 8},
                          {20, 0, 1, 1, 100, 120, 20},
                          {1, 1, 1, 4, 0, 90, 6},
                          {1, 1, 3, 4, 0, 180, 4}};
    for (const Case& c : cases) {
        SoundBench b;
        b.host.host->tempoNow = c.tempo;
        CWavSound* s = addConstant(b);
        CLFO& l = *s->lfo[2];
        l.wave = lfoPulse;
        l.rate = c.hz;
        l.sync = c.sync;
        l.mul = c.mul;
        l.div = c.div;
        l.delay = c.delayMs;
        l.setSlot(0, targetPan, 1.0f);
        const auto out = b.render(b.play(s, 60), 5 * 44100);
        std::vector<size_t> rises; // of the left channel: the pulse falls
        for (size_t i = 6000; i < out.size(); i++)
            if (out[i - 1] < 0.75f && out[i] >= 0.75f) rises.push_back(i);
        ASSERT_GT(rises.size(), 5u);
        const double period = double(rises.back() - rises.front()) / double(rises.size() - 1);
        EXPECT_NEAR(44100 / period / c.wantedHz, 1, 1e-3);
        // While it waits it stands at its middle: no pan.
        if (c.delayMs > 0) {
            EXPECT_NEAR(double(out[3000]), 1, 1e-5);
        }
    }
}

TEST(CLFO, RandomHoldsFromWrapToWrap) {
    SoundBench b;
    CWavSound* s = addConstant(b);
    CLFO& l = *s->lfo[1];
    l.wave = lfoRandom;
    l.rate = 10.0f;
    CVoice* v = b.play(s, 60);
    EXPECT_EQ(v->lfoStages[1].value, 0.5f);
    b.render(v, 4400);
    EXPECT_EQ(v->lfoStages[1].value, 0.5f);
    std::vector<float> values;
    for (int i = 0; i < 20; i++) {
        b.render(v, 4410);
        values.push_back(v->lfoStages[1].value);
    }
    for (size_t i = 1; i < values.size(); i++) {
        EXPECT_NE(values[i], values[i - 1]);
        EXPECT_TRUE(values[i] >= 0.0f && values[i] < 1.0f);
    }
}

TEST(CLFO, RestartChoosesItsPhase) {
    SoundBench b;
    b.host.host->framesPlayed = 44100 * 3 + 4410;
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

/// Targets out of the list, as a file may hold them, do nothing.
TEST(CMod, StrangeTargetsHaveNoEffect) {
    SoundBench b;
    CWavSound* s = addConstant(b, 0.5f);
    const auto plain = b.render(b.play(s, 60), 3000);
    for (int target : {0, -1, 10, 1 << 30}) s->lfo[0]->setSlot(target & 3, target, 1.0f);
    b.sampler.allNotesOff();
    EXPECT_EQ(b.render(b.play(s, 60), 3000), plain);
}

/// Settings of all kinds out of range must not break the sound.
TEST(CSound, SurvivesWildSettings) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    const float nan = std::nanf("");
    s->coarse = 1e30f;
    s->cutoff = 7.0f;
    s->volume = s->width = s->modRing = nan;
    s->q = nan;
    s->feed1 = nan;
    s->phaseMod = 1e20f;
    s->pan = nan;
    s->envelope[1]->setSlot(0, targetCutoff, -40.0f);
    s->lfo[0]->setSlot(0, targetPitch, 1e30f);
    s->lfo[0]->rate = nan;
    s->lfo[1]->mul = 0;
    s->lfo[1]->sync = 1;
    s->lfo[2]->delay = 1 << 30;
    s->envelope[2]->maxTime = -5;
    const auto out = b.render(b.play(s, 60), 20000);
    for (float v : out) ASSERT_TRUE(std::isfinite(v));
    s->coarse = 0.0f;
    s->cutoff = s->volume = 1.0f;
    s->width = s->modRing = 0.0f;
    s->q = s->feed1 = s->phaseMod = s->pan = 0.0f;
    s->envelope[1]->setSlot(0, targetCutoff, 1.0f);
    s->lfo[0]->setSlot(0, targetPitch, 0.0f);
    b.sampler.allNotesOff();
    EXPECT_GT(rms(b.render(b.play(s, 60), 4000), 1000, 4000), 0.1);
}

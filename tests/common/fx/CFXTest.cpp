#include "FxFixture.h"
#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CEQ.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CGate.h"
#include "common/fx/CGuitarAmp.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

#include <memory>

namespace {

/// What comes out of the right side of a sweep, whose phase the left one has not.
template <class Fx>
Stereo sweep(float hz, int tempoSync, int waveform = 0, float degrees = 0) {
    Fx fx(44100, 0);
    fx.tempo = 90;
    fx.setTickNum(3);
    fx.setTickDen(4);
    fx.setTempoSync(tempoSync);
    fx.setFrequency(hz);
    fx.setWaveform(waveform);
    fx.setPhase(degrees);
    fx.setEnabled(1);
    Stereo in = fxSignal(5000), out(5000);
    runFx(fx, in, out, 1000);
    out.left = out.right;
    return out;
}

template <class Fx>
std::unique_ptr<CFX> make() {
    auto fx = std::make_unique<Fx>(44100, 0);
    fx->setEnabled(1);
    return fx;
}
template <>
std::unique_ptr<CFX> make<CEQ>() {
    auto eq = std::make_unique<CEQ>(eqPeaking);
    eq->setGain(12.0f);
    return eq;
}
template <>
std::unique_ptr<CFX> make<CDelay>() {
    auto delay = std::make_unique<CDelay>(44100, 0);
    delay->setEnabled(1);
    delay->setSync(0);
    delay->setTimeLeft(5.0f);
    delay->setTimeRight(5.0f);
    return delay;
}

double farthest(const Stereo& a, const Stereo& b) {
    double most = 0.0;
    for (size_t i = 0; i < a.left.size(); i++)
        most = std::max(most, std::abs(double(a.left[i]) - double(b.left[i])));
    return most;
}

} // namespace

/// 90 beats a minute and 4 / 3 of a cycle a beat are 2 Hz. Standing still, a sine begins where a
/// triangle is after a quarter, and a sawtooth is after a quarter where that is after an eighth.
TEST(CFX, SweepsKeepTimeAndHaveTheirWaves) {
    expectNear(sweep<CChorus>(9, 1), sweep<CChorus>(2, 0), 0, "chorus in tempo");
    expectNear(sweep<CPhaser>(9, 1), sweep<CPhaser>(2, 0), 0, "phaser in tempo");
    expectNear(sweep<CChorus>(0, 0, 1, 90), sweep<CChorus>(0, 0), 1e-5, "triangle");
    expectNear(sweep<CPhaser>(0, 0, 1, 90), sweep<CPhaser>(0, 0), 1e-5, "triangle");
    expectNear(sweep<CPhaser>(0, 0, 2, 90), sweep<CPhaser>(0, 0, 1, 45), 1e-5, "sawtooth");
}

/// No setting, however wild, leads out of a line or a table: the sanitizers watch.
TEST(CFX, WildSettingsStayInBounds) {
    CDelay delay(192000, 0);
    CChorus chorus(8000, 0);
    CPhaser phaser(8000, 0);
    CCompressor compressor(8000, 0);
    CGuitarAmp amp(8000, 0);
    CReverb reverb(192000, 0); // 250 ms at this rate are the whole pre-delay
    reverb.setPreDelay(300);
    Stereo in = fxSignal(60000), out(60000);
    for (float wild : {0.0f, -5.0f, 1e30f, -1e30f, std::nanf("")})
        for (int sync : {0, 1}) {
            delay.timeLeft = delay.timeRight = delay.spread = wild;
            chorus.delay = chorus.depth = chorus.frequency = chorus.waveform = wild;
            phaser.frequency = wild;
            compressor.threshold = compressor.ratio = compressor.gain = wild;
            compressor.attack = compressor.release = wild;
            chorus.phase = phaser.phase = wild;
            delay.mulLeft = delay.divRight = chorus.tickNum = phaser.tickDen = sync - 1;
            phaser.stages = phaser.waveform = amp.channel = 100 * sync - 1;
            delay.sync = chorus.tempoSync = phaser.tempoSync = sync;
            for (CFX* fx : std::initializer_list<CFX*>{&delay, &chorus, &phaser, &compressor, &amp,
                                                       &reverb}) {
                fx->setEnabled(1);
                fx->tempo = wild;
                runFx(*fx, in, out, 1000);
            }
        }
    delay.sync = 0;
    delay.timeLeft = delay.timeRight = 1e30f;
    for (int i = 0; i < 2 * CDelay::bufferFrames; i += 60000) runFx(delay, in, out, 1000);
    EXPECT_TRUE(std::isfinite(chorus.phasePos) && std::isfinite(phaser.phasePos));
}

/// One bad frame is over with its block.
TEST(CFX, RecoversFromWhatIsNoNumber) {
    for (float bad : {std::nanf(""), INFINITY, -INFINITY}) {
        Stereo shock(64), in = fxSignal(2000), out(2000), wanted(2000);
        shock.left[10] = shock.right[10] = bad;
        for (const auto create : {make<CCompressor>, make<CFilterFX>, make<CEQ>}) {
            const auto hit = create(), fresh = create();
            runFx(*hit, shock, shock, 64);
            runFx(*hit, in, out, 64);
            runFx(*fresh, in, wanted, 64);
            EXPECT_EQ(out.left, wanted.left) << hit->id.asChar() << ": " << bad;
        }
    }
}

TEST(CFX, ClearForgetsThePast) {
    for (const auto create :
         {make<CDelay>, make<CReverb>, make<CChorus>, make<CPhaser>, make<CBitcrusher>,
          make<CFilterFX>, make<CCompressor>, make<CGuitarAmp>, make<CEQ>}) {
        const auto used = create(), uncleared = create(), fresh = create();
        Stereo past = fxSignal(777, 5), in = fxSignal(3000), out(3000), wanted(3000), old(3000);
        for (CFX* fx : {used.get(), uncleared.get()}) {
            Stereo heard = past;
            runFx(*fx, heard, heard, 64);
        }
        used->clear();
        runFx(*used, in, out, 64);
        runFx(*fresh, in, wanted, 64);
        runFx(*uncleared, in, old, 64);
        expectNear(out, wanted, 1e-3, used->id.asChar());
        EXPECT_GT(farthest(old, wanted), 2e-3) << used->id.asChar() << " has no past";
    }
}

TEST(CFX, SettersClampAndIgnoreNaN) {
    CDelay delay(44100, 0);
    delay.setFeedback(0.25f);
    for (float bad : {std::nanf(""), INFINITY, -INFINITY}) delay.setFeedback(bad);
    EXPECT_EQ(delay.getFeedback(), 0.25f);
    delay.setFeedback(7.0f);
    EXPECT_EQ(delay.getFeedback(), 1.0f);
    CGuitarAmp amp(44100, 0);
    for (auto [given, kept] : {std::pair(0.25f, 0.25f), {2, 1}, {std::nanf(""), 1}, {-1, 0}}) {
        amp.setMid3(given);
        EXPECT_EQ(amp.getMid3(), kept);
    }
    CReverb reverb(44100, 0);
    reverb.setSize(500);
    EXPECT_EQ(reverb.getRevTime(), 1000);
    reverb.setRevTimeOld(4700);
    EXPECT_EQ(reverb.getRevTime(), 4000);
}

/// Once it rests, a sound meets it as if it had gone on working at the silence between, which a
/// twin has to: a speck that nobody hears keeps it awake.
TEST(CFX, RestsInSilenceUntilItSounds) {
    constexpr int block = 333, most = 20 * 44100 / block;
    for (const auto create :
         {make<CChorus>, make<CPhaser>, make<CCompressor>, make<CGate>, make<CGuitarAmp>}) {
        const auto rested = create(), awake = create();
        const std::string name = rested->id.asChar();
        for (CFX* fx : {rested.get(), awake.get()}) {
            Stereo sound = fxSignal(3000);
            runFx(*fx, sound, sound, block);
            EXPECT_FALSE(fx->rests()) << name;
        }
        for (int i = 0; i < most && !(rested->rests() && i > most / 10); i++) {
            Stereo silence(block), speck(block);
            speck.left[block / 2] = speck.right[block / 2] = 1e-18f;
            runFx(*rested, silence, silence, block);
            runFx(*awake, speck, speck, block);
        }
        EXPECT_TRUE(rested->rests()) << name;
        Stereo out = fxSignal(3000, 7), wanted = out;
        runFx(*rested, out, out, block);
        runFx(*awake, wanted, wanted, block);
        expectNear(out, wanted, 1e-6, name);
        EXPECT_FALSE(rested->rests()) << name;
    }
}

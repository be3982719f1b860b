#include "FxFixture.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

/// No setting, however wild, leads out of a line or a table: the sanitizers watch.
TEST(CFX, WildSettingsStayInBounds) {
    CDelay delay(192000, 0);
    CChorus chorus(8000, 0);
    CPhaser phaser(8000, 0);
    CCompressor compressor(8000, 0);
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
            phaser.stages = phaser.waveform = 100 * sync - 1;
            delay.sync = chorus.tempoSync = phaser.tempoSync = sync;
            for (CFX* fx :
                 std::initializer_list<CFX*>{&delay, &chorus, &phaser, &compressor, &reverb}) {
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

TEST(CFX, SettersClampAndIgnoreWhatIsNoNumber) {
    CDelay delay(44100, 0);
    delay.setFeedback(0.25f);
    for (float bad : {std::nanf(""), INFINITY, -INFINITY}) delay.setFeedback(bad);
    EXPECT_EQ(delay.getFeedback(), 0.25f);
    delay.setFeedback(7.0f);
    EXPECT_EQ(delay.getFeedback(), 1.0f);
    CReverb reverb(44100, 0);
    reverb.setSize(500);
    EXPECT_EQ(reverb.getRevTime(), 1000);
    reverb.setRevTimeOld(4700);
    EXPECT_EQ(reverb.getRevTime(), 4000);
    reverb.setPreDelay(300);
    EXPECT_EQ(reverb.getPreDelay(), 250);
}

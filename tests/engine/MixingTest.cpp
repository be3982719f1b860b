#include "engine/Mixing.h"
#include "StripFixture.h"
#include "common/fx/CDFT.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr int ramp = 132; // 3 ms of 44 frames

/// A value that glides linearly for the length of a ramp from a given frame on.
struct Glide {
    double from, to;
    int start;
    double at(int frame) const {
        return from + (to - from) * std::clamp(double(frame - start) / ramp, 0.0, 1.0);
    }
};

/// The ramp of 3 ms has to come out the same whatever the blocks are.
TEST(Mixing, RampsOfFaderAndPanCrossBlocksAndPieces) {
    const int total = 700, change = 350;
    for (const int blockFrames : {7, 50, 175, 350}) {
        StripFixture f;
        SignalComp* signal = f.addSignal();
        COutputChannel* ch = signal->output();
        std::vector<float> left, right;
        for (int at = 0; at < total; at += blockFrames) {
            if (at == change) {
                ch->vol = 0.25f;
                ch->pan = 0.5f;
            }
            f.block(blockFrames);
            left.insert(left.end(), f.left.begin(), f.left.end());
            right.insert(right.end(), f.right.begin(), f.right.end());
        }
        const Glide gain{1, 0.25, change}, panL{1, 0.5, change}, panR{1, 1.25, change};
        for (int i = 0; i < total; ++i) {
            const double g = gain.at(i) * gain.at(i);
            ASSERT_NEAR(left[size_t(i)], panL.at(i) * g, 1e-5) << blockFrames << ", frame " << i;
            // The audio out clips at full scale behind the strip.
            ASSERT_NEAR(right[size_t(i)], std::min(panR.at(i) * g, 1.0), 1e-5) << i;
        }
        EXPECT_EQ(ch->gain, 0.25f) << "the ramp lands on its target";
        EXPECT_EQ(ch->panL, 0.5f);
    }
}

/// Automation cuts the block at its exact frame, at both edges and wherever its time is rounded to.
TEST(Mixing, AutomationTakesEffectAtItsFrame) {
    struct Case {
        double time;
        int frame;
    };
    const int frames = 256;
    const Case cases[] = {{0, 0},       {1, 1},  {255, 255}, {100.4, 100},
                          {100.5, 101}, {-5, 0}, {256, 256}, {9000, 256}};
    for (const Case& c : cases) {
        StripFixture f;
        SignalComp* signal = f.addSignal();
        COutputChannel* ch = signal->output();
        ch->vol = 0.75f;
        f.block(frames);
        signal->moves = {{c.time, ch, 0, 0.5f}};
        f.block(frames);
        std::vector<float> out = f.left;
        f.block(frames);
        out.insert(out.end(), f.left.begin(), f.left.end());
        const Glide gain{0.75, 0.5, c.frame};
        for (int i = 0; i < 2 * frames; ++i)
            ASSERT_NEAR(out[size_t(i)], gain.at(i) * gain.at(i), 1e-5) << c.time << ", frame " << i;
    }
}

TEST(Mixing, AutomationOfOthersAndOfBusesThatAreNotThereIsIgnored) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    SignalComp* other = f.addSignal();
    CGroupCh* bus = f.addBus();
    COutputChannel* ch = signal->output();
    signal->moves = {{10, other->output(), 0, 0.0f},
                     {20, ch->sendLevels[1], 0, 0.5f},
                     {30, ch->sendLevels[0], 1, 0.5f},
                     {40, ch->sendLevels[0], 0, 0.5f},
                     {50, nullptr, 0, 0.5f}};
    f.block();
    EXPECT_EQ(other->output()->vol, 1.0f);
    EXPECT_EQ(ch->sendLevels[1]->level, 0.0f);
    EXPECT_EQ(ch->sendLevels[0]->level, 0.5f);
    EXPECT_EQ(bus->input()->bufL[39], 0.0f);
    EXPECT_EQ(bus->input()->bufL[40], 0.25f);
}

/// Mute and solo, for a source, a group and a send bus; settled after the ramp.
TEST(Mixing, MuteAndSoloAsTheGainFormula) {
    struct Case {
        const char* name;
        bool mute, solo, otherSolo;
        double signal, sent;
    };
    const Case cases[] = {
        {"plain", false, false, false, 1, 0.25},      {"muted", true, false, false, 0, 0},
        {"solo elsewhere", false, false, true, 0, 0}, {"its own solo", false, true, false, 1, 0.25},
        {"both", false, true, true, 1, 0.25},         {"solo and mute", true, true, false, 0, 0}};
    for (const Case& c : cases) {
        StripFixture f;
        SignalComp* signal = f.addSignal();
        SignalComp* other = f.add(new SignalComp(f.host));
        CGroupCh* group = f.add(new CGroupCh(f.host));
        CGroupCh* bus = f.addBus();
        f.out->addAudioCable(group->output(), nullptr);
        SignalComp* inGroup = f.add(new SignalComp(f.host));
        group->addAudioCable(inGroup->output(), nullptr);
        inGroup->output()->solo = c.otherSolo;
        signal->output()->sendLevels[0]->level = 0.5f;
        signal->output()->mute = c.mute;
        signal->output()->solo = c.solo;
        for (int i = 0; i < 3; ++i) f.block();
        EXPECT_EQ(signal->output()->bufL[0], float(c.signal)) << c.name;
        EXPECT_EQ(bus->input()->bufL[0], float(c.sent)) << c.name;
        EXPECT_EQ(bus->output()->bufL[0], float(c.sent)) << "no solo silences a bus: " << c.name;
        const bool heard = c.otherSolo || !c.solo;
        EXPECT_EQ(group->output()->bufL[0], heard ? 1.0f : 0.0f) << c.name;
        EXPECT_FALSE(other->processed) << "nothing pulls it";
    }
}

/// The tap is behind the fader, both levels count squared, a muted send gets nothing, and a bus
/// beyond the 32nd is out of reach.
TEST(Mixing, SendsTapBehindTheFader) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    COutputChannel* ch = signal->output();
    std::vector<CGroupCh*> buses;
    for (int k = 0; k < maxSends + 1; ++k) buses.push_back(f.addBus());
    ch->vol = 0.5f;
    for (int k = 0; k < maxSends; ++k) ch->sendLevels[k]->level = float(k) / maxSends;
    ch->sendLevels[5]->muted = 1;
    f.block();
    f.block();
    for (int k = 0; k < maxSends; ++k) {
        const double level = double(k) / maxSends;
        EXPECT_NEAR(buses[size_t(k)]->input()->bufR[9], k == 5 ? 0 : 0.25 * level * level, 1e-6)
            << k;
    }
    EXPECT_EQ(buses[maxSends]->input()->bufL[9], 0.0f);
}

/// A send waits for the latest of the sources.
TEST(Mixing, SendsAreDelayedWithTheirPath) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    f.addSignal()->latency = 100;
    CGroupCh* bus = f.addBus();
    signal->left = signal->right = [](long at) { return float(at); };
    signal->output()->sendLevels[0]->level = 1.0f;
    std::vector<float> sent;
    for (int i = 0; i < 4; ++i) {
        f.block(64);
        sent.insert(sent.end(), bus->input()->bufL, bus->input()->bufL + 64);
    }
    for (int i = 0; i < 256; ++i) ASSERT_EQ(sent[size_t(i)], float(std::max(i - 100, 0))) << i;
}

TEST(Mixing, HoldKeepsTheOvershootAndTheMeterEndsAtFullScale) {
    for (const float level : {0.5f, 1.0f, 1.5f, -1.5f}) {
        StripFixture f;
        SignalComp* signal = f.addSignal();
        signal->left = [level](long at) { return at == 77 ? level : 0.0f; };
        signal->right = [](long) { return std::nanf(""); };
        f.block();
        const COutputChannel* ch = signal->output();
        EXPECT_EQ(ch->peakL, std::min(std::fabs(level), 1.0f));
        EXPECT_EQ(ch->holdL, std::fabs(level));
        EXPECT_EQ(ch->peakR, 0.0f) << "what is no number raises no meter";
        EXPECT_EQ(f.right[0], 0.0f);
    }
}

/// Idle works out the newest block, and only while the spectrum is on.
TEST(Mixing, SpectrumIsThatOfTheNewestBlockAtTheOut) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    int harmonic = 5;
    signal->left = signal->right = [&](long at) {
        return float(0.5 * std::cos(2 * 3.14159265 * harmonic * double(at) / 256));
    };
    for (const int next : {5, 3}) {
        harmonic = next;
        f.block();
    }
    f.host->idle();
    const std::vector<double>& bands = f.host->dft->bands;
    EXPECT_NEAR(bands[2], 0.5, 1e-3);
    EXPECT_NEAR(bands[4], 0.0, 1e-3) << "an older block is left out";
    f.host->spectrumOn = 0;
    harmonic = 7;
    f.block();
    f.host->idle();
    EXPECT_NEAR(bands[6], 0.0, 1e-3);
}

TEST(Mixing, FreezingPassesTheSoundAndMovesTheMeters) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    signal->output()->vol = 0.25f;
    f.host->renderMode = 1;
    f.host->renderFreeze = true;
    f.host->prepare(64);
    signal->process(64);
    signal->mix(64);
    EXPECT_EQ(signal->output()->bufL[63], 1.0f);
    EXPECT_EQ(signal->output()->peakL, 1.0f);
}

/// Two cables from one source: it runs once and is heard twice.
TEST(Mixing, SourceRunsOnceHoweverManyCablesPullIt) {
    StripFixture f;
    SignalComp* signal = f.add(new SignalComp(f.host));
    CGroupCh* group = f.add(new CGroupCh(f.host));
    f.out->addAudioCable(group->output(), nullptr);
    group->addAudioCable(signal->output(), nullptr);
    group->audioCables.add(createAudioCable(group, signal->output(), nullptr));
    signal->left = [](long at) { return float(at); };
    f.block(64);
    EXPECT_EQ(signal->at, 64);
    EXPECT_EQ(group->output()->bufL[5], 10.0f);
}

TEST(Mixing, CyclesAndEndlessChainsComeToAnEnd) {
    StripFixture f;
    SignalComp* a = f.addSignal();
    SignalComp* b = f.add(new SignalComp(f.host));
    a->addAudioCable(b->output(), nullptr);
    b->addAudioCable(a->output(), nullptr);
    b->addAudioCable(b->output(), nullptr);
    a->addMIDICable(b->outPort(), nullptr);
    b->addMIDICable(a->outPort(), nullptr);
    a->output()->vol = 0.5f;
    f.block();
    f.block();
    EXPECT_EQ(a->output()->bufL[0], 0.5f) << "the strip runs once, behind its source";

    SignalComp* end = f.addSignal();
    for (int i = 0; i < 1000; ++i) {
        SignalComp* next = f.add(new SignalComp(f.host));
        end->addAudioCable(next->output(), nullptr);
        end = next;
    }
    f.block();
    EXPECT_FALSE(end->processed) << "too deep to be pulled";
    EXPECT_FALSE(end->busy);
}

TEST(Mixing, AllNotesOffGoesThroughTheFirstCableOnce) {
    StripFixture f;
    SignalComp* from = f.add(new SignalComp(f.host));
    SignalComp* to = f.addSignal();
    to->inPorts.add(new CInputPort(to));
    to->addMIDICable(from->outPort(), to->inPort(0));
    to->addMIDICable(from->outPort(), to->inPort(1));
    to->allNotesOff = 1;
    f.block();
    ASSERT_EQ(to->inPort(0)->count, 16);
    EXPECT_EQ(to->inPort(1)->count, 0);
    for (int ch = 0; ch < 16; ++ch) {
        EXPECT_EQ(to->inPort(0)->events[ch].data, 0x7BB0 | ch);
        EXPECT_EQ(to->inPort(0)->events[ch].time, ch);
    }
    f.block();
    EXPECT_EQ(to->inPort(0)->count, 0);
}

/// What sounds when a step takes the source away must not hang, though no cable is left to tell.
TEST(Mixing, WhatLosesItsMidiSourceFallsSilent) {
    StripFixture f;
    SignalComp* from = f.add(new SignalComp(f.host));
    SignalComp* to = f.addSignal();
    f.connectMIDI(from, to);
    f.block();
    CUndo* step = f.host->undoStart("Cut", f.host, undoGraph);
    f.host->stripCables(from, step);
    step->asRemove(from, &f.host->comps);
    f.host->undoEnd(step, true);
    ASSERT_TRUE(to->midiCables.empty());
    f.block();
    EXPECT_EQ(to->inPort()->count, 16);
    f.block();
    EXPECT_EQ(to->inPort()->count, 0);
}

/// The lanes of the fast loop and its rest have to agree with the plain comparison.
TEST(Mixing, LoopsAgreeWithThePlainFormAtEveryLength) {
    for (int frames = 0; frames < 40; ++frames) {
        std::vector<float> buf(size_t(frames) + 1, 0.0f);
        float expected = 0.25f;
        for (int i = 0; i < frames; ++i) {
            buf[size_t(i)] = float((i * 7919) % 23 - 11) / 7;
            expected = std::max(expected, std::fabs(buf[size_t(i)]));
        }
        EXPECT_EQ(highest(buf.data(), frames, 0.25f), expected) << frames;
        const float scaled = scaleAndMeter(buf.data(), frames, 2.0f, 0.5f);
        EXPECT_EQ(scaled, expected * 2) << frames;
    }
}

} // namespace

#include "engine/Mixing.h"
#include "StripFixture.h"
#include "support/Rows.h"

#include <algorithm>
#include <cmath>

namespace {

/// A value that glides linearly from a given frame on, for 3 ms of 44 frames.
struct Glide {
    double from, to;
    int start;
    double at(int frame) const {
        return from + (to - from) * std::clamp((frame - start) / 132.0, 0.0, 1.0);
    }
};

} // namespace

TEST(Mixing, RampsOfFaderAndPanCrossBlocksAndPieces) {
    constexpr int change = 350;
    for (const int blockFrames : {7, 50, 175, 350}) {
        StripFixture f;
        COutputChannel* ch = f.addSignal()->output();
        f.run(change / blockFrames, blockFrames);
        ch->vol = 0.25f;
        f.run(1, 7);
        ch->pan = 0.5f;
        f.run(change / blockFrames, blockFrames);
        const Glide gain{1, 0.25, change}, panL{1, 0.5, change + 7}, panR{1, 1.25, change + 7};
        for (int i = 0; i < int(f.left.size()); ++i) {
            const double g = gain.at(i) * gain.at(i);
            ASSERT_NEAR(f.left[size_t(i)], panL.at(i) * g, 1e-5) << blockFrames << ", frame " << i;
            // The audio out clips at full scale behind the strip.
            ASSERT_NEAR(f.right[size_t(i)], std::min(panR.at(i) * g, 1.0), 1e-5) << i;
        }
        EXPECT_EQ(ch->gain, 0.25f) << "the ramp lands on its target";
        EXPECT_EQ(ch->panL, 0.5f);
    }
}

/// Automation cuts the block at its exact frame, at both edges and wherever its time is rounded to.
TEST(Mixing, AutomationTakesEffectAtItsFrame) {
    for (const auto& [time, frame] : Rows<double, int>{
             {0, 0}, {255, 255}, {100.4, 100}, {100.5, 101}, {-5, 0}, {256, 256}, {NAN, 0}}) {
        StripFixture f;
        SignalComp* signal = f.addSignal();
        signal->moves = {{time, signal->output(), 0, 0.5f}};
        f.run(2, 256);
        const Glide gain{1, 0.5, frame};
        for (int i = 0; i < 512; ++i)
            ASSERT_NEAR(f.left[size_t(i)], gain.at(i) * gain.at(i), 1e-5)
                << time << ", frame " << i;
    }
}

TEST(Mixing, AutomationOfOthersIsIgnored) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    COutputChannel* other = f.addSignal()->output();
    CGroupCh* bus = f.addBus();
    CSend* const* sends = signal->output()->sendLevels;
    signal->moves = {{10, other, 0, 0.0f},
                     {20, sends[1], 0, 0.5f},
                     {30, sends[0], 1, 0.5f},
                     {40, sends[0], 0, 0.5f},
                     {50, nullptr, 0, 0.5f}};
    f.block();
    EXPECT_EQ(other->vol, 1.0f);
    EXPECT_EQ(sends[1]->level, 0.0f) << "of a bus that is not there";
    EXPECT_EQ(bus->input()->bufL[39], 0.0f);
    EXPECT_EQ(bus->input()->bufL[40], 0.25f);
}

/// Mute and solo, for a source, a group and a send bus; settled after the ramp.
TEST(Mixing, MuteAndSoloAsTheGainFormula) {
    for (const auto& [mute, solo, otherSolo, signal] :
         Rows<bool, bool, bool, float>{{false, false, false, 1},
                                       {true, false, false, 0},
                                       {false, false, true, 0},
                                       {false, true, false, 1},
                                       {false, true, true, 1},
                                       {true, true, false, 0}}) {
        StripFixture f;
        COutputChannel* ch = f.addSignal()->output();
        CGroupCh* group = f.add(new CGroupCh(f.host));
        CGroupCh* bus = f.addBus();
        f.connect(group);
        SignalComp* inGroup = f.add(new SignalComp(f.host));
        f.connect(inGroup, group);
        inGroup->output()->solo = otherSolo;
        ch->sendLevels[0]->level = 0.5f;
        ch->mute = mute;
        ch->solo = solo;
        f.run(3);
        SCOPED_TRACE(testing::Message() << mute << solo << otherSolo);
        EXPECT_EQ(ch->bufL[0], signal);
        EXPECT_EQ(bus->input()->bufL[0], 0.25f * signal);
        EXPECT_EQ(bus->output()->bufL[0], 0.25f * signal) << "no solo silences a bus";
        EXPECT_EQ(bus->output()->anySolo, 0);
        EXPECT_EQ(group->output()->bufL[0], otherSolo || !solo ? 1.0f : 0.0f);
    }
}

/// What a soloed strip is fed by stays, all the way up: through groups and components, and into a
/// bus by its sends. A track's channel is fed by what arrives at that track alone.
TEST(Mixing, SoloKeepsWhatFeedsIt) {
    StripFixture f;
    CGroupCh *outer = f.add(new CGroupCh(f.host)), *inner = f.add(new CGroupCh(f.host));
    CGroupCh* bus = f.addBus();
    SignalComp *member = f.add(new SignalComp(f.host)), *before = f.add(new SignalComp(f.host)),
               *other = f.addSignal(), *sending = f.addSignal(), *mutedSend = f.addSignal();
    f.connect(outer);
    f.connect(inner, outer);
    f.connect(member, inner);
    f.connect(before, member);
    f.connect(before, before); // a ring
    sending->output()->sendLevels[0]->level = 1.0f;
    mutedSend->output()->sendLevels[0]->level = 1.0f;
    mutedSend->output()->sendLevels[0]->muted = 1;
    const Comps signals = {member, before, other, sending, mutedSend};
    for (const auto& [soloed, heard] : Rows<CComp*, Comps>{{nullptr, signals},
                                                           {outer, {member, before}},
                                                           {inner, {member, before}},
                                                           {member, {member, before}},
                                                           {before, {before}},
                                                           {bus, {sending}},
                                                           {f.out, signals}}) {
        for (CComp* c : Comps{outer, inner, bus, member, before, f.out})
            c->output()->solo = c == soloed;
        f.run(3);
        for (CComp* c : signals)
            EXPECT_EQ(c->output()->bufL[0] != 0.0f, std::ranges::count(heard, c) > 0)
                << "case " << f.host->comps.indexed(soloed) << ", " << f.host->comps.indexed(c);
    }
}

/// A strip that is safe goes on in the solo of others; what feeds it does not.
TEST(Mixing, SoloSafeStripsGoOn) {
    StripFixture f;
    SignalComp *safe = f.addSignal(), *other = f.addSignal(), *soloed = f.addSignal();
    safe->output()->soloSafe = 1;
    soloed->output()->solo = 1;
    f.run(3);
    EXPECT_NE(safe->output()->bufL[0], 0.0f);
    EXPECT_EQ(other->output()->bufL[0], 0.0f);
    EXPECT_NE(soloed->output()->bufL[0], 0.0f);
    safe->output()->mute = 1;
    f.run(3);
    EXPECT_EQ(safe->output()->bufL[0], 0.0f) << "mute is another thing";
}

/// The mean of a steady signal is reached in some tenths of a second, and nothing is measured that
/// nobody wants.
TEST(Mixing, MeansAreMeasuredOnDemand) {
    StripFixture f;
    SignalComp* source = f.addSignal();
    f.run(100);
    EXPECT_EQ(source->output()->powerL, 0.0f);
    source->output()->powerWanted = 1;
    f.run(100);
    const float level = std::abs(source->output()->bufL[0]);
    EXPECT_NEAR(std::sqrt(source->output()->powerL), level, 0.01f * level);
    const float squares[] = {1, -2, 3, -4, 5, -6, 7, -8, 9, -10, 11};
    EXPECT_EQ(sumOfSquares(squares, 11), 506.0f);
    EXPECT_EQ(sumOfSquares(squares, 3), 14.0f);
    EXPECT_EQ(sumOfSquares(squares, 0), 0.0f);
}

/// The tap is behind the fader and waits for the latest of the sources, both levels count squared,
/// a muted send gets nothing, and a bus beyond the 32nd is out of reach.
TEST(Mixing, SendsTapBehindTheFader) {
    StripFixture f(64);
    SignalComp* signal = f.addSignal();
    f.addSignal()->latency = 100;
    signal->left = [](long at) { return float(at); };
    COutputChannel* ch = signal->output();
    std::vector<CGroupCh*> buses;
    for (int k = 0; k < maxSends + 1; ++k) buses.push_back(f.addBus());
    ch->vol = 0.5f;
    for (int k = 0; k < maxSends; ++k) ch->sendLevels[k]->level = float(k) / maxSends;
    ch->sendLevels[5]->muted = 1;
    f.run(6);
    for (int k = 0; k < maxSends; ++k) {
        const double level = double(k) / maxSends;
        const double sent = k == 5 ? 0 : 0.25 * level * level * (5 * 64 + 9 - 100);
        EXPECT_NEAR(buses[size_t(k)]->input()->bufL[9], sent, 1e-4) << k;
    }
    EXPECT_EQ(buses[maxSends]->input()->bufL[9], 0.0f);
}

/// Two cables from one source: it runs once and is heard twice. A ring of cables, and a chain that
/// is too deep to be pulled, come to an end.
TEST(Mixing, SourcesRunOnceHoweverTheyArePulled) {
    StripFixture f;
    SignalComp* a = f.addSignal();
    SignalComp* b = f.add(new SignalComp(f.host));
    CGroupCh* group = f.add(new CGroupCh(f.host));
    f.connect(group);
    f.connect(a, group);
    group->audioCables.add(createAudioCable(group, a->output(), nullptr));
    for (const auto& [from, to] : {std::pair{a, b}, {b, a}, {b, b}}) {
        f.connect(from, to);
        f.connectMIDI(from, to);
    }
    a->output()->vol = 0.5f;
    b->output()->vol = 0.0f;
    f.block();
    f.block();
    EXPECT_EQ(a->at, 512);
    EXPECT_EQ(a->output()->bufL[0], 0.25f) << "the strip runs once, behind its source";
    EXPECT_EQ(group->output()->bufL[0], 0.5f);

    SignalComp* end = f.addSignal();
    for (int i = 0; i < 1000; ++i) {
        SignalComp* next = f.add(new SignalComp(f.host));
        f.connect(next, end);
        end = next;
    }
    f.block();
    EXPECT_FALSE(end->processed || end->busy);
}

/// By the first cable, once; and when a step takes the source away nothing must hang, though no
/// cable is left to tell.
TEST(Mixing, AllNotesOffGoesThroughTheFirstCableOnce) {
    StripFixture f;
    SignalComp* from = f.add(new SignalComp(f.host));
    SignalComp* to = f.addSignal();
    {
        const GraphHold hold(f.host);
        to->inPorts.add(new CInputPort(to));
        to->addMIDICable(from->outPort(), to->inPort());
        to->addMIDICable(from->outPort(), to->inPort(1));
    }
    const auto expectOnce = [&] {
        f.block();
        ASSERT_EQ(to->inPort(0)->count, 16);
        EXPECT_EQ(to->inPort(1)->count, 0);
        for (int ch = 0; ch < 16; ++ch) {
            EXPECT_EQ(to->inPort(0)->events[ch].data, 0x7BB0 | ch);
            EXPECT_EQ(to->inPort(0)->events[ch].time, ch);
        }
        f.block();
        EXPECT_EQ(to->inPort(0)->count, 0);
    };
    to->allNotesOff = 1;
    expectOnce();
    f.step([&](CUndo* u) { f.host->stripCables(from, u); });
    ASSERT_TRUE(to->midiCables.empty());
    expectOnce();
}

/// In the lanes of the fast loops and in their rest.
TEST(Mixing, PeaksAreFoundAtEveryPlace) {
    for (int frames = 1; frames < 40; ++frames)
        for (int at = 0; at < frames; ++at) {
            std::vector<float> buf(size_t(frames), 0.25f);
            buf[size_t(at)] = at % 2 ? 1.5f : -1.5f;
            EXPECT_EQ(highest(buf.data(), frames, 0.5f), 1.5f) << at << " of " << frames;
            EXPECT_EQ(scaleAndMeter(buf.data(), frames, 2.0f, 0.5f), 3.0f) << at;
            EXPECT_EQ(std::fabs(buf[size_t(at)]), 3.0f);
        }
}

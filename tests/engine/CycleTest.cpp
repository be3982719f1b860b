#include "engine/CClick.h"
#include "engine/CPreviewBase.h"
#include "engine/MidiBytes.h"
#include "engine/StripFixture.h"

#include "base/Delegates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace {

/// A step up of 0.5 on the left and a step down on the right.
SignalComp* addSteps(StripFixture& t) {
    SignalComp* s = t.addSignal();
    s->left = [](long) { return 0.5f; };
    s->right = [](long) { return -0.25f; };
    return s;
}

bool silent(const TestHost& t) {
    return std::ranges::all_of(t.left, [](float x) { return x == 0.0f; }) &&
           std::ranges::all_of(t.right, [](float x) { return x == 0.0f; });
}

} // namespace

/// Whatever keeps the graph off, the device plays silence and the state of the graph stays.
TEST(Cycle, SilenceWhileTheGraphIsOff) {
    struct Case {
        const char* name;
        void (*off)(CQV*);
        int frames;
    };
    const Case cases[] = {
        {"suspended", [](CQV* q) { q->audioSuspended = 1; }, 256},
        {"rendering", [](CQV* q) { q->renderMode = 1; }, 256},
        {"busy", [](CQV* q) { q->busy = true; }, 256},
        {"block too large", [](CQV*) {}, 1025},
        {"held by the interface", [](CQV* q) { q->tryHold(GraphOwner::interface); }, 256},
    };
    for (const Case& c : cases) {
        StripFixture t;
        SignalComp* s = addSteps(t);
        c.off(t.host);
        t.block(c.frames);
        EXPECT_TRUE(silent(t)) << c.name;
        EXPECT_EQ(s->at, 0) << c.name;
        t.host->busy = false;
        t.host->renderMode = 0;
        t.host->releaseHold();
    }
    StripFixture t;
    SignalComp* s = addSteps(t);
    float block[4] = {1, 1, 1, 1};
    float* outs[] = {block, block};
    EXPECT_EQ(libio(outs, outs, 2, 2, 0, nullptr, 0), 0);
    EXPECT_EQ(s->at, 0) << "no frames";
}

/// Channel flags lead device channels in and out; whatever lies outside the device is silent.
TEST(Cycle, DeviceChannelsAreMapped) {
    struct Case {
        std::vector<int> ins, outs; ///< flags
        float left, right;
    };
    // In: 0.5 and 0.25 on the device channels 0 and 1. Out: (old + in), each limited.
    const Case cases[] = {
        {{0, 1}, {0, 1}, 0.5f, 0.25f}, {{1, 2}, {0, 1}, 0.0f, 0.0f},
        {{0}, {0, 1}, 0.5f, 0.5f},     {{1}, {0, 1}, 0.25f, 0.25f},
        {{5}, {0, 1}, 0.0f, 0.0f},     {{0, 1}, {1}, 0.0f, 0.375f},
        {{0, 1}, {0}, 0.375f, 0.0f},   {{0, 1}, {0, 31}, 0.0f, 0.0f},
        {{0, 1}, {}, 0.0f, 0.0f},      {{0, 1, 2}, {0, 1, 5}, 0.5f, 0.25f},
    };
    for (size_t k = 0; k < std::size(cases); ++k) {
        TestHost t;
        for (int i = 0; i < maxDeviceChannels; ++i) {
            t.in->channelUsed[i] = std::ranges::count(cases[k].ins, i) > 0;
            t.out->channelUsed[i] = std::ranges::count(cases[k].outs, i) > 0;
        }
        t.connect(t.in);
        t.feedL.assign(1024, 0.5f);
        t.feedR.assign(1024, 0.25f);
        t.run();
        EXPECT_FLOAT_EQ(t.left[1000], cases[k].left) << "case " << k;
        EXPECT_FLOAT_EQ(t.right[1000], cases[k].right) << "case " << k;
        EXPECT_EQ(t.out->chs, std::min(int(cases[k].outs.size()), 2)) << "case " << k;
    }
}

/// Two outs on one device channel add up, and the volume takes hold of the first one twice.
TEST(Cycle, OutsOnOneDeviceChannelAdd) {
    StripFixture t;
    SignalComp* s = addSteps(t);
    auto* second = t.add(new CAudioOut(t.host));
    second->channelUsed[0] = second->channelUsed[1] = 1;
    t.connect(s, second);
    t.host->listenVolume = 0.5f;
    t.block();
    constexpr float g = 0.25f;
    EXPECT_FLOAT_EQ(t.left[10], (0.5f * g + 0.5f) * g);
}

TEST(Cycle, DeviceSamplesAreLimitedAndFinite) {
    struct Case {
        float in, out;
    };
    const Case cases[] = {{1.5f, 1.0f},
                          {-7.0f, -1.0f},
                          {std::nanf(""), 0.0f},
                          {std::numeric_limits<float>::infinity(), 0.0f},
                          {0.75f, 0.75f}};
    for (const Case& c : cases) {
        StripFixture t;
        t.addSignal()->left = [&c](long at) { return at == 3 ? c.in : 0.0f; };
        t.block();
        EXPECT_EQ(t.left[3], c.out) << c.in;
        EXPECT_EQ(t.left[4], 0.0f) << c.in;
    }
}

/// The meters of an input: the live one ends at full scale, the hold keeps the overshoot.
TEST(Cycle, InputMeters) {
    StripFixture t;
    t.addSignal()->left = [](long at) { return at == 5 ? -1.5f : at == 6 ? 1.0f : 0.0f; };
    t.block();
    const CInputChannel* in = t.out->input();
    EXPECT_EQ(in->peakL, 1.0f);
    EXPECT_EQ(in->holdL, 1.5f);
    EXPECT_EQ(in->peakR, 1.0f);
    EXPECT_EQ(in->holdR, 1.0f);
}

// MIDI

TEST(Cycle, MidiComesInByDeviceOnTheFirstFrame) {
    for (const int filter : {-1, 0, 3}) {
        TestHost t;
        t.connectMIDI(t.midiIn, t.midiOut);
        t.midiIn->device = filter;
        t.send(asData(midiNoteOn, 60, 100), 0);
        t.send(asData(midiNoteOn, 61, 100), 3);
        t.run();
        EXPECT_EQ(t.host->midiActivity, 1.0f);
        ASSERT_EQ(t.sent.size(), filter == -1 ? 2u : 1u);
        EXPECT_EQ(asByte1(t.sent[0].data), filter == 3 ? 61 : 60);
        EXPECT_EQ(t.sent.back().frame, 0);
    }
}

/// Times are truncated, and kept within the block; other kinds of event stay here.
TEST(Cycle, MidiGoesOut) {
    StripFixture t;
    class Source : public CComp {
    public:
        explicit Source(CQV* root) : CComp(root) {}
        void init() override { outPorts.add(new COutputPort(this)); }
        void process(int) override {
            const ProcessGuard guard(this);
            if (!guard.enter) return;
            const int note = asData(midiNoteOn, 60, 100);
            for (const double time : {-3.0, 0.0, 17.9, 255.99, 256.0, 1e12})
                outPort()->addMidiEvent(time, note);
            outPort()->push(1.0, note, eventParam, 0.5f, 0, this, nullptr);
            outPort()->push(1.0, note, eventConsumed, 0.0f, 0, nullptr, nullptr);
        }
    };
    auto* s = t.add(new Source(t.host));
    t.connectMIDI(s, t.midiOut);
    t.midiOut->device = 2;
    t.block(256);
    std::vector<int> frames;
    for (const AamEvent& e : t.sent) {
        frames.push_back(e.frame);
        EXPECT_EQ(e.device, 2);
    }
    EXPECT_EQ(frames, (std::vector{0, 0, 17, 255, 255, 255}));
}

TEST(Cycle, RecordsBeyondTheArrayAreNeitherReadNorWritten) {
    TestHost t;
    std::vector<AamEvent> events(size_t(aamMaxEvents) + 1, AamEvent{midiNoteOn, 0, {}, 0});
    events.back().data = 12345;
    std::vector<float> block(1024);
    float* bufs[] = {block.data(), block.data()};
    std::vector<CMIDIOut*> outs;
    for (int i = 0; i < 40; ++i) t.connectMIDI(t.midiIn, t.add(new CMIDIOut(t.host)));
    EXPECT_EQ(libio(bufs, bufs, 2, 2, 1024, events.data(), aamMaxEvents + 1), aamMaxEvents)
        << "40 ports of 511 events want more";
    EXPECT_EQ(events.back().data, 12345);
    EXPECT_EQ(libio(bufs, bufs, 2, 2, 1024, nullptr, 5), 0);
}

// Order and guests of a block

TEST(Cycle, BusesComeBehindTheirSources) {
    StripFixture t;
    SignalComp* s = addSteps(t);
    CGroupCh* bus = t.addBus();
    {
        // The bus stands first among the cables; its input is filled by the other source all the
        // same.
        const GraphHold hold(t.host);
        t.out->audioCables.exchange(0, 1);
    }
    s->output()->sendLevels[0]->level = 0.5f;
    t.block();
    EXPECT_FLOAT_EQ(t.left[0], 0.5f + 0.5f * 0.25f);
    EXPECT_EQ(bus->listKind, listSends);
}

TEST(Cycle, DryRenderLeavesTheOutsStripOut) {
    for (const bool dry : {false, true}) {
        StripFixture t;
        SignalComp* s = addSteps(t);
        {
            const GraphHold hold(t.host);
            t.out->output()->vol = 0.5f;
            t.out->output()->setVol(0.5f, false);
            t.host->renderMode = 1;
            t.host->renderDry = dry;
            t.host->prepare(64);
            t.host->process(64);
        }
        EXPECT_EQ(s->at, 64);
        EXPECT_FLOAT_EQ(t.out->output()->bufL[0], dry ? 0.5f : 0.125f);
    }
}

TEST(Cycle, PreviewIsHeardButNotRendered) {
    class Preview : public CPreviewBase {
    public:
        void idle() override {}
        bool getPlaying() override { return playing; }
        void process(float* left, float* right, float*, float*, int frames) override {
            for (int i = 0; i < frames; ++i) left[i] += 0.125f, right[i] -= 0.125f;
        }
        bool playing = true;
    };
    StripFixture t;
    auto* preview = new Preview;
    t.host->preview = preview;
    t.block();
    EXPECT_EQ(t.left[0], 0.125f);
    EXPECT_EQ(t.right[0], -0.125f);
    preview->playing = false;
    t.block();
    EXPECT_TRUE(silent(t));
    preview->playing = true;
    const GraphHold hold(t.host);
    t.host->click->enabled = t.host->playing = 1;
    t.host->click->mode = clickPlay;
    t.host->renderMode = 1;
    t.host->prepare(64);
    t.host->process(64);
    EXPECT_EQ(t.out->output()->bufL[0], 0.0f) << "nor is the click";
}

TEST(Cycle, RenderCallbackHasTheGraphToItself) {
    StripFixture t;
    SignalComp* s = addSteps(t);
    struct Job : CObject {
        explicit Job(StripFixture* fixture) : t(fixture) {}
        void run(CObject*) {
            ++runs;
            t->block();
            quiet = silent(*t);
        }
        StripFixture* t;
        int runs = 0;
        bool quiet = false;
    } job(&t);
    t.host->setRenderCallback(new _COnChange<Job>(&job, &Job::run));
    t.host->setRenderCallback(new _COnChange<Job>(&job, &Job::run)); // refused and deleted
    t.host->idle();
    EXPECT_EQ(job.runs, 0) << "no block has come yet";
    t.block();
    EXPECT_EQ(t.host->renderMode, 1);
    t.block();
    EXPECT_TRUE(silent(t));
    const long before = s->at;
    t.host->idle();
    EXPECT_EQ(job.runs, 1);
    EXPECT_TRUE(job.quiet);
    EXPECT_EQ(s->at, before);
    EXPECT_EQ(t.host->renderMode, 0);
    t.block();
    EXPECT_FALSE(silent(t));
    t.host->idle();
    EXPECT_EQ(job.runs, 1);
}

/// Blocks and long turns of the interface never overlap: what runs under the hold finds the graph
/// at rest.
TEST(Cycle, HoldAndBlocksExcludeEachOther) {
    StripFixture t(64);
    class Witness : public SignalComp {
    public:
        using SignalComp::SignalComp;
        void process(int frames) override {
            inside = true;
            SignalComp::process(frames);
            inside = false;
        }
        std::atomic<bool> inside{false};
    };
    auto* w = t.add(new Witness(t.host));
    t.connect(w);
    std::atomic<bool> stop{false};
    std::atomic<int> heard{0};
    std::thread driver([&] {
        float l[64], r[64];
        float* bufs[] = {l, r};
        while (!stop) {
            libio(bufs, bufs, 2, 2, 64, nullptr, 0);
            if (l[0] != 0.0f) ++heard;
            std::this_thread::yield();
        }
    });
    int overlaps = 0;
    for (int i = 0; i < 2000; ++i) {
        const GraphHold hold(t.host);
        const GraphHold nested(t.host);
        const long at = w->at;
        std::this_thread::yield();
        if (w->inside || w->at != at) ++overlaps;
    }
    const int before = heard;
    while (heard == before) std::this_thread::yield();
    stop = true;
    driver.join();
    EXPECT_EQ(overlaps, 0);
}

/// A driver that leaves no gap between its blocks cannot keep the interface out.
TEST(Cycle, HoldIsGrantedWithoutAGap) {
    TestHost t;
    ASSERT_TRUE(t.host->tryHold(GraphOwner::audio));
    t.host->insistOnHold();
    t.host->releaseHold();
    EXPECT_FALSE(t.host->tryHold(GraphOwner::audio)) << "the interface comes first";
    ASSERT_TRUE(t.host->tryHold(GraphOwner::interface));
    t.host->releaseHold();
    EXPECT_TRUE(t.host->tryHold(GraphOwner::audio));
    t.host->releaseHold();
}

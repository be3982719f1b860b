#include "engine/CClick.h"
#include "engine/CPreviewBase.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/StripFixture.h"
#include "support/Rows.h"

#include <cmath>
#include <limits>

namespace {

/// Half of full scale on the left, a quarter below zero on the right.
struct Fixture : StripFixture {
    explicit Fixture(int frames = 1024) : StripFixture(frames), s(addSignal()) {
        s->left = [](long) { return 0.5f; };
        s->right = [](long) { return -0.25f; };
    }
    bool silent() const {
        return std::ranges::count(left, 0.0f) + std::ranges::count(right, 0.0f) ==
               long(left.size() + right.size());
    }
    SignalComp* s;
};

} // namespace

TEST(Cycle, SilenceWhileTheGraphIsOff) {
    for (const auto& [name, off, frames] : Rows<const char*, void (*)(CQV*), int>{
             {"suspended", [](CQV* q) { q->audioSuspended = 1; }, 256},
             {"rendering", [](CQV* q) { q->renderMode = 1; }, 256},
             {"busy", [](CQV* q) { q->busy = true; }, 256},
             {"block too large", [](CQV*) {}, 1025},
             {"no frames", [](CQV*) {}, 0},
             {"held by the interface", [](CQV* q) { q->tryHold(GraphOwner::interface); }, 256}}) {
        Fixture t;
        off(t.host);
        t.forget();
        EXPECT_EQ(t.runBlock(frames), 0);
        EXPECT_TRUE(t.silent() && t.s->at == 0) << name;
        t.host->busy = false;
        t.host->renderMode = 0;
        t.host->releaseHold();
    }
}

TEST(Cycle, DeviceChannelsAreMapped) {
    using Flags = std::vector<int>;
    // In: 0.5 and 0.25 on the device channels 0 and 1.
    for (const auto& [ins, outs, left, right] :
         Rows<Flags, Flags, float, float>{{{0, 1}, {0, 1}, 0.5f, 0.25f},
                                          {{1, 2}, {0, 1}, 0.0f, 0.0f},
                                          {{1}, {0, 1}, 0.25f, 0.25f},
                                          {{5}, {0, 1}, 0.0f, 0.0f},
                                          {{0, 1}, {1}, 0.0f, 0.375f},
                                          {{0, 1}, {0, 2}, 0.0f, 0.0f},
                                          {{0, 1}, {}, 0.0f, 0.0f},
                                          {{0, 1, 2}, {0, 1, 5}, 0.5f, 0.25f}}) {
        SCOPED_TRACE(testing::PrintToString(ins) + testing::PrintToString(outs));
        TestHost t;
        for (int i = 0; i < maxDeviceChannels; ++i) {
            t.in->channelUsed[i] = std::ranges::count(ins, i) > 0;
            t.out->channelUsed[i] = std::ranges::count(outs, i) > 0;
        }
        t.connect(t.in);
        t.feedL.assign(1024, 0.5f);
        t.feedR.assign(1024, 0.25f);
        t.run();
        EXPECT_FLOAT_EQ(t.left[1000], left);
        EXPECT_FLOAT_EQ(t.right[1000], right);
    }
}

TEST(Cycle, DeviceSamplesAreLimitedAndFinite) {
    const float inf = std::numeric_limits<float>::infinity();
    for (const auto& row : Rows<float, float>{
             {1.5f, 1.0f}, {-7.0f, -1.0f}, {std::nanf(""), 0.0f}, {inf, 0.0f}, {0.75f, 0.75f}}) {
        const auto [in, out] = row;
        Fixture t;
        t.s->left = [&row](long at) { return at == 3 ? std::get<0>(row) : 0.0f; };
        t.block();
        EXPECT_TRUE(t.left[3] == out && t.left[4] == 0.0f) << in;
        EXPECT_EQ(t.out->input()->holdL, in == in ? std::fabs(in) : 0.0f);
        EXPECT_LE(t.out->input()->peakL, 1.0f);
    }
}

/// In by device on the first frame; out at truncated times within the block, while other kinds of
/// event stay here.
TEST(Cycle, MidiComesInAndGoesOut) {
    for (const int filter : {-1, 0, 3}) {
        StripFixture t;
        SignalComp* s = t.add(new SignalComp(t.host));
        for (CComp* from : std::initializer_list<CComp*>{t.midiIn, s})
            t.connectMIDI(from, t.midiOut);
        s->moves = {{1, s, 0, 0.5f}};
        for (const double time : {0.0, 17.9, 255.99, 256.0, 1e12})
            s->messages.emplace_back(time, asData(midiNoteOn, 62, 100));
        t.midiIn->device = filter;
        t.midiOut->device = 2;
        t.send(asData(midiNoteOn, 60, 100), 0, -3);
        t.send(asData(midiNoteOn, 61, 100), 3, 100);
        t.send(asData(midiNoteOn, 63, 100), filter, 1 << 30);
        t.send(asData(midiNoteOn, 64, 100), filter, 200);
        t.block(256);
        EXPECT_EQ(t.host->midiActivity, 1.0f);
        std::vector<std::pair<int, int>> notes;
        for (const AamEvent& e : t.sent) notes.emplace_back(asByte1(e.data), e.frame);
        std::vector<std::pair<int, int>> expected = {{62, 0},   {62, 17},  {64, 200}, {63, 255},
                                                     {62, 255}, {62, 255}, {62, 255}};
        if (filter != 0) expected.insert(expected.begin() + 2, {61, 100});
        if (filter != 3) expected.insert(expected.begin(), {60, 0});
        EXPECT_EQ(notes, expected) << filter;
        EXPECT_EQ(t.sent[0].device, 2);
    }
}

/// What comes in while the interface has the graph for a moment comes at the start of the next
/// block, in its order; what comes in during an offline operation is void, and so is what was kept
/// before it.
TEST(Cycle, MidiOfAHeldBlockIsKept) {
    const int on = asData(midiNoteOn, 60, 100), off = asData(midiNoteOff, 60, 0);
    for (const bool offline : {false, true}) {
        StripFixture t;
        t.connectMIDI(t.midiIn, t.midiOut);
        t.block();
        {
            const GraphHold hold(t.host);
            rtReset();
            t.send(on, 0, 70);
            t.block();
            t.send(off, 0, 50);
            t.block();
            EXPECT_TRUE(t.sent.empty());
        }
        t.host->renderMode = offline;
        if (offline) t.block();
        t.host->renderMode = 0;
        t.send(on, 0, 30);
        t.block();
        EXPECT_EQ(rtViolations(), 0);
        std::vector<std::pair<int, int>> got;
        for (const AamEvent& e : t.sent) got.emplace_back(e.data, e.frame);
        std::vector<std::pair<int, int>> expected = {{on, 30}};
        if (!offline) expected.insert(expected.begin(), {{on, 0}, {off, 0}});
        EXPECT_EQ(got, expected);
        t.block();
        EXPECT_TRUE(t.sent.empty());
    }
}

/// Notes and pedals outside end with the next block, whoever has the graph, each at its device and
/// once. So they do when a project makes room for another.
TEST(Cycle, NotesOutsideEnd) {
    for (const bool cleared : {false, true}) {
        StripFixture t;
        auto* other = t.add(new CMIDIOut(t.host));
        other->device = 5;
        SignalComp* s = t.add(new SignalComp(t.host));
        t.connectMIDI(s, t.midiOut);
        t.connectMIDI(s, other);
        for (const int data :
             {asData(midiNoteOn, 60, 9), asData(midiNoteOn | 15, 127, 9), asData(midiNoteOn, 61, 9),
              asData(midiNoteOn, 61, 0), asData(midiNoteOn | 1, 5, 9),
              asData(midiNoteOff | 1, 5, 9), asData(midiController | 3, 64, 127),
              asData(midiController | 4, 64, 127), asData(midiController | 4, 64, 0),
              asData(midiNoteOn | 7, 1, 9), asData(midiController | 7, 123, 0),
              asData(midiNoteOn, 60, 9)})
            s->messages.emplace_back(0, data);
        t.block();
        s->messages.clear();
        EXPECT_TRUE(t.host->deviceMidi->sounding());
        const int begun = int(t.sent.size());
        EXPECT_EQ(begun, 24);
        {
            const GraphHold hold(t.host);
            if (cleared)
                t.host->clear();
            else
                t.host->deviceMidi->askSilence();
            rtReset();
            t.block();
            EXPECT_EQ(rtViolations(), 0);
        }
        std::vector<std::pair<int, int>> got;
        for (const AamEvent& e : t.sent) got.emplace_back(e.device, e.data);
        std::vector<std::pair<int, int>> want;
        for (const int device : {-1, 5})
            for (const int data : {asData(midiNoteOff, 60, 0), asData(midiController | 3, 64, 0),
                                   asData(midiNoteOff | 15, 127, 0)})
                want.emplace_back(device, data);
        EXPECT_EQ(got, want);
        EXPECT_FALSE(t.host->deviceMidi->sounding());
        t.block();
        EXPECT_TRUE(t.sent.empty());
    }
}

TEST(Cycle, RecordsBeyondTheArrayAreNeitherReadNorWritten) {
    TestHost t;
    std::vector<AamEvent> events(size_t(aamMaxEvents) + 1, AamEvent{midiNoteOn, 0, {}, 0});
    events.back().data = 12345;
    std::vector<float> block(1024);
    float* bufs[] = {block.data(), block.data()};
    for (int i = 0; i < 40; ++i) t.connectMIDI(t.midiIn, t.add(new CMIDIOut(t.host)));
    EXPECT_EQ(libio(bufs, bufs, 2, 2, 1024, events.data(), aamMaxEvents + 1), aamMaxEvents)
        << "40 ports of 511 events want more";
    EXPECT_EQ(events.back().data, 12345);
    EXPECT_EQ(libio(bufs, bufs, 2, 2, 1024, nullptr, 5), 0);
}

/// An audio out that is led back into what feeds it goes round, a quarter of it each time; one that
/// is led into another out arrives there whole, wherever the two stand.
TEST(Cycle, OutsMayLeadBackAndOn) {
    for (const bool exchanged : {false, true}) {
        StripFixture t;
        SignalComp* first = t.addSignal();
        CGroupCh* group = t.add(new CGroupCh(t.host));
        SignalComp* inGroup = t.add(new SignalComp(t.host));
        auto* second = t.add(new CAudioOut(t.host));
        t.connect(inGroup, group);
        t.connect(t.out, group); // the ring
        t.connect(group);
        SignalComp* last = t.addSignal();
        t.connect(t.out, second);
        CGroupCh* bus = t.addBus();
        last->output()->sendLevels[0]->level = 1.0f;
        int n = 0;
        for (SignalComp* s : {first, inGroup, last})
            s->left = [level = 0.0625f * float(1 << n++)](long) { return level; };
        if (exchanged) {
            const GraphHold hold(t.host);
            t.host->comps.exchange(t.host->comps.indexed(t.out), t.host->comps.indexed(second));
        }
        t.out->output()->vol = 0.5f;
        t.run(3);
        EXPECT_EQ(bus->output()->bufL[9], 0.25f);
        const float once = 0.25f * (0.0625f + 0.125f + 2 * 0.25f);
        EXPECT_NEAR(t.out->output()->bufL[9], once / (1.0f - 0.25f), 1e-6f) << exchanged;
        EXPECT_EQ(second->output()->bufL[9], t.out->output()->bufL[9]) << exchanged;
    }
}

/// Nor does a dry render take the strip of the out.
TEST(Cycle, PreviewAndClickAreHeardButNotRendered) {
    class Preview : public CPreviewBase {
    public:
        void idle() override {}
        bool getPlaying() override { return true; }
        void process(float* left, float*, float*, float*, int frames) override {
            for (int i = 0; i < frames; ++i) left[i] += 0.125f;
        }
    };
    for (const bool dry : {false, true}) {
        Fixture t;
        t.host->preview = new Preview;
        t.block();
        EXPECT_EQ(t.left[0], 0.625f);
        t.host->click->enabled = t.host->playing = 1;
        t.host->click->mode = clickPlay;
        t.host->renderDry = dry;
        t.out->output()->vol = 0.5f;
        t.out->output()->setVol(0.5f, false);
        const GraphHold hold(t.host);
        t.host->renderMode = 1;
        t.host->prepare(64);
        t.host->process(64);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(t.out->output()->bufL[i], dry ? 0.5f : 0.125f);
    }
}

/// Blocks and long turns of the interface never overlap: what runs under the hold finds the graph
/// at rest.
TEST(Cycle, HoldAndBlocksExcludeEachOther) {
    StripFixture t(64);
    struct Witness : SignalComp {
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
    std::atomic<int> heard{0};
    const BlockThread driver([&] {
        t.block(64);
        heard += t.left[0] != 0.0f;
    });
    int overlaps = 0;
    for (int i = 0; i < 2000; ++i) {
        const GraphHold hold(t.host), nested(t.host);
        const long at = w->at;
        std::this_thread::yield();
        overlaps += w->inside || w->at != at;
    }
    EXPECT_EQ(overlaps, 0);
    EXPECT_TRUE(comes([&, before = heard.load()] { return heard > before; }));
}

/// A driver that leaves no gap between its blocks cannot keep the interface out.
TEST(Cycle, HoldIsGrantedWithoutAGap) {
    TestHost t;
    t.host->insistOnHold();
    EXPECT_FALSE(t.host->tryHold(GraphOwner::audio)) << "the interface comes first";
    ASSERT_TRUE(t.host->tryHold(GraphOwner::interface));
    t.host->releaseHold();
    EXPECT_TRUE(t.host->tryHold(GraphOwner::audio));
    t.host->releaseHold();
}

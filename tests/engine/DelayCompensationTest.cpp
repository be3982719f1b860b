#include "engine/DelayCompensation.h"
#include "engine/StripFixture.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>

namespace {

/// An insert that delays by what it reports.
class LateInsert : public GainComp {
public:
    LateInsert(CQV* root, int frames) : GainComp(root), line(size_t(frames)) {}
    int getDelay() override { return int(line.size()); }
    void process(int frames) override {
        for (int i = 0; i < frames; ++i) {
            line.push_back(input()->bufL[i]);
            output()->bufL[i] = line.front();
            line.pop_front();
        }
    }

private:
    std::deque<float> line;
};

/// A source that sounds `latency` frames late and says so.
SignalComp* addLate(StripFixture& t, int latency) {
    SignalComp* s = t.addSignal();
    s->latency = latency;
    s->left = [latency](long at) { return at == latency ? 0.25f : 0.0f; };
    return s;
}

CComp* addChained(StripFixture& t, CComp* to, int latency) {
    auto* c = t.add(new SignalComp(t.host));
    c->latency = latency;
    t.connect(c, to);
    return c;
}

} // namespace

/// However late its paths are, an impulse comes out once, at the latency of the longest.
TEST(DelayCompensation, PathsMeetAtTheDevice) {
    struct Case {
        int dry1, dry2, bus;
        bool busBefore; ///< a bus with a send from the first source
    };
    const Case cases[] = {
        {0, 0, 0, false},    {100, 0, 0, false}, {0, 777, 0, false},
        {30, 70, 200, true}, {0, 0, 513, true},  {1000, 0, 0, true},
    };
    for (const Case& c : cases) {
        StripFixture t(128);
        SignalComp* first = addLate(t, c.dry1);
        addLate(t, c.dry2);
        float expected = 0.5f;
        if (c.busBefore) {
            CGroupCh* bus = t.addBus();
            auto* late = new LateInsert(t.host, c.bus);
            t.addInsert(bus->output(), late);
            first->output()->sendLevels[0]->level = 1.0f;
            expected = 0.75f;
        }
        t.host->update(updateDelays);
        t.run(20);
        const int due = std::max(c.dry1, c.dry2) + (c.busBefore ? c.bus : 0);
        for (int i = 0; i < int(t.left.size()); ++i)
            ASSERT_FLOAT_EQ(t.left[size_t(i)], i == due ? expected : 0.0f) << i << " of " << due;
        EXPECT_EQ(t.host->pdcInDelay, std::max(c.dry1, c.dry2));
        EXPECT_EQ(t.host->pdcSendDelay, c.busBefore ? c.bus : 0);
    }
}

/// The sum of a path: the component, the running inserts of its channel, the longest before.
TEST(DelayCompensation, SumOfAPath) {
    StripFixture t;
    SignalComp* s = addLate(t, 10);
    addChained(t, s, 5);
    CComp* longest = addChained(t, s, 50);
    addChained(t, longest, 7);
    CComp* insert = t.addInsert(s->output(), new LateInsert(t.host, 100));
    CComp* off = t.addInsert(s->output(), new LateInsert(t.host, 1000));
    off->enabled = 0;
    const GraphHold hold(t.host);
    EXPECT_EQ(sumDelay(s, s->output()), 10 + 100 + 50 + 7);
    longest->enabled = 0;
    EXPECT_EQ(sumDelay(s, s->output()), 10 + 100 + 5);
    insert->enabled = 2;
    EXPECT_EQ(sumDelay(s, s->output()), 10 + 5) << "only 1 is on";
    s->enabled = 0;
    EXPECT_EQ(sumDelay(s, s->output()), 0);
}

TEST(DelayCompensation, FrozenPathsHaveNone) {
    class Frozen : public SignalComp {
    public:
        using SignalComp::SignalComp;
        int freezed(COutputChannel* ch) override { return ch == output(); }
    };
    StripFixture t;
    auto* s = t.add(new Frozen(t.host));
    s->latency = 300;
    const GraphHold hold(t.host);
    EXPECT_EQ(sumDelay(s, s->output()), 0);
}

/// What a plug-in reports is limited; loops and diamonds neither hang nor count twice.
TEST(DelayCompensation, HostileGraphs) {
    StripFixture t(64);
    SignalComp* s = addLate(t, std::numeric_limits<int>::min());
    {
        const GraphHold hold(t.host);
        EXPECT_EQ(sumDelay(s, s->output()), 0);
        s->latency = std::numeric_limits<int>::max();
        EXPECT_EQ(sumDelay(s, s->output()), 1 << 20);
    }
    s->latency = 1;
    CComp* left = s;
    // Forty diamonds in a row: two to the power of forty paths.
    for (int i = 0; i < 40; ++i) {
        CComp* a = addChained(t, left, 1);
        CComp* b = addChained(t, left, 2);
        auto* top = t.add(new SignalComp(t.host));
        t.connect(top, a);
        t.connect(top, b);
        left = top;
    }
    t.connect(s, left); // and a loop around them all
    const GraphHold hold(t.host);
    EXPECT_EQ(sumDelay(s, s->output()), 1 + 40 * 2);
}

/// Lines as far as they reach; a change clears them.
TEST(DelayCompensation, ChangedDelayDropsWhatIsInTheLine) {
    StripFixture t(64);
    SignalComp* early = addLate(t, 0);
    early->left = [](long) { return 0.25f; };
    SignalComp* late = addLate(t, 64);
    late->left = [](long) { return 0.0f; };
    t.host->update(updateDelays);
    t.run(3);
    EXPECT_EQ(t.left[63], 0.0f);
    EXPECT_FLOAT_EQ(t.left[64], 0.25f);
    late->latency = 65;
    t.run(1);
    EXPECT_FLOAT_EQ(t.left.back(), 0.25f) << "nobody has asked for it yet";
    t.forget();
    t.host->update(updateDelays);
    t.run(2);
    for (int i = 0; i < 128; ++i) ASSERT_FLOAT_EQ(t.left[size_t(i)], i < 65 ? 0.0f : 0.25f) << i;
}

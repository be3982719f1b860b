#include "engine/plan/DelayCompensation.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"
#include "support/Rows.h"

#include <limits>

namespace {

/// An insert that delays by what it reports; off, it passes the sound on at once.
class LateInsert : public GainComp {
public:
    LateInsert(CQV* root, int frames) : GainComp(root), line(size_t(frames)) {}
    int getDelay() override { return int(line.size()); }
    void process(int frames) override {
        for (int i = 0; i < frames; ++i) {
            const float in = input()->bufL[i];
            output()->bufL[i] = enabled == 1 ? line[at] : in;
            line[at] = in;
            at = (at + 1) % line.size();
        }
    }

private:
    std::vector<float> line;
    size_t at = 0;
};

SignalComp* addLate(StripFixture& t, CComp* to, int latency) {
    auto* c = t.add(new SignalComp(t.host));
    c->latency = latency;
    t.connect(c, to);
    return c;
}

} // namespace

/// Three sources, one of them in a group, that all send to a bus: whatever is put into their ways,
/// taken out and switched off, all ways of an impulse meet on one frame. A way that is cut does not
/// give back old sound when it returns.
TEST(DelayCompensation, ImpulsesMeetWhateverIsInTheirWay) {
    StripFixture t(64);
    float level = 0;
    CGroupCh* group = t.add(new CGroupCh(t.host));
    SignalComp* sources[] = {t.addSignal(), t.addSignal(), addLate(t, group, 0)};
    t.connect(group);
    CGroupCh* bus = t.addBus();
    for (SignalComp* s : sources) {
        s->left = [&level](long at) { return at % 64 ? 0.0f : level; };
        s->output()->sendLevels[0]->level = 0.5f;
    }
    const auto play = [&](float now) {
        t.forget();
        level = now;
        t.run();
        level = 0;
        t.run(40);
        t.host->tasks->audioStopped(); // the next step waits for no block
    };
    const auto expectClick = [&](int due) {
        play(1.0f / 64);
        for (int i = 0; i < int(t.left.size()); ++i)
            ASSERT_EQ(t.left[size_t(i)], i == due ? (3 + 3 * 0.25f) / 64 : 0) << i << " of " << due;
    };
    const auto insert = [&](CComp* c, int frames, int due) {
        auto* late = t.made(new LateInsert(t.host, frames));
        t.step([&](CUndo* u) { u->asAdd(late, &c->output()->inserts); });
        expectClick(due);
        return late;
    };
    expectClick(0);
    LateInsert* longest = insert(sources[0], 1000, 1000);
    insert(sources[2], 77, 1000);
    insert(group, 500, 1000);
    insert(bus, 300, 1300);
    t.step([&](CUndo* u) {
        u->asInt(longest->enabled.address());
        longest->enabled = 0;
    });
    expectClick(577 + 300);
    t.undo();
    expectClick(1300);

    level = 0.1f;
    t.run(30);
    t.step([&](CUndo* u) {
        u->asRemove(getAudioCable(t.out, sources[1]->output(), nullptr), &t.out->audioCables);
    });
    level = 0;
    t.run(40);
    t.undo();
    play(0);
    EXPECT_EQ(std::ranges::count(t.left, 0.0f), long(t.left.size()));
    for (const int due : {1000, 1000, 1000, 0}) {
        t.undo();
        expectClick(due);
    }
}

/// What is late into one track leaves the others in time.
TEST(DelayCompensation, ATrackIsAsLateAsWhatArrivesAtIt) {
    struct Tracks : SeqStub {
        using SeqStub::SeqStub;
        SignalComp *first = nullptr, *second = nullptr;
        CComp* getComp(CObject* io) override {
            return first->outputs.contains(io) ? first : second;
        }
    };
    StripFixture t;
    auto* seq = t.add(new Tracks(t.host));
    SignalComp** const tracks[] = {&seq->first, &seq->second};
    for (SignalComp** track : tracks) {
        *track = t.made(new SignalComp(t.host));
        (*track)->output()->comp = (*track)->input()->comp = seq;
    }
    const GraphHold hold(t.host);
    for (const int latency : {100, 30}) {
        auto* late = t.made(new SignalComp(t.host));
        late->latency = latency;
        t.host->comps.add(late);
        seq->audioCables.add(
            createAudioCable(seq, late->output(), (*tracks[latency == 30])->input()));
    }
    EXPECT_EQ(sumDelay(seq, seq->first->output()), 100);
    EXPECT_EQ(sumDelay(seq, seq->second->output()), 30);
    for (SignalComp** track : tracks) delete *track;
}

/// By whatever way a component is switched; once is enough.
TEST(DelayCompensation, FollowsTheSwitchOfAComponent) {
    StripFixture t;
    CComp* insert = t.addInsert(t.addSignal()->output(), new LateInsert(t.host, 100));
    t.host->hostNotices.raise(HostNotice::delays);
    for (const int on : {1, 0, 1}) {
        insert->enable(on);
        t.run();
        EXPECT_EQ(t.host->pdcInDelay, on ? 100 : 0);
        insert->enable(on);
        EXPECT_FALSE(t.host->hostNotices.raised(HostNotice::delays)) << "nothing has changed";
    }
}

TEST(DelayCompensation, SwitchedOffAndFrozenOnesHaveNone) {
    struct Frozen : SignalComp {
        using SignalComp::SignalComp;
        int freezed(COutputChannel* ch) override { return ch == output() && frozen; }
        bool frozen = false;
    };
    StripFixture t;
    auto* s = t.add(new Frozen(t.host));
    s->latency = 10;
    const GraphHold hold(t.host);
    for (const auto& [frozen, on, sum] : Rows<bool, int, int>{{0, 1, 10}, {1, 1, 0}, {0, 0, 0}}) {
        s->frozen = frozen;
        s->enabled = on;
        EXPECT_EQ(sumDelay(s, s->output()), sum);
    }
}

/// What a plug-in reports is limited; loops and diamonds neither hang nor count twice.
TEST(DelayCompensation, HostileGraphs) {
    StripFixture t(64);
    SignalComp* s = addLate(t, t.out, std::numeric_limits<int>::min());
    const auto sum = [&] {
        const GraphHold hold(t.host);
        return sumDelay(s, s->output());
    };
    EXPECT_EQ(sum(), 0);
    s->latency = std::numeric_limits<int>::max();
    EXPECT_EQ(sum(), 1 << 20);
    s->latency = 1;
    CComp* left = s;
    // Forty diamonds in a row: two to the power of forty paths.
    for (int i = 0; i < 40; ++i) {
        auto* top = t.add(new SignalComp(t.host));
        for (const int latency : {1, 2}) t.connect(top, addLate(t, left, latency));
        left = top;
    }
    t.connect(s, left); // and a loop around them all
    EXPECT_EQ(sum(), 1 + 40 * 2);
}

/// The line itself: a change, and a gap between its blocks, drop what is in it.
TEST(CPDC, GivesBackWhatWentInAndNothingOlder) {
    CPDC line;
    float l = 0, r = 0;
    unsigned block = 0;
    for (const auto& [delay, gap] : Rows<int, unsigned>{{100, 1}, {101, 1}, {101, 2}, {32767, 1}}) {
        line.setDelay(delay);
        line.enter(block += gap);
        for (int i = 0; i < 70000; ++i) {
            line.exchange(float(i + 1), float(-i - 1), l, r);
            ASSERT_EQ(l, i < delay ? 0.0f : float(i + 1 - delay)) << i << " of " << delay;
            ASSERT_EQ(r, -l);
        }
    }
}

#include "audiofiles/CSample.h"
#include "engine/CClick.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"
#include "engine/plan/PlanBuilder.h"
#include "support/Rows.h"

#include <cstdlib>
#include <limits>
#include <numeric>
#include <random>

namespace {

/// An insert that delays by what it reports; off, it passes the sound on at once.
class LateInsert : public GainComp {
public:
    LateInsert(CQV* root, int frames) : GainComp(root), line(size_t(frames)) {}
    int getDelay() override { return int(line.size()); }
    void process(int frames) override {
        if (line.empty()) std::copy_n(input()->bufL, frames, output()->bufL);
        for (int i = 0; i < frames && !line.empty(); ++i) {
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

SignalComp* addLateSource(StripFixture& t, CComp* to, int latency) {
    auto* c = t.add(new SignalComp(t.host));
    c->latency = latency;
    t.connect(c, to);
    return c;
}

} // namespace

/// Three sources, one of them in a group, that all send to a bus: whatever is put into their ways,
/// taken out and switched off, all ways of an impulse meet on one frame. A way that is cut does not
/// give back old sound when it returns.
TEST(PlanLatency, ImpulsesMeetWhateverIsInTheirWay) {
    StripFixture t(64);
    float level = 0;
    CGroupCh* group = t.add(new CGroupCh(t.host));
    SignalComp* sources[] = {t.addSignal(), t.addSignal(), addLateSource(t, group, 0)};
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
        t.run(40);
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
    t.run(40);
    expectClick(577 + 300);
    t.undo();
    t.run(40);
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
        t.run(40);
        expectClick(due);
    }
}

namespace {

/// A part of a song, with an impulse of its own at the first frame.
class TrackStub : public SignalComp {
public:
    using SignalComp::SignalComp;
    Stored<unsigned char> live{0};
    Shared<int> takeLatency{0};
    Shared<unsigned char> fromDevice{1};
    void sound(int frames) override {
        for (int i = 0; i < frames; ++i) output()->bufL[i] += at++ == 0 ? 1.0f : 0.0f;
    }
    void prepare(int) override { processed = mixed = fxDone = false; }
};

class SongStub : public SeqStub {
public:
    using SeqStub::SeqStub;
    std::vector<TrackStub*> tracks;
    CComp* getComp(CObject* io) override {
        for (TrackStub* track : tracks)
            if (track->outputs.contains(io) || track->inputs.contains(io)) return track;
        return nullptr;
    }
    void planRender(PlanBuilder& plan) override {
        CComp::planRender(plan);
        for (TrackStub* track : tracks) {
            plan.sound(track, this, {});
            plan.note(track, {&track->live, &track->takeLatency, &track->fromDevice});
        }
    }
    void planStrip(PlanBuilder& plan) override {
        for (TrackStub* track : tracks) plan.strip(track);
    }
    void prepare(int frames) override {
        CComp::prepare(frames);
        for (TrackStub* track : tracks) {
            track->prepare(frames);
            for (float* side : {track->output()->bufL, track->output()->bufR})
                std::fill_n(side, frames, 0.0f);
        }
    }
};

} // namespace

/// What is late into one track leaves the others in time. What the tracks play themselves is heard
/// with what they take in, and with each other; of a live one at once.
TEST(PlanLatency, ATrackIsAsLateAsWhatArrivesAtIt) {
    for (const bool live : {false, true}) {
        StripFixture t;
        auto* seq = t.made(new SongStub(t.host));
        for (const int latency : {100, 30}) {
            auto* track = t.made(new TrackStub(t.host));
            track->output()->comp = track->input()->comp = seq;
            seq->tracks.push_back(track);
            auto* late = t.add(new SignalComp(t.host));
            late->latency = latency;
            late->left = late->right = [](long) { return 0.0f; };
            seq->audioCables.add(createAudioCable(seq, late->output(), track->input()));
        }
        seq->tracks[1]->live = live;
        {
            const GraphHold hold(t.host);
            t.host->comps.add(seq);
            for (TrackStub* track : seq->tracks)
                t.out->audioCables.add(createAudioCable(t.out, track->output(), nullptr));
        }
        t.run();
        for (const int i : {0, 1}) {
            const PlanLatency& latency = t.host->plans->current().latency();
            const TrackStub* track = seq->tracks[size_t(i)];
            EXPECT_EQ(latency.originOf(seq->tracks[size_t(i)]->output())->latency, i ? 30 : 100);
            EXPECT_EQ(track->takeLatency, i ? 30 : 100);
            EXPECT_FALSE(track->fromDevice);
        }
        for (int i = 0; i < int(t.left.size()); ++i) {
            const float heard = live ? float(i == 30) + float(i == 100) : i == 100 ? 2.0f : 0.0f;
            ASSERT_EQ(t.left[size_t(i)], heard > 1.0f ? 1.0f : heard) << i << live;
        }
        const GraphHold hold(t.host);
        for (CAudioCable* cable; (cable = t.out->audioCables.first()); delete cable)
            t.out->audioCables.del(0);
        t.host->comps.remove(seq);
        t.host->plans->refresh();
        for (TrackStub* track : seq->tracks) delete track;
        delete seq;
    }
}

namespace {

/// Takes down when its events come, and when the song is that it is told of.
class Listener : public LateInsert {
public:
    using LateInsert::LateInsert;
    std::vector<double> times;
    std::vector<double> told; ///< ticks, of each block
    int blocks = 0;
    void process(int frames) override {
        for (const CMIDIBytes* e = inPort()->first(); e; e = e->next)
            times.push_back(e->time + blocks * frames);
        ++blocks;
        told.push_back(host->plans->timeOf(this).ticks);
        LateInsert::process(frames);
    }
};

} // namespace

/// A fader and three inserts of a group that sound comes to late follow the events of the song with
/// that sound: 300 frames late at the first two, 350 at the third, 420 at the fader. What goes
/// past an insert waits for what goes through it.
TEST(PlanLatency, EventsComeWithTheirSound) {
    for (const int frames : {32, 128}) {
        StripFixture t(frames);
        SignalComp* source = t.add(new SignalComp(t.host));
        source->output()->setVol(1.0f, false);
        auto* late = t.add(new SignalComp(t.host));
        late->latency = 300;
        late->left = late->right = [](long) { return 0.0f; };
        auto* group = t.add(new CGroupCh(t.host));
        for (CComp* c : {static_cast<CComp*>(source), static_cast<CComp*>(late)})
            t.connect(c, group);
        t.connect(group);
        t.connectMIDI(source, group);
        Listener* first = t.addInsert(group->output(), new Listener(t.host, 0));
        Listener* inserts[] = {t.addInsert(group->output(), new Listener(t.host, 50)),
                               t.addInsert(group->output(), new Listener(t.host, 70))};
        inserts[0]->wet = 0.25f;
        t.host->start();
        source->moves = {{17, group->output(), 0, 0.0f}};
        t.run(2048 / frames);
        EXPECT_EQ(inserts[0]->times, std::vector<double>{317});
        EXPECT_EQ(inserts[1]->times, std::vector<double>{367});
        EXPECT_NEAR(first->told.back(), t.host->framesToTicks(2048 - frames - 300), 1e-6);
        EXPECT_NEAR(inserts[1]->told.back(), t.host->framesToTicks(2048 - frames - 350), 1e-6);
        for (int i = 0; i < 2048; ++i) {
            const float x = t.left[size_t(i)];
            const float before = i > 0 ? t.left[size_t(i - 1)] : 0.0f;
            const bool falls = i > 437 && i < 500;
            ASSERT_TRUE(falls ? x < before : x == (i >= 420 && i <= 437) || i > 437)
                << i << ": " << x;
        }
    }
}

/// The metronome is heard with the song.
TEST(PlanLatency, ClicksWaitForTheSong) {
    std::vector<float> heard[2];
    for (const int late : {0, 700}) {
        StripFixture t;
        t.host->click->enabled = 1;
        t.host->click->mode = clickPlay;
        auto* data = static_cast<short*>(std::malloc(100 * sizeof(short)));
        std::iota(data, data + 100, short(1000));
        t.host->click->sound->close();
        t.host->click->sound->setFormat(44100, 16, 1);
        t.host->click->sound->takeData(reinterpret_cast<unsigned char*>(data), 100);
        addLateSource(t, t.out, late)->left = [](long) { return 0.0f; };
        t.host->start();
        t.run(40);
        heard[late != 0] = t.left;
    }
    ASSERT_GT(*std::ranges::max_element(heard[0]), 0.01f);
    for (size_t i = 0; i + 700 < heard[0].size(); ++i)
        ASSERT_EQ(heard[1][i + 700], heard[0][i]) << i;
}

/// By whatever way a component is switched; once is enough.
TEST(PlanLatency, FollowsTheSwitchOfAComponent) {
    StripFixture t;
    CComp* insert = t.addInsert(t.addSignal()->output(), new LateInsert(t.host, 100));
    t.run();
    for (const int on : {0, 1, 0}) {
        insert->enable(on);
        t.run();
        EXPECT_EQ(t.host->plans->latency(), on ? 100 : 0);
        insert->enable(on);
        EXPECT_FALSE(t.host->hostNotices.raised(HostNotice::delays)) << "nothing has changed";
    }
}

TEST(PlanLatency, SwitchedOffAndFrozenOnesHaveNone) {
    struct Frozen : SignalComp {
        using SignalComp::SignalComp;
        int freezed(COutputChannel* ch) override { return ch == output() && frozen; }
        bool frozen = false;
    };
    StripFixture t;
    auto* s = t.add(new Frozen(t.host));
    s->latency = 10;
    t.connect(s);
    for (const auto& [frozen, on, sum] : Rows<bool, int, int>{{0, 1, 10}, {1, 1, 0}, {0, 0, 0}}) {
        s->frozen = frozen;
        s->enabled = on;
        t.host->hostNotices.raise(HostNotice::delays);
        t.run();
        EXPECT_EQ(t.host->plans->latency(), sum);
    }
}

/// What a plug-in reports is limited; loops and diamonds neither hang nor count twice.
TEST(PlanLatency, HostileGraphs) {
    StripFixture t(64);
    SignalComp* s = addLateSource(t, t.out, std::numeric_limits<int>::min());
    const auto sum = [&] {
        t.host->hostNotices.raise(HostNotice::delays);
        t.run();
        return t.host->plans->latency();
    };
    EXPECT_EQ(sum(), 0);
    s->latency = std::numeric_limits<int>::max();
    EXPECT_EQ(sum(), 1 << 20);
    s->latency = 1;
    CComp* left = s;
    // Forty diamonds in a row: two to the power of forty paths.
    for (int i = 0; i < 40; ++i) {
        auto* top = t.add(new SignalComp(t.host));
        for (const int latency : {1, 2}) t.connect(top, addLateSource(t, left, latency));
        left = top;
    }
    t.connect(s, left); // and a loop around them all, that sound comes into from outside
    t.connect(t.add(new SignalComp(t.host)), left);
    EXPECT_EQ(sum(), 1 + 40 * 2);
}

/// The line itself: what goes in comes out as late as it is told, whatever the blocks and the
/// delay, up to a second at the fastest rate. Another delay takes over in a straight line between
/// both taps, once what it needs is there.
TEST(DelayLine, FadesBetweenTwoTaps) {
    constexpr int fade = 441, block = 480;
    const auto sample = [](long at) { return at < 0 ? 0.0f : float(at % 1009 + 1); };
    for (const auto& [first, second] :
         Rows<int, int>{{100, 0}, {0, 100}, {700, 5000}, {5000, 699}, {192000, 64}}) {
        DelayLine line;
        line.setDelay(first, fade);
        const long change = (first / block + 3) * block;
        const long begin = change + std::max(0, second - int(first ? change : 0));
        for (long at = 0; at < begin + 4 * block; at += block) {
            float l[block], r[block];
            for (int i = 0; i < block; ++i) r[i] = -(l[i] = sample(at + i));
            if (at == change) line.setDelay(second, fade);
            if (line.idle())
                line.skip();
            else
                line.process(l, r, l, r, block);
            for (int i = 0; i < block; ++i) {
                const float share = std::clamp(1.0f - float(at + i - begin) / fade, 0.0f, 1.0f);
                const float wanted =
                    share * sample(at + i - first) + (1.0f - share) * sample(at + i - second);
                ASSERT_NEAR(l[i], wanted, 1e-3f) << at + i << ": " << first << " to " << second;
                ASSERT_EQ(r[i], -l[i]);
            }
        }
    }
}

namespace {

/// Delays by what it reports, and takes down when sound arrives.
class LateGroup : public CGroupCh {
public:
    LateGroup(CQV* root, int frames) : CGroupCh(root), line(size_t(frames)) {}
    int getDelay() override { return int(line.size()); }
    void process(int frames) override {
        CGroupCh::process(frames);
        float* out = output()->bufL;
        for (int i = 0; i < frames; ++i, ++now) {
            if (out[i] != 0.0f) {
                first = first < 0 ? now : first;
                last = now;
            }
            if (line.empty()) continue;
            std::swap(out[i], line[at]);
            at = (at + 1) % line.size();
        }
    }
    long now = 0, first = -1, last = -1;

private:
    std::vector<float> line;
    size_t at = 0;
};

/// A random graph without loops, and when an impulse from all its sources arrives where.
struct LateNet : StripFixture {
    static constexpr int frames = 256;
    struct Unit {
        CComp* comp;
        int own, strip;           ///< latencies
        std::vector<size_t> from; ///< units before it
        int arrives = 0, leaves = 0;
        bool heard = false;
    };
    explicit LateNet(unsigned seed) : StripFixture(frames), random(seed) {
        const int count = 4 + pick(36), buses = pick(4);
        other = add(new CAudioOut(host));
        for (int i = 0; i < count; ++i) addUnit(i >= count - buses);
        for (CComp* end : {static_cast<CComp*>(out), static_cast<CComp*>(other)}) {
            ends.push_back({end, 0, 0, {}});
            for (size_t i = 0; i < units.size(); ++i)
                if (pick(3) || (isBus(i) && end == out)) lead(i, ends.back());
            if (!pick(3)) ends.back().strip = addLate(end->output());
        }
        solve();
    }
    bool isBus(size_t i) const { return host->sends.contains(units[i].comp); }
    int pick(int n) { return int(random() % unsigned(n)); }
    int latency() { return pick(2) ? 0 : 1 + pick(pick(8) ? 90 : 900); }
    int addLate(COutputChannel* ch) {
        const int late = 1 + latency();
        auto* insert = addInsert(ch, new LateInsert(host, late));
        if (pick(4)) return late;
        insert->enabled = 0;
        return 0;
    }
    void lead(size_t from, Unit& to) {
        connect(units[from].comp, to.comp);
        to.from.push_back(from);
    }
    void addUnit(bool bus) {
        const int own = latency();
        Unit unit{made(new LateGroup(host, own)), own, 0, {}};
        const GraphHold hold(host);
        listsOf(host->comps, host->sends)[bus ? 1 : 0]->add(unit.comp);
        const int index = host->sends.indexed(unit.comp);
        for (size_t i = 0; i < units.size(); ++i) {
            if (!bus && pick(4) == 0) lead(i, unit);
            if (bus && pick(2)) units[i].comp->output()->sendLevels[index]->level = 0.5f;
        }
        if (!bus && (unit.from.empty() || !pick(4))) sources.push_back(addSource(unit.comp));
        if (!pick(3)) unit.strip = addLate(unit.comp->output());
        units.push_back(unit);
    }
    SignalComp* addSource(CComp* to) {
        auto* source = add(new SignalComp(host));
        source->left = source->right = [](long at) { return at ? 0.0f : 1.0f; };
        connect(source, to);
        return source;
    }
    void hear(Unit& u) {
        u.heard = true;
        for (const size_t i : u.from) hear(units[i]);
    }
    /// A bus waits for all that is heard and before it, whatever it gets from there.
    void solve() {
        for (Unit& end : ends) hear(end);
        const auto follow = [this](Unit& u, size_t before) {
            for (size_t i = 0; i < before; ++i)
                if (units[i].heard) u.arrives = std::max(u.arrives, units[i].leaves);
        };
        for (size_t k = 0; k < units.size(); ++k) {
            if (isBus(k)) follow(units[k], k);
            finish(units[k]);
        }
        for (Unit& end : ends) finish(end);
    }
    void finish(Unit& u) const {
        for (const size_t i : u.from) u.arrives = std::max(u.arrives, units[i].leaves);
        u.leaves = u.arrives + u.own + u.strip;
    }

    std::mt19937 random;
    CAudioOut* other;
    std::vector<Unit> units, ends;
    std::vector<SignalComp*> sources;
};

} // namespace

/// 500 graphs: at every meeting all that arrives does so at one frame, that of the longest path.
TEST(PlanLatency, EveryMeetingOfARandomGraphIsExact) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        LateNet net(seed);
        const int total = std::max(net.ends[0].leaves, net.ends[1].leaves);
        std::vector<float> heard[2];
        for (int done = 0; done <= total; done += LateNet::frames) {
            net.run();
            for (const int k : {0, 1}) {
                const float* got = net.ends[size_t(k)].comp->output()->bufL;
                heard[k].insert(heard[k].end(), got, got + LateNet::frames);
            }
        }
        ASSERT_EQ(net.host->plans->latency(), total) << seed;
        for (const LateNet::Unit& u : net.units) {
            const auto* group = static_cast<LateGroup*>(u.comp);
            if (group->first < 0) continue; // nothing leads from it to an out
            ASSERT_EQ(group->first, u.arrives) << seed;
            ASSERT_EQ(group->last, u.arrives) << seed;
        }
        for (const auto& out : heard)
            for (int i = 0; i < int(out.size()); ++i)
                ASSERT_TRUE(out[size_t(i)] == 0.0f || i == total) << seed << " at " << i;
    }
}

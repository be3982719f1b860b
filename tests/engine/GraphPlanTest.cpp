#include "StripFixture.h"

#include "engine/plan/AheadWork.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"
#include "engine/plan/PlanFade.h"

#include <csignal>
#include <pthread.h>
#include <random>

namespace {

constexpr int frames = 16, buses = 3;

/// A random graph, and the same as plain numbers: what arrives at a unit is summed in
/// the order of its cables and of the strips that send to it.
class Net : public StripFixture {
public:
    explicit Net(unsigned seed) : StripFixture(frames), random(seed) {
        for (int i = 0; i < 3 + pick(12); ++i) addUnit(made(new SignalComp(host)), host->comps);
        for (int i = 0; i < pick(4); ++i) addUnit(made(new CGroupCh(host)), host->comps);
        for (int i = 0; i < buses; ++i) addUnit(made(new CGroupCh(host)), host->sends);
        units.push_back({out});
        for (int i = 0; i < 40; ++i) toggle();
    }
    /// As many threads help, with every block.
    void helpers(int count) {
        host->workers->setCount(count);
        host->workers->eager = true;
    }
    /// One cable more or less, at a place of its list; by a step that a block carries out. What
    /// fades with it has come and gone then.
    void edit() {
        const auto [from, to] = anyEnds();
        step([&](CUndo* u) { record(u, from, to); });
        settle();
    }
    void settle() {
        for (int done = 0; done <= host->framesInMs * PlanFade::ms; done += frames) block(frames);
    }
    /// Runs a block and tells whether it is what the plain numbers give.
    bool blockIsRight() {
        block(frames);
        const float wanted = solve();
        const float* got = out->output()->bufL;
        return std::all_of(got, got + frames, [&](float v) { return v == wanted; });
    }

private:
    void toggle() {
        const auto [from, to] = anyEnds();
        const GraphHold hold(host);
        CComp* at = units[to].comp;
        CAudioCable* cable = at->addAudioCable(units[from].comp->output(), nullptr);
        if (!at->audioCables.contains(cable)) delete cable; // there was one
    }
    struct Unit {
        CComp* comp;
        float factor = 0.0f;
        bool busy = false, done = false, stripped = false;
        float in = 0.0f, out = 0.0f;
    };

    void addUnit(CComp* c, CList& list) {
        const float factor = float(pick(1000)) * 1e-5f;
        if (auto* signal = dynamic_cast<SignalComp*>(c))
            signal->left = signal->right = [=, this](long) { return factor * beat(); };
        for (int k = 0; k < buses; ++k)
            if (pick(2)) c->output()->sendLevels[k]->level = float(pick(100)) / 200;
        units.push_back({c, factor});
        const GraphHold hold(host);
        list.add(c);
    }
    float beat() const { return float(1 + host->blocks % 7); }
    int pick(int n) { return int(random() % unsigned(n)); }
    /// Cables lead from one unit to a later one.
    std::pair<size_t, size_t> anyEnds() {
        const size_t from = size_t(pick(int(units.size()) - 1));
        const size_t last = units.size() - 1;
        return {from, pick(3) == 0 ? last : from + 1 + size_t(pick(int(last - from)))};
    }
    void record(CUndo* u, size_t from, size_t to) {
        CComp* c = units[to].comp;
        COutputChannel* ch = units[from].comp->output();
        if (CAudioCable* cable = getAudioCable(c, ch, nullptr))
            u->asRemove(cable, &c->audioCables);
        else
            u->asAdd(createAudioCable(c, ch, nullptr), &c->audioCables, pick(4) - 1);
    }
    Unit& unitOf(const CComp* c) {
        return *std::ranges::find(units, c, [](const Unit& u) { return u.comp; });
    }
    bool isBus(const Unit& u) const { return host->sends.contains(u.comp); }

    float solve() {
        for (Unit& u : units) u = {u.comp, u.factor};
        Unit& master = units.back();
        for (const bool ofBuses : {false, true})
            for (const auto* cable : out->audioCables) {
                Unit& from = unitOf(cable->fromComp);
                if (isBus(from) == ofBuses) master.in += fetch(from);
            }
        return master.in;
    }
    float fetch(Unit& u) {
        work(u);
        if (!std::exchange(u.stripped, true)) {
            CListItem* it = nullptr;
            for (const CSend* send : u.comp->output()->sendLevels)
                if (auto* bus = static_cast<CComp*>(host->sends.next2(&it)))
                    unitOf(bus).in += u.out * (send->level * send->level);
                else
                    break;
        }
        return u.out;
    }
    void work(Unit& u) {
        if (u.done || u.busy) return;
        u.busy = true;
        for (const auto* cable : u.comp->audioCables)
            if (Unit& from = unitOf(cable->fromComp); !from.busy) u.in += fetch(from);
        const bool makesSound = dynamic_cast<SignalComp*>(u.comp);
        u.out = makesSound ? u.in + u.factor * beat() : u.in;
        u.busy = false;
        u.done = true;
    }

    std::mt19937 random;
    std::vector<Unit> units; ///< the last is the audio out
};

/// A component of many strips, as a sequencer is; each plays 1.
class WideComp : public CComp {
public:
    WideComp(CQV* root, int strips) : CComp(root), count(strips) {}
    void init() override {
        for (int i = 0; i < count; ++i) outputs.add(new COutputChannel(this));
    }
    void process(int n) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        for (auto* ch : outputs) {
            std::fill_n(ch->bufL, n, 1.0f);
            std::fill_n(ch->bufR, n, 1.0f);
        }
    }

private:
    int count;
};

/// Runs a block of the net that a test edits, whenever it waits for a step.
Net* waiting = nullptr;

} // namespace

TEST(GraphPlan, SumsAsTheCablesLead) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        Net net(seed);
        waiting = &net;
        messageHooks().pumpIdle = [] { waiting->block(frames); };
        rtReset();
        for (int i = 0; i < 8; ++i) {
            ASSERT_TRUE(net.blockIsRight()) << "graph " << seed << ", after edits: " << i;
            net.edit();
            if (i % 3 != 2) continue;
            net.undo();
            net.settle();
        }
        EXPECT_EQ(rtViolations(), 0);
        messageHooks().pumpIdle = nullptr;
    }
}

/// However many strips of one component lead there, one after the other.
TEST(GraphPlan, SumsAllStripsOfAComponent) {
    for (const int strips : {1, 8, 9, 16, 31, 32, 100}) {
        StripFixture t(frames);
        auto* wide = t.add(new WideComp(t.host, strips));
        {
            const GraphHold hold(t.host);
            for (auto* ch : wide->outputs) t.out->addAudioCable(ch, nullptr);
        }
        t.block(frames);
        EXPECT_EQ(t.out->output()->bufL[0], float(strips));
        EXPECT_EQ(t.out->output()->bufR[frames - 1], float(strips));
    }
}

/// What a render leaves out gives silence meanwhile, and not what it gave last.
TEST(GraphPlan, WhatIsLeftOutIsSilent) {
    StripFixture t(frames);
    auto* kept = t.add(new SignalComp(t.host));
    auto* other = t.add(new SignalComp(t.host));
    for (auto* c : {kept, other}) {
        const GraphHold hold(t.host);
        t.out->addAudioCable(c->output(), nullptr);
    }
    t.block(frames);
    EXPECT_EQ(other->output()->bufL[0], 1.0f);
    t.host->plans->current().keepTo({kept->output()});
    t.block(frames);
    EXPECT_EQ(kept->output()->bufL[0], 1.0f);
    EXPECT_EQ(other->output()->bufL[0], 0.0f);
}

/// Any number of threads gives the same, more than there are processors among them, while cables
/// come and go.
TEST(GraphPlan, ThreadsChangeNothing) {
    for (const int helpers : {0, 1, 3, 7}) {
        Net net(11);
        net.helpers(helpers);
        waiting = &net;
        messageHooks().pumpIdle = [] { waiting->block(frames); };
        rtReset();
        for (int i = 0; i < 1000; ++i) {
            ASSERT_TRUE(net.blockIsRight()) << helpers << " threads, block " << i;
            if (i % 10 == 9) net.edit();
        }
        EXPECT_EQ(rtViolations(), 0) << helpers << " threads";
        messageHooks().pumpIdle = nullptr;
    }
}

/// Cables that come and go while the graph plays: what they bring rises and falls in straight
/// lines, into an out as into a group, and what they do not touch stays as it is.
TEST(GraphPlan, CablesFade) {
    constexpr float own = 0.5f, other = 0.25f;
    for (const bool grouped : {false, true}) {
        StripFixture f(64);
        const auto constant = [&f](float level) {
            auto* s = f.add(new SignalComp(f.host));
            s->left = s->right = [level](long) { return level; };
            return s;
        };
        SignalComp* source = constant(own);
        f.connect(constant(other));
        CComp* to = f.out;
        if (grouped) f.connect(to = f.add(new CGroupCh(f.host)));
        std::vector<float> heard;
        const auto listen = [&](int blocks) {
            for (int i = 0; i < blocks; ++i) {
                f.block(64);
                const float* got = f.out->output()->bufL;
                heard.insert(heard.end(), got, got + 64);
            }
        };
        listen(2);
        rtReset();
        for (const bool there : {true, false, true}) {
            CUndo* u = f.host->undoStart("Cable", f.host, {.graph = true});
            if (there)
                u->asAdd(createAudioCable(to, source->output(), nullptr), &to->audioCables);
            else
                u->asRemove(getAudioCable(to, source->output(), nullptr), &to->audioCables);
            f.host->undoEnd(u, false);
            listen(10);
            EXPECT_EQ(heard.back(), there ? own + other : other) << grouped;
        }
        EXPECT_EQ(rtViolations(), 0);
        const float most = own / float(f.host->framesInMs * PlanFade::ms) + 1e-6f;
        float steepest = 0.0f;
        for (size_t i = 1; i < heard.size(); ++i)
            steepest = std::max(steepest, std::fabs(heard[i] - heard[i - 1]));
        EXPECT_LE(steepest, most) << grouped;
        EXPECT_EQ(heard.front(), other);
    }
}

namespace {

/// The latest letters of any threads.
class Log {
public:
    void add(char letter) { letters[count++ % 64] = letter; }
    std::string take() { return {letters, letters + count.exchange(0) % 64}; }

private:
    std::atomic<char> letters[64] = {};
    std::atomic<int> count{0};
};

/// A gain that somebody else works out as soon as it has begun, and that notes what is asked of it:
/// its name in capitals when it begins.
class AheadGain : public GainComp, public AheadWork {
public:
    AheadGain(CQV* root, char letter, Log& notes, float factor, float constant = 0.0f)
        : GainComp(root, factor, constant), name(letter), log(notes) {}
    bool worksElsewhere() const override { return true; }
    void beginAhead(int n) override {
        log.add(char(name - 'a' + 'A'));
        GainComp::process(n);
    }
    void process(int) override { log.add(name); }

private:
    const char name;
    Log& log;
};

} // namespace

/// Inserts that work elsewhere begin together, as far as they do not wait for each other, and what
/// comes of it is the same; alone or with helpers, in blocks that are measured and in others.
TEST(GraphPlan, InsertsOfALevelBeginTogether) {
    for (const int helpers : {0, 2}) {
        StripFixture f(64);
        f.host->workers->setCount(helpers);
        f.host->workers->eager = helpers > 0;
        Log log;
        SignalComp *one = f.addSignal(), *two = f.addSignal();
        auto* group = f.add(new CGroupCh(f.host));
        f.connect(one, group);
        f.connect(group);
        const auto ahead = [&](CComp* at, char name, float factor) {
            f.addInsert(at->output(), new AheadGain(f.host, name, log, factor));
        };
        ahead(one, 'a', 2.0f);
        f.addInsert(one->output(), new GainComp(f.host, 3.0f));
        ahead(one, 'b', 5.0f);
        f.addInsert(two->output(), new GainComp(f.host, 7.0f));
        ahead(two, 'c', 11.0f);
        ahead(group, 'd', 13.0f);
        f.block(64);
        rtReset();
        for (int block = 0; block < 20; ++block) {
            log.take();
            f.block(64);
            const std::string order = log.take();
            const auto at = [&](char name) { return order.find(name); };
            EXPECT_EQ(order.size(), 8u) << order;
            EXPECT_TRUE(std::max(at('A'), at('C')) < std::min(at('a'), at('c'))) << order;
            EXPECT_TRUE(at('a') < at('B') && at('b') < at('D') && at('D') < at('d')) << order;
            EXPECT_EQ(f.out->output()->bufL[63], 30.0f + 30.0f * 13.0f + 77.0f);
        }
        EXPECT_EQ(rtViolations(), 0);
    }
}

/// Inserts that come, go and change places while the graph plays: in straight lines, back and
/// forth, and a path beside them stays as it is, bit by bit.
class FadingInserts : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(GraphPlan, FadingInserts, testing::Bool());

TEST_P(FadingInserts, Fade) {
    constexpr float own = 0.5f;
    Log log;
    StripFixture f(64);
    SignalComp* source = f.addSignal();
    source->left = source->right = [](long) { return own; };
    SignalComp* beside = f.add(new SignalComp(f.host));
    beside->left = beside->right = [](long at) { return float(at % 97); };
    auto* group = f.add(new CGroupCh(f.host));
    f.connect(beside, group);
    f.connect(group);
    group->output()->setVol(0.0f, false);
    group->output()->vol = 0.0f;
    const auto gain = [&](char name, float factor, float constant) {
        return f.made(GetParam() ? new AheadGain(f.host, name, log, factor, constant)
                                 : new GainComp(f.host, factor, constant));
    };
    GainComp *const halves = gain('h', 0.5f, 0.0f), *const doubles = gain('d', 2.0f, 0.25f);
    std::vector<float> heard;
    const auto listen = [&](int blocks) {
        for (int i = 0; i < blocks; ++i) {
            f.block(64);
            const float* got = f.out->output()->bufL;
            heard.insert(heard.end(), got, got + 64);
            for (int k = 0; k < 64; ++k)
                ASSERT_EQ(group->input()->bufL[k], float((beside->at - 64 + k) % 97));
        }
    };
    const auto edit = [&](auto&& record, float wanted) {
        CUndo* u = f.host->undoStart("Insert", f.host, {.graph = true});
        record(u);
        f.host->undoEnd(u, false);
        listen(10);
        EXPECT_EQ(heard.back(), wanted);
    };
    listen(2);
    rtReset();
    CList* const list = &source->output()->inserts;
    edit([&](CUndo* u) { u->asAdd(halves, list); }, own * 0.5f);
    edit([&](CUndo* u) { u->asAdd(doubles, list); }, own + 0.25f);
    edit([&](CUndo* u) { u->asRemove(halves, list); }, own * 2 + 0.25f);
    f.host->undoClicked();
    listen(10);
    EXPECT_EQ(heard.back(), own + 0.25f);
    f.host->undoClicked();
    listen(10);
    EXPECT_EQ(heard.back(), own * 0.5f);
    EXPECT_EQ(rtViolations(), 0);
    const float most = 1.0f / float(f.host->framesInMs * PlanFade::ms);
    for (size_t i = 1; i < heard.size(); ++i)
        ASSERT_LE(std::fabs(heard[i] - heard[i - 1]), most) << i;
}

namespace {

std::atomic<bool> stuck{false}, released{false};

void getStuck(int) {
    stuck = true;
    while (!released) continue;
    stuck = false;
}

/// Finds out which other thread helps.
class Witness : public SignalComp {
public:
    using SignalComp::SignalComp;
    std::atomic<pthread_t> helper{};
    void process(int n) override {
        if (!pthread_equal(pthread_self(), main)) helper = pthread_self();
        SignalComp::process(n);
    }

private:
    const pthread_t main = pthread_self();
};

} // namespace

TEST(GraphPlan, AThreadThatSleepsHoldsUpNobody) {
    StripFixture f(64);
    std::vector<Witness*> units;
    for (int i = 0; i < 8; ++i) f.connect(units.emplace_back(f.add(new Witness(f.host))));
    f.host->workers->setCount(1);
    f.host->workers->eager = true;
    pthread_t helper{};
    ASSERT_TRUE(comes([&] {
        f.block(64);
        for (const Witness* u : units)
            if (u->helper.load()) helper = u->helper;
        return helper != pthread_t{};
    })) << "nobody helps";
    released = false;
    std::signal(SIGUSR1, getStuck);
    pthread_kill(helper, SIGUSR1);
    ASSERT_TRUE(comes([] { return stuck.load(); }));
    for (int i = 0; i < 100; ++i) {
        f.block(64);
        ASSERT_EQ(f.out->output()->bufL[0], 8.0f);
    }
    EXPECT_TRUE(stuck);
    released = true;
    EXPECT_TRUE(comes([] { return !stuck.load(); }));
    std::signal(SIGUSR1, SIG_DFL);
}

#include "engine/DelayCompensation.h"
#include "engine/StripFixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace {

/// An insert that delays by what it reports; off, it passes the sound on at once.
class LateInsert : public GainComp {
public:
    /// With every change of `turnOf` it forgets what it holds.
    LateInsert(CQV* root, int frames, const int& turnOf)
        : GainComp(root), line(size_t(frames)), turn(turnOf) {}
    int getDelay() override { return int(line.size()); }
    void process(int frames) override {
        if (turn != heldSince) line.assign(line.size(), 0.0f);
        heldSince = turn;
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
    const int& turn;
    int heldSince = 0;
};

SignalComp* addLate(StripFixture& t, CComp* to, int latency) {
    auto* c = t.add(new SignalComp(t.host));
    c->latency = latency;
    t.connect(c, to);
    return c;
}

/// Three sources, two of them in groups of their own, and two buses that all of these send to. The
/// sources all sound the same.
class Chain : public StripFixture {
public:
    static constexpr int blockFrames = 64, longest = 48; ///< blocks, of all latencies together
    enum class Sound { none, noise, click } sound = Sound::none;
    int turn = 0; ///< the inserts start each one empty; the lines of the graph are on their own

    Chain() : StripFixture(blockFrames) {
        const auto play = [this](long at) {
            if (sound == Sound::click) return at % blockFrames ? 0.0f : clickLevel;
            return sound == Sound::noise ? 0.01f : 0.0f;
        };
        for (SignalComp*& s : sources) s = add(new SignalComp(host)), s->left = play;
        for (CGroupCh*& g : groups) g = add(new CGroupCh(host));
        for (CGroupCh*& b : buses) b = addBus();
        ends = {{sources[0], out}, {sources[1], groups[0]}, {sources[2], groups[1]},
                {groups[0], out},  {groups[1], out},        {buses[0], out},
                {buses[1], out}};
        for (const auto& [from, to] : ends)
            if (!cable(from, to)) connect(from, to);
        for (int k = 0; k < 5; ++k) {
            ends[size_t(k)].from->output()->sendLevels[0]->level = 0.5f;
            ends[size_t(k)].from->output()->sendLevels[1]->level = k % 2 ? 1.0f : 0.25f;
        }
    }

    /// A step of undo about the chain, or one taken back or done again.
    void edit() {
        const int kind = pick(8);
        const bool busGone = host->sends.getCount() < 2; // only undo brings it back
        if (kind < (busGone ? 6 : 2)) return host->undoClicked();
        if (kind < 4) return host->redoClicked();
        const auto& [from, to] = ends[size_t(pick(7))];
        if (isBus(from) && host->sends.indexed(from) < 0) return;
        COutputChannel* ch = from->output();
        auto* insert = static_cast<LateInsert*>(ch->inserts.getFirst());
        CUndo* u = host->undoStart("Edit", host, 0);
        if (kind == 4 && insert) {
            u->asInt(insert->enabled.address());
            insert->enabled = !insert->enabled;
        } else if (kind == 5 && isBus(from)) {
            host->stripCables(from, u);
            u->asRemove(from, &host->sends);
        } else if (kind == 6) {
            if (CAudioCable* c = cable(from, to))
                u->asRemove(c, &to->audioCables);
            else
                u->asAdd(createAudioCable(to, from->output(), nullptr), &to->audioCables);
        } else if (insert) {
            u->asRemove(insert, &ch->inserts);
        } else {
            constexpr int latencies[] = {1000, 77, 500};
            insert = new LateInsert(host, latencies[pick(3)], turn);
            insert->init();
            insert->createBuffers(blockFrames);
            u->asAdd(insert, &ch->inserts);
        }
        host->undoEnd(u, false);
    }
    /// The one frame at which a click has to come out.
    int due() {
        int direct = 0, behind = 0;
        for (const auto& [from, to] : ends) {
            if (to != out || !cable(from, to)) continue;
            int& most = isBus(from) ? behind : direct;
            most = std::max(most, latency(from));
        }
        return direct + behind;
    }
    /// How loud it has to be: every way through strips that are heard, with the squared levels.
    float level() {
        float sum = 0;
        for (const auto& [from, to] : ends) {
            if (isBus(from) || !carries(from) || !cable(from, to) || (to != out && !cable(to, out)))
                continue;
            if (to == out) sum += 1;
            for (CGroupCh* bus : buses) {
                const int k = host->sends.indexed(bus);
                if (k < 0 || !cable(bus, out)) continue;
                const float amount = from->output()->sendLevels[k]->level;
                sum += amount * amount;
            }
        }
        return sum * clickLevel;
    }

private:
    struct Ends {
        CComp *from, *to;
    };
    static constexpr float clickLevel = 1.0f / 64;

    int pick(int n) { return int(random() % unsigned(n)); }
    static CAudioCable* cable(CComp* from, CComp* to) {
        return getAudioCable(to, from->output(), nullptr);
    }
    bool isBus(CComp* c) const { return c == buses[0] || c == buses[1]; }
    CComp* sourceOf(CComp* group) {
        for (int i = 0; i < 2; ++i)
            if (group == groups[i] && cable(sources[i + 1], group)) return sources[i + 1];
        return nullptr;
    }
    bool carries(CComp* c) {
        return c == sources[0] || c == sources[1] || c == sources[2] || sourceOf(c);
    }
    int latency(CComp* c) {
        int sum = 0;
        for (auto* insert : each<CComp>(c->output()->inserts))
            if (insert->enabled) sum += insert->getDelay();
        return sum + (sourceOf(c) ? latency(sourceOf(c)) : 0);
    }

    SignalComp* sources[3] = {};
    CGroupCh *groups[2] = {}, *buses[2] = {};
    std::vector<Ends> ends;
    std::mt19937 random{1};
};

} // namespace

/// Whatever is put into a chain, taken out, switched off and taken back while it sounds: all ways
/// of an impulse meet on one frame, and no line gives back old sound.
TEST(DelayCompensation, ImpulsesMeetThroughAnyChain) {
    Chain t;
    const auto expectOnly = [&t](int frame, float level, const std::string& when) {
        for (int i = 0; i < int(t.left.size()); ++i)
            ASSERT_EQ(t.left[size_t(i)], i == frame ? level : 0.0f) << i << " of " << frame << when;
    };
    while (t.turn < 500) {
        const std::string when = ", turn " + std::to_string(t.turn);
        t.sound = Chain::Sound::noise;
        t.run(20);
        t.edit();
        t.run();
        t.sound = Chain::Sound::none;
        t.run(Chain::longest);
        t.forget();
        ++t.turn;
        t.edit();
        t.run(Chain::longest);
        ASSERT_NO_FATAL_FAILURE(expectOnly(-1, 0, when));
        t.forget();
        t.sound = Chain::Sound::click;
        t.run();
        t.sound = Chain::Sound::none;
        t.run(Chain::longest);
        ASSERT_NO_FATAL_FAILURE(expectOnly(t.due(), t.level(), when));
    }
}

/// The sum of a path: the component, the running inserts of its channel, the longest before. One
/// that is switched off or frozen has none.
TEST(DelayCompensation, SumOfAPath) {
    class Frozen : public SignalComp {
    public:
        using SignalComp::SignalComp;
        int freezed(COutputChannel* ch) override { return ch == output() && frozen; }
        bool frozen = false;
    };
    StripFixture t;
    auto* s = t.add(new Frozen(t.host));
    s->latency = 10;
    const int never = 0;
    addLate(t, s, 5);
    CComp* longest = addLate(t, s, 50);
    addLate(t, longest, 7);
    CComp* insert = t.addInsert(s->output(), new LateInsert(t.host, 100, never));
    t.addInsert(s->output(), new LateInsert(t.host, 1000, never))->enabled = 0;
    const GraphHold hold(t.host);
    const auto sum = [s] { return sumDelay(s, s->output()); };
    EXPECT_EQ(sum(), 10 + 100 + 50 + 7);
    longest->enabled = 0;
    EXPECT_EQ(sum(), 10 + 100 + 5);
    insert->enabled = 2;
    EXPECT_EQ(sum(), 10 + 5) << "only 1 is on";
    s->frozen = true;
    EXPECT_EQ(sum(), 0);
    s->frozen = false;
    s->enabled = 0;
    EXPECT_EQ(sum(), 0);
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

/// The line itself, over several turns of its capacity: a change, and a gap between its blocks,
/// drop what is in it; a delay beyond the capacity wraps.
TEST(CPDC, GivesBackWhatWentInAndNothingOlder) {
    CPDC line;
    line.base = 30;
    unsigned block = 0;
    float l = 0, r = 0;
    const auto expectDelay = [&](int delay, int frames) {
        for (int i = 0; i < frames; ++i) {
            line.exchange(float(i + 1), float(-i - 1), l, r);
            ASSERT_EQ(l, i < delay ? 0.0f : float(i + 1 - delay)) << i << " of " << delay;
            ASSERT_EQ(r, -l);
        }
    };
    for (const int delay : {100, 101, 32767, 32768 + 7, 1 << 20}) {
        line.setDelay(30 + delay);
        EXPECT_EQ(line.delay, delay);
        line.enter(++block);
        expectDelay(delay & CPDC::mask, 70000);
        line.setDelay(30 + delay);
        line.enter(++block);
        line.exchange(9, 9, l, r);
        EXPECT_NE(l, 0.0f) << "it goes on";
        line.enter(block += 2);
        expectDelay(delay & CPDC::mask, 70000);
    }
}

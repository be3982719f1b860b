#include "instruments/CArp.h"

#include "base/CStream.h"
#include "base/Random.h"
#include "engine/MidiBytes.h"
#include "instruments/ArpFiles.h"
#include "support/RtTrap.h"
#include "support/TestHost.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace {

using Events = std::vector<std::pair<long, int>>; ///< frame and message

int on(int key, int velocity = 100) {
    return asData(midiNoteOn, key, velocity);
}
int off(int key) {
    return asData(midiNoteOff, key, 0);
}
/// Frame of a tick at 120 beats a minute and 44,100 Hz.
long frameOf(double tick) {
    return long(std::floor(tick * 22.96875 + 0.5));
}

/// An arpeggiator that hangs nowhere and is played by hand.
struct Bench {
    TestHost host;
    CArp arp{host.host};
    CArpProg* prog;
    Events heard;
    long past = 0;

    Bench() {
        arp.init();
        prog = arp.getProg();
        seedRand(1);
    }
    /// Plays one block, with the events that begin in it.
    void block(int frames, const Events& events = {}) {
        arp.prepare(frames);
        for (const auto& [frame, data] : events)
            if (frame >= past && frame < past + frames)
                arp.inPort()->addMidiEvent(double(frame - past), data);
        arp.process(frames);
        for (const CMIDIBytes* e = arp.outPort()->first(); e; e = e->next)
            heard.emplace_back(past + std::lround(e->time), e->data);
        past += frames;
    }
    /// Plays up to frame `end`, in blocks of `size` frames, 0 for odd ones.
    void play(long end, int size = 1024, const Events& events = {}) {
        std::mt19937 random(5);
        while (past < end) {
            const int wanted = size ? size : 1 + int(random() % 999);
            block(int(std::min(long(wanted), end - past)), events);
        }
    }
    /// Notes that sound still.
    std::map<int, int> sounding() const {
        std::map<int, int> open;
        for (const auto& [frame, data] : heard) {
            const int key = asByte1(data) + 128 * chByte(data);
            if (noteOn(data)) open[key]++;
            if (noteOff(data)) open.erase(key);
        }
        return open;
    }
};

/// What is to be heard of steps at given ticks, in any order.
struct Step {
    double tick, length;
    std::vector<int> keys{};
    int velocity = 100;
};

Events inOrder(Events events) {
    std::stable_sort(events.begin(), events.end());
    return events;
}

Events asEvents(const std::vector<Step>& steps, long end) {
    Events events;
    for (const Step& s : steps)
        for (int key : s.keys) {
            events.emplace_back(frameOf(s.tick), on(key, s.velocity));
            events.emplace_back(frameOf(s.tick + s.length), off(key));
        }
    std::erase_if(events, [end](const auto& e) { return e.first >= end; });
    return inOrder(events);
}

/// Chords of 240 ticks each, held to one tick before the next.
std::vector<Step> evenSteps(const std::vector<std::vector<int>>& chords) {
    std::vector<Step> steps;
    for (size_t i = 0; i < chords.size(); i++) steps.push_back({240.0 * double(i), 239, chords[i]});
    return steps;
}

const int blockSizes[] = {1024, 1, 7, 64, 0};

} // namespace

TEST(CArp, PatternsFollowTheTables) {
    struct Case {
        const char* name;
        int mode, octaves, transpose;
        std::vector<int> held;
        std::vector<std::vector<int>> chords;
    };
    const Case cases[] = {
        {"as played", 0, 1, 0, {64, 60, 67}, {{64}, {60}, {67}, {64}, {60}}},
        {"up", 1, 1, 0, {64, 60, 67}, {{60}, {64}, {67}, {60}, {64}}},
        {"down", 2, 1, 0, {64, 60, 67}, {{67}, {64}, {60}, {67}}},
        {"up-down", 3, 1, 0, {64, 60, 67}, {{60}, {64}, {67}, {64}, {60}}},
        {"up-down, one", 3, 1, 0, {64}, {}},
        {"up and down", 4, 1, 0, {64, 60, 67}, {{60}, {64}, {67}, {67}, {64}, {60}, {60}}},
        {"up and down, two", 4, 1, 0, {64, 60}, {{60}, {64}, {64}, {60}, {60}}},
        {"down-up", 5, 1, 0, {64, 60, 67}, {{67}, {64}, {60}, {64}, {67}}},
        {"down-up, one", 5, 1, 0, {64}, {}},
        {"down and up", 6, 1, 0, {64, 60, 67}, {{67}, {64}, {60}, {60}, {64}, {67}, {67}}},
        {"chord", 7, 1, 0, {64, 60}, {{64, 60}, {64, 60}, {64, 60}}},
        {"two octaves", 1, 2, 0, {60, 64}, {{60}, {64}, {72}, {76}, {60}, {64}}},
        {"three octaves", 1, 3, 0, {60}, {{60}, {72}, {84}, {60}}},
        {"one octave and back", 1, 1, 1, {60}, {{60}, {72}, {60}, {72}}},
        {"three octaves and back", 1, 3, 1, {60}, {{60}, {72}, {84}, {72}, {60}, {72}}},
        {"chord, octaves", 7, 2, 0, {60, 64}, {{60, 64}, {72, 76}, {60, 64}}},
        {"beyond the keyboard", 1, 2, 0, {120}, {{120}, {}, {120}, {}}},
        {"no such mode", 9, 1, 0, {64, 60}, {{64}, {60}, {64}}},
    };
    for (const Case& c : cases)
        for (int size : blockSizes) {
            Bench b;
            b.arp.setMode(c.mode);
            b.arp.setOctaveRng(c.octaves);
            b.arp.setTransposeMode(c.transpose);
            Events keys;
            for (int key : c.held) keys.emplace_back(0, on(key));
            const long end = frameOf(240.0 * double(c.chords.size()));
            b.play(end, size, keys);
            EXPECT_EQ(inOrder(b.heard), asEvents(evenSteps(c.chords), end))
                << c.name << ' ' << size;
        }
}

/// Also a key that comes in mid block starts on its own frame, and the swing of a controller with
/// the next pair of steps.
TEST(CArp, StepsAndLengthsFollowTheSettings) {
    struct Case {
        float step, swing, gate;
        int triplets, controller;
        std::vector<Step> steps;
    };
    const Case cases[] = {
        {240, 1.0f, 1.0f, 0, 0, {{0, 318}, {319.2, 159}, {480, 318}, {799.2, 159}, {960, 318}}},
        {240, 0.5f, 0.5f, 0, 0, {{0, 138}, {279.6, 99}, {480, 138}, {759.6, 99}, {960, 138}}},
        {240, 0.0f, 0.7f, 1, 0, {{0, 111}, {160, 111}, {320, 111}, {480, 111}, {640, 111}}},
        {60, 0.0f, 0.01f, 0, 0, {{0, 1}, {60, 1}, {120, 1}, {180, 1}, {240, 1}, {300, 1}}},
        {480, 0.0f, 0.7f, 0, 0, {{0, 335}, {480, 335}, {960, 335}}},
        {240, 0.0f, 1.0f, 0, 21, {{0, 239}, {240, 239}, {480, 318}, {799.2, 159}, {960, 318}}},
        {240, 0.0f, 0.5f, 0, 20, {{0, 119}, {240, 239}, {480, 239}, {720, 239}}},
        {0.0f, 9.0f, 0.0f, 1, 0, {{0, 1}, {1.33 * 2 / 3, 1}, {4.0 / 3, 1}}},
    };
    const long start = 777;
    for (const Case& c : cases)
        for (int size : blockSizes) {
            Bench b;
            b.prog->stepTicks = c.step;
            b.prog->swing = c.swing;
            b.prog->gate = c.gate;
            b.prog->setTriplets(c.triplets);
            b.arp.ccGate = 20;
            b.arp.ccSwing = 21;
            std::vector<Step> steps = c.steps;
            for (Step& s : steps) s.keys = {60};
            const long end = frameOf(steps.back().tick + 0.1);
            Events events{{start, on(60)}};
            if (c.controller) events.emplace_back(start + 1, asData(0xB0, c.controller, 127));
            b.play(start + end, size, events);
            for (auto& e : b.heard) e.first -= start;
            EXPECT_EQ(inOrder(b.heard), asEvents(steps, end)) << c.step << ' ' << size;
        }
}

TEST(CArp, ChanceFollowsItsDraws) {
    for (int size : blockSizes)
        for (int mode : {1, 8}) {
            Bench b;
            b.prog->setMode(mode);
            b.arp.setProb(0.6f);
            b.prog->setRndVelocity(0.5f);
            b.prog->setRndGate(0.25f);
            seedRand(9);
            const int held[] = {60, 64, 67};
            std::vector<int> pattern(held, held + 3);
            const auto shuffle = [&](int count) {
                pattern.clear();
                for (int i = 0; i < count; i++) pattern.push_back(held[int(asRand() * count)]);
            };
            for (int keys = 1; mode == 8 && keys <= 3; keys++) shuffle(keys);
            std::vector<Step> steps;
            for (int i = 0; i < 12; i++) {
                const double r = asRand();
                if (mode == 8 && i > 0 && i % 3 == 0) shuffle(3);
                if (r > double(0.6f)) continue;
                steps.push_back({240.0 * i,
                                 std::floor(240 * (0.75 + 0.25 * r) - 1),
                                 {pattern[size_t(i % 3)]},
                                 int(100 * (0.5 + 0.5 * r) + 0.5)});
            }
            seedRand(9);
            const long end = frameOf(240.0 * 12);
            b.play(end, size, {{0, on(60)}, {0, on(64)}, {0, on(67)}});
            ASSERT_LT(steps.size(), 12u);
            EXPECT_EQ(inOrder(b.heard), asEvents(steps, end)) << mode << ' ' << size;
        }
}

/// A new chord stands at 0.67 of what was left of the running step, a key added to it at none.
TEST(CArp, LatchKeepsTheChordUntilTheNext) {
    for (int size : blockSizes) {
        Bench b;
        b.arp.setMode(arpUp);
        b.arp.setLatch(1);
        const Events keys{{0, on(60)},     {10, on(64)},    {3000, off(60)},  {3000, off(64)},
                          {12000, on(67)}, {16000, on(65)}, {17000, off(65)}, {17001, off(67)}};
        b.play(30000, size, keys);
        Events starts;
        for (const auto& [frame, data] : b.heard)
            if (noteOn(data)) starts.emplace_back(frame, asByte1(data));
        // 12000 + 0.67 (16537.5 - 12000) = 15040.125, and then 5512.5 each. The second key makes
        // the pattern 65, 67, of which the second is next.
        const Events expected{{0, 60},     {5513, 64},  {11025, 60},
                              {15040, 67}, {20553, 67}, {26065, 65}};
        EXPECT_EQ(starts, expected) << size;
        b.arp.setLatch(0);
        b.play(60000, size);
        EXPECT_TRUE(b.sounding().empty());
        EXPECT_EQ(b.prog->keyCount, 0);
    }
}

/// However a pattern ends, all that sounds ends within its step, and nothing begins any more.
TEST(CArp, NothingHangs) {
    const std::map<std::string, std::function<void(Bench&, Events&)>> ways{
        {"off", [](Bench& b, Events&) { b.arp.enable(0); }},
        {"off and on", [](Bench& b, Events&) { b.arp.enable(0), b.arp.enable(1); }},
        {"off by an undone value", [](Bench& b, Events&) { b.arp.enabled = 0; }},
        {"other mode", [](Bench& b, Events&) { b.arp.setMode(arpChord); }},
        {"panic", [](Bench&, Events& e) { e.emplace_back(9000, asData(0xB0, 123, 0)); }},
        {"keys let go",
         [](Bench&, Events& e) {
             e.insert(e.end(), {{9000, off(60)}, {9000, off(64)}});
         }},
        {"keys let go, tempo",
         [](Bench& b, Events& e) {
             b.host.host->tempoNow = 33.0f;
             e.insert(e.end(), {{9000, off(60)}, {9000, on(64, 0)}});
         }},
        {"other program",
         [](Bench& b, Events& e) {
             b.arp.progs.add(new CArpProg);
             b.arp.setProg(1);
             e.insert(e.end(), {{9000, off(64)}, {9001, off(60)}});
         }},
        {"other file",
         [](Bench& b, Events&) {
             CMemoryStream file;
             writeProgram(&file, CArpProg());
             file.setPos(0);
             EXPECT_TRUE(b.arp.openFromStream(&file));
         }},
    };
    for (const auto& [name, end] : ways)
        for (int size : blockSizes) {
            Bench b;
            b.arp.setOctaveRng(2);
            b.play(8900, size, {{0, on(60)}, {5, on(64)}});
            EXPECT_EQ(b.sounding().size(), 1u);
            Events events;
            end(b, events);
            b.play(9100, size, events);
            const auto count = b.heard.size();
            b.play(60000, size);
            EXPECT_TRUE(b.sounding().empty()) << name << ' ' << size;
            for (size_t i = count; i < b.heard.size(); i++)
                EXPECT_TRUE(noteOff(b.heard[i].second)) << name << ' ' << size;
        }
}

/// A note that sounds since before the arpeggiator was switched on has to end as it began; other
/// events go through at their time.
TEST(CArp, PassesWhatIsNotItsOwn) {
    Bench b;
    b.arp.enable(0);
    const Events through{{3, on(60)}, {5, asData(0xE0, 1, 2)}, {90, on(61)}, {95, off(61)}};
    b.play(100, 64, through);
    EXPECT_EQ(b.heard, through);
    b.arp.enable(1);
    b.play(200, 64, {{120, asData(0xB0, 20, 1)}, {150, off(60)}, {160, off(59)}});
    EXPECT_EQ(b.heard.size(), 6u);
    EXPECT_EQ(b.heard.back(), std::make_pair(150L, off(60)));
}

/// Full queues lose steps, never note-offs.
TEST(CArp, SurvivesHammering) {
    std::mt19937 random(3);
    Bench b;
    for (int round = 0; round < 400; round++) {
        b.prog->setMode(int(random() % 9));
        b.prog->setStepTicks(random() % 3 ? 1.0f : 240.0f);
        b.prog->setOctaves(int(random() % 6));
        b.prog->setTransposeMode(int(random() % 2));
        b.prog->setSwing(float(random() % 3) * 0.5f);
        b.arp.setLatch(random() % 4 == 0);
        b.host.host->tempoNow = float(10 + random() % 241);
        const int frames = 1 + int(random() % 1500);
        Events events;
        for (int i = int(random() % 600); i > 0; i--) {
            const int key = int(random() % 40), kind = int(random() % 8);
            events.emplace_back(b.past + long(random()) % frames, kind < 2 ? off(key)
                                                                  : kind < 6
                                                                      ? on(key)
                                                                      : asData(0xB0, 7, key));
        }
        b.block(frames, events);
        EXPECT_LE(b.prog->keyCount, CArpProg::maxKeys);
    }
    b.arp.setLatch(0);
    b.arp.enable(0);
    b.host.host->tempoNow = 120.0f;
    b.play(b.past + 200000);
    EXPECT_TRUE(b.sounding().empty());
}

/// Both lengths of the block, of which the declared size never was true, with values beyond the
/// controls; and every way to cut the bytes short.
TEST(CArp, ReadsItsBlocks) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (int zeros : {6, 7}) {
        CMemoryStream s;
        for (const auto& [name, value] : {std::pair{"latch", 1}, {"ccgate", 200}, {"progi", 1}}) {
            s.writeId(name, 4);
            s.writeInt(value);
        }
        for (const char* name : {"one", "two"}) {
            s.writeId("prog", 3 + 36);
            s.writeStr(name);
            for (int v : {12, 9}) s.writeInt(v);
            for (float v : {0.0f, nan, -5.0f, 0.5f, 0.25f, 7.0f}) s.writeFloat(v);
            s.writeInt(1);
            for (int i = 0; i < zeros; i++) s.writeInt(0);
        }
        Bench b;
        s.setPos(0);
        b.arp.read(&s, int(s.size));
        ASSERT_EQ(b.arp.progs.getCount(), 2);
        const CArpProg& p = *b.arp.getProg();
        EXPECT_EQ(p.id, CStr("two"));
        EXPECT_EQ(std::make_tuple(int(b.arp.latch), int(b.arp.ccGate), int(p.mode), int(p.octaves),
                                  int(p.triplets)),
                  std::make_tuple(1, 127, 0, 5, 1));
        EXPECT_EQ(std::make_tuple(float(p.gate), float(p.prob), float(p.stepTicks), float(p.swing),
                                  float(p.rndGate), float(p.rndVelocity)),
                  std::make_tuple(0.01f, 1.0f, 1.0f, 0.5f, 0.25f, 1.0f));
        static_cast<CArpProg*>(b.arp.getProgram(0))->setTransposeMode(1);
        std::unique_ptr<CComp> twin(b.arp.copy());
        CMemoryStream first, second;
        b.arp.write(&first);
        twin->write(&second);
        ASSERT_EQ(first.size, second.size);
        EXPECT_EQ(first.size, 5 * 12 + 30 + 2 * (12 + 3 + 68));
        EXPECT_TRUE(std::equal(first.data, first.data + first.size, second.data));
        EXPECT_EQ(static_cast<CArpProg*>(twin->getProgram(0))->transposeMode, 1);
        std::mt19937 random(1);
        for (int64_t i = 0; i < 4 * s.size; i++) {
            CMemoryStream damaged;
            damaged.write(s.data, int(i < s.size ? i : s.size));
            if (i >= s.size) damaged.data[random() % size_t(s.size)] = (unsigned char)random();
            damaged.setPos(0);
            Bench other;
            other.arp.read(&damaged, int(s.size));
            ASSERT_TRUE(other.arp.getProg()) << i;
            EXPECT_EQ(damaged.getPos(), damaged.size);
        }
    }
}

/// Blocks of a driver, requests of the interface in between: nothing allocates, and a request is
/// served by the next block.
TEST(CArp, PlaysInTheGraph) {
    TestHost t(64);
    auto* arp = t.add(new CArp(t.host));
    t.connectMIDI(t.midiIn, arp);
    t.connectMIDI(arp, t.midiOut);
    t.run();
    rtReset();
    for (int mode = 0; mode < 9; mode++) {
        arp->setMode(mode);
        for (int key : {60, 64, 67}) t.send(on(key));
        t.run(400);
    }
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_GT(t.sent.size(), 50u);
    CUndo* step = t.host->undoStart("Cut", t.host, undoGraph);
    t.host->stripCables(arp, step);
    step->asRemove(arp, &t.host->comps);
    t.host->undoEnd(step, false);
    t.run(2);
    EXPECT_EQ(asByte1(t.sent.back().data), ccAllNotesOff) << "what it played must not hang";
    t.host->undoClicked();
    t.run(2);
    t.forget();
    t.run(400);
    EXPECT_TRUE(t.sent.empty()) << "it comes back without its keys";
}

#include "instruments/CArp.h"

#include "base/CStream.h"
#include "base/Random.h"
#include "engine/MidiBytes.h"
#include "support/Rows.h"
#include "support/TestHost.h"

#include <array>
#include <cmath>
#include <cstdlib>
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
    }
    void block(int frames, const Events& events) {
        const GraphMark mark(host.host);
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
        while (past < end)
            block(std::min(size ? size : 1 + int(random() % 999), int(end - past)), events);
    }
    /// Notes with more starts than ends, or fewer.
    std::map<int, int> sounding() const {
        std::map<int, int> open;
        for (const auto& [frame, data] : heard)
            open[asByte1(data)] += noteOn(data) ? 1 : noteOff(data) ? -1 : 0;
        std::erase_if(open, [](const auto& e) { return e.second == 0; });
        return open;
    }
};

struct Step {
    double tick, length;
    int key = 60;
    int velocity = 100;
};

const int blockSizes[] = {1024, 1, 7, 64, 0};

/// Plays events from frame 777 on, and looks for steps at 120 beats a minute, however it is cut.
void expectSteps(const std::string& name, const std::function<void(Bench&)>& setUp, Events events,
                 const std::vector<Step>& steps, double endTick) {
    const long start = 777;
    const auto frameOf = [](double tick) { return start + long(tick * 22.96875 + 0.5); };
    const long end = frameOf(endTick);
    Events expected;
    for (const Step& s : steps) {
        expected.emplace_back(frameOf(s.tick), on(s.key, s.velocity));
        const long last = frameOf(s.tick + s.length);
        if (last < end) expected.emplace_back(last, off(s.key));
    }
    std::sort(expected.begin(), expected.end());
    for (auto& e : events) e.first += start;
    for (int size : blockSizes) {
        Bench b;
        setUp(b);
        b.play(end, size, events);
        std::sort(b.heard.begin(), b.heard.end());
        EXPECT_EQ(b.heard, expected) << name << ", blocks of " << size;
    }
}

} // namespace

/// The steps that a picture shows are those that sound, and it is told how far they are.
TEST(CArp, StepsAreDrawnAsTheySound) {
    for (int mode = arpAsPlayed; mode <= arpChord; mode++)
        for (const int octaves : {1, 3}) {
            Bench b;
            b.arp.setMode(mode);
            b.arp.setOctaveRng(octaves);
            b.prog->setSwing(0.4f);
            b.prog->setGate(0.6f);
            b.arp.setTransposeMode(mode % 2);
            b.play(60000, 0, {{0, on(67)}, {0, on(60, 90)}, {0, on(64)}});
            ASSERT_TRUE(b.arp.sight.take());
            const ArpSight& sight = b.arp.sight.taken();
            const std::vector<CArpKey> keys(sight.keys, sight.keys + sight.keyCount);
            const int period = arpPeriod(*b.prog, keys);
            const std::vector<ArpStep> steps = arpSteps(*b.prog, keys, sight.taken);
            Events drawn;
            for (const ArpStep& step : steps)
                for (const CArpKey& note : step.notes)
                    drawn.emplace_back(std::lround(step.tick * 22.96875),
                                       on(note.key + CArpKey::middle, note.velocity));
            std::erase_if(b.heard, [](const auto& e) { return !noteOn(e.second); });
            EXPECT_EQ(b.heard, drawn) << mode;
            for (size_t i = 0; i + size_t(period) < steps.size(); i++)
                EXPECT_EQ(steps[i].notes.front().key, steps[i + size_t(period)].notes.front().key)
                    << mode << ", " << octaves << " octaves, step " << i;
        }
}

/// Steps are separated by blanks, the keys of a chord by plus signs.
TEST(CArp, PatternsFollowTheTables) {
    struct Case {
        const char* name;
        int mode, octaves, transpose;
        std::vector<int> held;
        const char* steps;
    };
    const Case cases[] = {
        {"as played", 0, 1, 0, {64, 60, 67}, "64 60 67 64 60"},
        {"up", 1, 1, 0, {64, 60, 67}, "60 64 67 60 64"},
        {"down", 2, 1, 0, {64, 60, 67}, "67 64 60 67"},
        {"up-down", 3, 1, 0, {64, 60, 67}, "60 64 67 64 60"},
        {"up and down", 4, 1, 0, {64, 60, 67}, "60 64 67 67 64 60 60"},
        {"down-up", 5, 1, 0, {64, 60, 67}, "67 64 60 64 67"},
        {"down-up, one", 5, 1, 0, {64}, "0"},
        {"down and up", 6, 1, 0, {64, 60, 67}, "67 64 60 60 64 67 67"},
        {"chord", 7, 1, 0, {64, 60}, "64+60 64+60 64+60"},
        {"three octaves", 1, 3, 0, {60}, "60 72 84 60"},
        {"one octave and back", 1, 1, 1, {60}, "60 72 60 72"},
        {"three octaves and back", 1, 3, 1, {60}, "60 72 84 72 60 72"},
        {"chord, octaves", 7, 2, 0, {60, 64}, "60+64 72+76 60+64"},
        {"beyond the keyboard", 1, 2, 0, {120}, "120 0 120 0"},
        {"no such mode", 9, 1, 0, {64, 60}, "64 60 64"},
    };
    for (const Case& c : cases) {
        Events events;
        for (int key : c.held) events.emplace_back(0, on(key));
        const auto setUp = [&](Bench& b) {
            b.arp.setMode(c.mode);
            b.arp.setOctaveRng(c.octaves);
            b.arp.setTransposeMode(c.transpose);
        };
        double tick = 0.0;
        std::vector<Step> steps;
        for (const char* at = c.steps; *at;) {
            char* next = nullptr;
            if (const int key = int(std::strtol(at, &next, 10))) steps.push_back({tick, 239, key});
            if (*next != '+') tick += 240.0;
            at = *next ? next + 1 : next;
        }
        expectSteps(c.name, setUp, events, steps, tick);
    }
}

/// A controller changes the gate at once, and the swing with the next pair of steps.
TEST(CArp, StepsAndLengthsFollowTheSettings) {
    for (const auto& [step, swing, gate, triplets, controller, steps] :
         Rows<float, float, float, int, int, std::vector<Step>>{
             {240, 0.5f, 0.5f, 0, 0, {{0, 138}, {279.6, 99}, {480, 138}, {759.6, 99}, {960, 138}}},
             {240, 0.0f, 0.7f, 1, 0, {{0, 111}, {160, 111}, {320, 111}, {480, 111}, {640, 111}}},
             {60, 0.0f, 0.01f, 0, 0, {{0, 1}, {60, 1}, {120, 1}, {180, 1}, {240, 1}, {300, 1}}},
             {480, 0.0f, 0.7f, 0, 0, {{0, 335}, {480, 335}, {960, 335}}},
             {240, 0.0f, 1.0f, 0, 21, {{0, 239}, {240, 239}, {480, 318}, {799.2, 159}, {960, 318}}},
             {240, 0.0f, 0.5f, 0, 20, {{0, 239}, {240, 239}, {480, 239}, {720, 239}}},
             {0.0f, 9.0f, 0.0f, 1, 0, {{0, 1}, {1.33 * 2 / 3, 1}, {4.0 / 3, 1}}},
         }) {
        const auto setUp = [&](Bench& b) {
            b.prog->stepTicks = step;
            b.prog->swing = swing;
            b.prog->gate = gate;
            b.prog->setTriplets(triplets);
            b.arp.ccGate = 20;
            b.arp.ccSwing = 21;
        };
        Events events{{0, on(60)}};
        if (controller) events.emplace_back(0, asData(midiController, controller, 127));
        expectSteps(std::to_string(step), setUp, events, steps, steps.back().tick + 0.1);
    }
}

/// One draw a step decides on all; random order then draws its pattern anew at each end.
TEST(CArp, ChanceFollowsItsDraws) {
    for (int mode : {1, 8}) {
        const auto setUp = [mode](Bench& b) {
            b.prog->setMode(mode);
            b.arp.setProb(0.6f);
            b.prog->setRndVelocity(0.5f);
            b.prog->setRndGate(0.25f);
            b.arp.chance.seed(9);
        };
        Random chance(9);
        const int held[] = {60, 64, 67};
        int pattern[] = {60, 64, 67};
        const auto shuffle = [&](int count) {
            for (int i = 0; i < count && mode == 8; i++)
                pattern[i] = held[int(chance.unit() * count)];
        };
        for (int keys = 1; keys <= 3; keys++) shuffle(keys);
        std::vector<Step> steps;
        for (int i = 0; i < 12; i++) {
            const double r = chance.unit();
            if (i > 0 && i % 3 == 0) shuffle(3);
            if (r <= double(0.6f))
                steps.push_back({240.0 * i,
                                 std::floor(240 * (0.75 + 0.25 * r) - 1),
                                 {pattern[i % 3]},
                                 int(100 * (0.5 + 0.5 * r) + 0.5)});
        }
        ASSERT_LT(steps.size(), 12u);
        expectSteps(std::to_string(mode), setUp, {{0, on(60)}, {0, on(64)}, {0, on(67)}}, steps,
                    240.0 * 12);
    }
}

/// A new chord begins at 0.67 of what is left of the running step: at frame
/// 12000 + 0.67 (16537.5 - 12000) = 15040.125. A key added to it leaves the grid alone.
TEST(CArp, LatchKeepsTheChordUntilTheNext) {
    for (int size : blockSizes) {
        Bench b;
        b.arp.setMode(arpUp);
        b.arp.setLatch(1);
        const Events played{{0, on(60)},     {10, on(64)},    {3000, off(60)},  {3000, off(64)},
                            {12000, on(67)}, {16000, on(65)}, {17000, off(65)}, {17001, off(67)}};
        b.play(30000, size, played);
        std::erase_if(b.heard, [](const auto& e) { return !noteOn(e.second); });
        const Events expected{{0, on(60)},     {5513, on(64)},  {11025, on(60)},
                              {15040, on(67)}, {20553, on(67)}, {26065, on(65)}};
        EXPECT_EQ(b.heard, expected) << size;
        b.arp.setLatch(0);
        b.play(60000, size);
        EXPECT_EQ(b.prog->keyCount, 0);
        EXPECT_TRUE(noteOff(b.heard.back().second));
    }
}

/// A note that sounds since before it was switched on ends as it began. A panic ends all.
TEST(CArp, PassesWhatIsNotItsOwn) {
    Bench b;
    b.arp.enable(0);
    Events through{{3, on(60)}, {5, asData(midiPitchBend, 1, 2)}, {90, on(61)}, {95, off(61)}};
    b.play(100, 64, through);
    EXPECT_EQ(b.heard, through);
    b.arp.enable(1);
    b.play(200, 64, {{120, asData(midiController, 20, 1)}, {150, off(60)}, {160, off(59)}});
    through.insert(through.end(), {{120, asData(midiController, 20, 1)}, {150, off(60)}});
    EXPECT_EQ(b.heard, through);
    b.play(40000, 64, {{210, on(62)}, {7000, asData(midiController, ccAllNotesOff, 0)}});
    EXPECT_TRUE(b.sounding().empty());
    EXPECT_LT(b.heard.back().first, 7002) << "no step follows";
}

/// Full queues lose steps, never note-offs.
TEST(CArp, SurvivesHammering) {
    std::mt19937 random(3);
    const auto dice = [&random](int sides) { return int(random() % unsigned(sides)); };
    Bench b;
    for (int round = 0; round < 400; round++) {
        b.prog->setMode(dice(9));
        b.prog->setStepTicks(dice(3) ? 1.0f : 240.0f);
        b.prog->setOctaves(dice(6));
        b.prog->setTransposeMode(dice(2));
        b.arp.setLatch(dice(4) == 0);
        b.host.host->tempoNow = float(10 + dice(241));
        const int frames = 1 + dice(1500), kinds = dice(2) ? 8 : 40;
        Events events;
        for (int i = dice(600); i > 0; i--) {
            const int key = dice(40) + (dice(50) ? 0 : 128), kind = dice(kinds);
            const int data = kind < 2 ? off(key) : kind < 6 ? on(key) : asData(0xB0, 7, key);
            events.emplace_back(b.past + dice(frames), data);
        }
        b.block(frames, events);
        EXPECT_LE(b.prog->keyCount, CArpProg::maxKeys);
    }
    b.arp.enable(0);
    b.play(b.past + 200000);
    EXPECT_TRUE(b.sounding().empty());
}

/// Both lengths of the block, of which the declared size never was true, with values beyond the
/// controls; cut short at every byte, and with a byte changed.
TEST(CArp, ReadsItsBlocks) {
    for (int zeros : {6, 7}) {
        CMemoryStream s, first, second;
        for (const auto& [name, value] : {std::pair{"latch", 1}, {"ccgate", 200}, {"progi", 1}}) {
            s.writeId(name, 4);
            s.writeInt(value);
        }
        for (const char* name : {"one", "two"}) {
            s.writeId("prog", 3 + 36);
            s.writeStr(name);
            for (int v : {12, 9}) s.writeInt(v);
            for (float v : {0.0f, std::nanf(""), -5.0f, 0.5f, 0.25f, 7.0f}) s.writeFloat(v);
            s.writeInt(1);
            for (int i = 0; i < zeros; i++) s.writeInt(0);
        }
        Bench b;
        s.setPos(0);
        b.arp.read(&s, int(s.size));
        ASSERT_EQ(b.arp.progs.getCount(), 2);
        CArpProg& p = *b.arp.getProg();
        EXPECT_EQ(p.id, CStr("two"));
        EXPECT_EQ(
            (std::array<float, 11>{float(b.arp.latch), float(b.arp.ccGate), float(p.mode),
                                   float(p.octaves), float(p.triplets), p.gate, p.prob, p.stepTicks,
                                   p.swing, p.rndGate, p.rndVelocity}),
            (std::array{1.0f, 127.0f, 0.0f, 5.0f, 1.0f, 0.01f, 1.0f, 1.0f, 0.5f, 0.25f, 1.0f}));
        p.setTransposeMode(1);
        const std::unique_ptr<CComp> twin(b.arp.copy());
        EXPECT_EQ(static_cast<CArpProg*>(twin->getProgram(1))->transposeMode, 1);
        b.arp.write(&first);
        twin->write(&second);
        ASSERT_EQ(first.size, 5 * 12 + 30 + 2 * (12 + 3 + 68));
        EXPECT_TRUE(std::equal(first.data, first.data + first.size, second.data));
        std::mt19937 random(1);
        for (int64_t i = 0; i < 4 * s.size; i++) {
            CMemoryStream damaged;
            damaged.write(s.data, int(std::min(i, s.size)));
            if (i >= s.size) damaged.data[random() % size_t(s.size)] = (unsigned char)random();
            damaged.setPos(0);
            CArp other(b.host.host);
            other.read(&damaged, int(s.size));
            ASSERT_TRUE(other.getProg()) << i;
        }
    }
}

#include "engine/CFileMapperBase.h"
#include "engine/CMap.h"
#include "engine/ControlSource.h"
#include "engine/MidiBytes.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"
#include "support/Rows.h"

namespace {

constexpr int controller(int number, int value) {
    return asData(midiController, number, value);
}

struct Fixture : StripFixture {
    Fixture() : StripFixture(256), target(add(new SignalComp(host))) { connect(target); }
    CList& maps() const { return host->maps.items(0)->items; }
    CMap* addMap(CObject* to, int cc, int param = 5) const {
        auto* map = new CMap;
        map->target = to;
        map->cc = cc;
        map->param = param;
        maps().add(map);
        return map;
    }
    /// One block with a controller in; the event that the target got, null for none.
    const CMIDIBytes* turn(int number, int value) {
        send(controller(number, value));
        run();
        return target->inPort()->first();
    }
    SignalComp* target;
};

} // namespace

TEST(MidiRouting, ControllersRunTheTransport) {
    Fixture t;
    CQV* q = t.host;
    int number = 0;
    for (Shared<int>* binding :
         {&q->ctrlStart, &q->ctrlStop, &q->ctrlRewind, &q->ctrlRecord, &q->ctrlTempo}) {
        q->learned = 0;
        *binding = -2;
        t.turn(++number, 50);
        EXPECT_TRUE(*binding == number && q->learned == 1 && !q->playing && !q->recording);
    }
    for (const auto& [controller, value, playing, recording, tempo] :
         Rows<int, int, int, int, float>{{1, 0, 0, 0, 120},
                                         {1, 64, 1, 0, 120},
                                         {4, 1, 1, 1, 120},
                                         {4, 127, 1, 1, 120},
                                         {4, 0, 1, 0, 120},
                                         {2, 0, 1, 0, 120},
                                         {5, 100, 1, 0, 200},
                                         {5, 0, 1, 0, 10},
                                         {2, 1, 0, 0, 10},
                                         {9, 1, 0, 0, 10}}) {
        t.turn(controller, value);
        EXPECT_TRUE(q->playing == playing && q->recording == recording && q->tempo == tempo)
            << controller << " " << value;
    }
    q->setPos(5000.0);
    for (const int value : {0, 1}) {
        t.turn(3, value);
        EXPECT_EQ(q->pos, value ? 0.0 : 5000.0);
    }
}

/// value = (min + v / 127 (max - min)) / 127, once per change, in place of the controller, as long
/// as the map's program is the current one.
TEST(MidiRouting, MapsSweepTheirRange) {
    for (const auto& [min, max, v, value] : Rows<int, int, int, double>{{0, 127, 64, 64 / 127.0},
                                                                        {127, 0, 127, 0.0},
                                                                        {20, 60, 127, 60 / 127.0},
                                                                        {20, 60, 0, 20 / 127.0},
                                                                        {-500, 127, 0, 0.0},
                                                                        {0, 9999, 127, 1.0}}) {
        Fixture t;
        t.connectMIDI(t.midiIn, t.midiOut);
        CMap* map = t.addMap(t.target, 7);
        map->min = min;
        map->max = max;
        for (const int program : {1, -1, 1000, 0}) {
            t.host->curMap = program;
            t.forget();
            const CMIDIBytes* e = t.turn(7, v);
            ASSERT_EQ(e != nullptr, program == 0) << program;
            EXPECT_EQ(t.sent.empty(), program == 0) << program;
            if (!e) continue;
            EXPECT_NEAR(e->value, value, 1e-6);
            EXPECT_TRUE(e->param == 5 && e->owner == t.target && e->time == 0.0);
        }
        EXPECT_EQ(t.turn(7, v), nullptr) << "the same value again";
        EXPECT_EQ(t.turn(8, v), nullptr) << "another controller";
    }
}

/// The channels of a sequencer have their events at the track.
/// A strip at half its volume, and where each value in turn leads it; -1: it stays.
TEST(MidiRouting, ModesMindWhereTheParameterIs) {
    struct Case {
        MapMode mode;
        int low, high;
        std::vector<std::pair<int, double>> turns;
    };
    const double start = 0.5, step = 1.0 / 127;
    const Case cases[] = {
        {mapJump, 0, 127, {{10, 10 * step}, {127, 1.0}}},
        {mapPickup, 0, 127, {{10, -1}, {40, -1}, {90, 90 * step}, {91, 91 * step}, {0, 0.0}}},
        {mapPickup, 0, 127, {{127, -1}, {64, 64 * step}, {127, 1.0}}},
        {mapPickup, 127, 0, {{10, -1}, {63, 64 * step}}},
        {mapScale, 0, 127, {{27, -1}, {77, 0.75}, {0, 0.0}}},
        {mapRelative, 0, 127, {{1, start + step}, {1, start + 2 * step}, {127, start + step}}},
        {mapRelative, 0, 64, {{63, 64 * step}, {65, step}}},
        {mapOffset, 0, 127, {{65, start + step}, {63, start}, {0, 0.0}}},
        {mapOffset, 127, 0, {{65, start - step}}}};
    for (const Case& c : cases) {
        Fixture t;
        COutputChannel* strip = t.target->output();
        CMap* map = t.addMap(strip, 20, 0);
        map->mode = c.mode;
        map->min = c.low;
        map->max = c.high;
        strip->vol = float(start);
        for (const auto& [value, share] : c.turns) {
            const CMIDIBytes* e = t.turn(20, value);
            ASSERT_EQ(e != nullptr, share >= 0) << c.mode << ": " << value;
            if (!e) continue;
            EXPECT_NEAR(double(e->value), share, 1e-4) << c.mode << ": " << value;
            strip->vol = e->value;
        }
    }
}

TEST(MidiRouting, TargetsWithinATrackAndWithoutPorts) {
    Fixture t;
    auto* seq = t.add(new SeqStub(t.host));
    seq->child = t.target;
    COutputChannel* ch = seq->output();
    CComp* insert = t.addInsert(ch, new GainComp(t.host));
    t.run(); // finds out what is an insert
    EXPECT_EQ(insert->sourceSeq, seq);
    CMIDIOut none(t.host); // without ports
    for (CObject* target : std::initializer_list<CObject*>{ch, insert, ch->sendLevels[2]})
        EXPECT_EQ(queueOfTarget(target), t.target->inPort());
    for (CObject* target : std::initializer_list<CObject*>{t.target->input(), &none, nullptr})
        EXPECT_EQ(queueOfTarget(target), nullptr);
}

/// A map takes controllers on the way into its component, also from elsewhere than a device.
TEST(MidiRouting, MapsServeWhatArrivesByCable) {
    Fixture t;
    SignalComp* source = t.add(new SignalComp(t.host));
    source->messages = {{33.0, controller(7, 127)}};
    t.connectMIDI(source, t.target);
    CMap* map = t.addMap(t.target->output(), 7);
    const auto expect = [&](const char* when, int kind) { // of what arrives, -1 nothing
        t.run();
        const CMIDIBytes* e = t.target->inPort()->first();
        EXPECT_EQ(e ? int(e->kind) : -1, kind) << when;
        EXPECT_TRUE(!e || e->time == 33.0) << when;
    };
    expect("of another component", eventMidi);
    map->comp = t.target;
    expect("its own", eventParam);
    expect("no change, but consumed", -1);
    map->cc = 99;
    map->learning = true;
    expect("learned", -1);
    EXPECT_EQ(map->cc, 7);
}

TEST(MidiRouting, ProgramChangesReachTheListOfProjects) {
    struct Mapper : CFileMapperBase {
        bool enabled() override { return on; }
        void setProgram(int index, bool) override { got.push_back(index); }
        bool on = false;
        std::vector<int> got;
    } mapper;
    TestHost t;
    t.host->fileMapper = &mapper;
    for (const int program : {11, 12}) {
        t.send(asData(midiProgram | 5, program, 0));
        t.run();
        EXPECT_TRUE(mapper.got.empty()) << "not on the audio thread";
        t.host->idle();
        mapper.on = true;
        if (program == 11) t.host->idle();
    }
    t.host->idle();
    EXPECT_EQ(mapper.got, std::vector{12}) << "once, and not what came before it was enabled";
}

TEST(MidiRouting, WhatTheUserMovesIsUnsaved) {
    Fixture t;
    COutputChannel* strip = t.target->output();
    t.addMap(strip, 7, 0);
    const auto play = [&] {
        t.target->moves = {{0, strip, 0, 0.25f}};
        t.run();
    };
    for (const auto& [name, modified, act] : Rows<const char*, bool, std::function<void()>>{
             {"view", true, [&] { t.host->addMap(t.target, 3, 0.5f); }},
             {"map", true, [&] { t.turn(7, 20); }},
             {"learned", true, [&] { t.host->ctrlTempo = -2, t.turn(9, 60); }},
             {"tempo", true, [&] { t.turn(9, 60); }},
             {"nothing", false, [&] { t.turn(8, 20); }},
             {"song", false, play}}) {
        t.host->markSaved(t.host->saveMark());
        act();
        EXPECT_EQ(t.host->modified(), modified) << name;
    }
}

/// The user's gesture: learn on, a control moved, a controller moved; for each kind of target.
TEST(MidiRouting, LearningMakesOneMapForEachParameter) {
    Fixture t;
    COutputChannel* ch = t.target->output();
    CComp* insert = t.addInsert(ch, new GainComp(t.host));
    CGroupCh* bus = t.addBus();
    t.host->addMap(t.target, 1, 0.5f);
    EXPECT_TRUE(t.maps().empty()) << "neither learning nor recording";
    t.host->mapLearn = 1;
    int count = 0;
    for (const auto& [target, comp, owner] :
         Rows<CObject*, CComp*, COutputChannel*>{{t.target, nullptr, nullptr},
                                                 {ch, t.target, nullptr},
                                                 {insert, t.target, ch},
                                                 {ch->sendLevels[0], t.target, ch},
                                                 {bus->output(), bus, nullptr}}) {
        for (const int param : {2, 3, 3}) { // the last one learns anew
            t.host->tasks->audioStopped();  // no step waits for a block
            t.host->addMap(target, param, 0.5f);
            auto* map = static_cast<CMap*>(t.maps().last());
            EXPECT_TRUE(map->target == target && map->comp == comp && map->owner == owner);
            EXPECT_TRUE(map->learning) << param;
            t.turn(20 + param, 127);
            EXPECT_TRUE(map->cc == 20 + param && !map->learning);
        }
        EXPECT_EQ(t.maps().getCount(), count += 2);
    }
    EXPECT_TRUE(t.host->undoText() == "Add");
    t.host->curMap = 5;
    t.host->addMap(t.target, 99, 0.5f);
    EXPECT_EQ(t.maps().getCount(), count) << "no program, no map";
}

/// Maps learn and follow keys, pressure, bends, fine pairs and chosen numbers, each by all its
/// bits; the values of one source move no other.
TEST(MidiRouting, MapsFollowAnySource) {
    const auto cc = [](int ch, int number, int value) {
        return asData(midiController | ch, number, value);
    };
    const struct {
        const char* name;
        std::vector<int> learns, moves;
        int source;
        double share;
    } cases[] = {
        {"1", {cc(0, 1, 9)}, {cc(3, 1, 127)}, 1, 1.0},
        {"Key 60", {asData(midiNoteOn, 60, 1)}, {asData(midiNoteOn | 2, 60, 127)}, 188, 1.0},
        {"Key 61", {asData(midiNoteOn, 61, 1)}, {asData(midiNoteOff, 61, 64)}, 189, 0.0},
        {"Press.", {asData(midiPressure, 5, 0)}, {asData(midiPressure, 127, 0)}, 256, 1.0},
        {"Bend",
         {asData(midiPitchBend, 1, 10)},
         {asData(midiPitchBend, 1, 64)},
         257,
         8193.0 / 16383},
        {"7+39",
         {cc(1, 7, 3), cc(1, 39, 1)},
         {cc(1, 7, 64), cc(0, 39, 5), cc(1, 39, 1)},
         265,
         8193.0 / 16383},
        {"N300",
         {cc(0, 99, 2), cc(0, 98, 44), cc(0, 6, 1)},
         {cc(1, 99, 2), cc(1, 98, 44), cc(1, 6, 64), cc(1, 38, 2)},
         firstNrpnSource + 300,
         8194.0 / 16383},
    };
    for (const auto& c : cases) {
        Fixture t;
        CMap* map = t.addMap(t.target, 50);
        CMap* other = t.addMap(t.target, 51, 6);
        map->learning = true;
        for (const int message : c.learns) t.send(message);
        t.run();
        EXPECT_EQ(map->cc, c.source) << c.name;
        EXPECT_EQ(std::string(controlSourceText(map->cc).asChar()), c.name);
        double share = -1.0;
        for (const int message : c.moves) {
            t.send(message);
            t.run();
            for (const CMIDIBytes* e = t.target->inPort()->first(); e; e = e->next)
                if (e->kind == eventParam) share = double(e->value);
        }
        EXPECT_NEAR(share, c.share, 1e-6) << c.name;
        EXPECT_EQ(other->lastValue, -1.0f);
    }
}

/// Numbers are chosen by controllers that a map must not learn by themselves.
TEST(MidiRouting, LearnsTheNumberAndNotItsChoice) {
    Fixture t;
    CMap* map = t.addMap(t.target, 50);
    map->learning = true;
    for (const auto& [number, value] : Rows<int, int>{{99, 2}, {98, 44}}) t.turn(number, value);
    EXPECT_TRUE(map->learning);
    t.turn(6, 10);
    EXPECT_EQ(map->cc, firstNrpnSource + 300);
    map->learning = true;
    t.turn(7, 1);
    t.turn(9, 1);
    t.turn(39, 1);
    EXPECT_EQ(map->cc, 7) << "others came between";
}

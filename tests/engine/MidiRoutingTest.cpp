#include "engine/CFileMapperBase.h"
#include "engine/CMap.h"
#include "engine/MidiBytes.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"

#include <gtest/gtest.h>

namespace {

constexpr int controller(int number, int value) {
    return asData(midiController, number, value);
}

struct Fixture : StripFixture {
    Fixture() : StripFixture(256), target(add(new SignalComp(host))) { connect(target); }
    CList& maps() const { return static_cast<CMapProg*>(host->maps.items(0))->items; }
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

/// Each binding learns its controller, and does nothing more then.
TEST(MidiRouting, ControllersRunTheTransport) {
    Fixture t;
    CQV* q = t.host;
    int number = 0;
    for (Shared<int>* binding :
         {&q->ctrlStart, &q->ctrlStop, &q->ctrlRewind, &q->ctrlRecord, &q->ctrlTempo}) {
        q->learned = 0;
        *binding = -2;
        t.turn(++number, 50);
        EXPECT_TRUE(*binding == number && q->learned == 1);
        EXPECT_FALSE(q->playing || q->recording);
    }
    const struct {
        int number, value, playing, recording;
        float tempo;
    } steps[] = {{1, 0, 0, 0, 120}, {1, 64, 1, 0, 120}, {4, 1, 1, 1, 120}, {4, 127, 1, 1, 120},
                 {4, 0, 1, 0, 120}, {4, 0, 1, 0, 120},  {2, 0, 1, 0, 120}, {5, 100, 1, 0, 200},
                 {5, 0, 1, 0, 10},  {2, 1, 0, 0, 10},   {9, 1, 0, 0, 10}};
    for (const auto& s : steps) {
        t.turn(s.number, s.value);
        EXPECT_EQ(q->playing, s.playing) << s.number << " " << s.value;
        EXPECT_EQ(q->recording, s.recording) << s.number << " " << s.value;
        EXPECT_EQ(q->tempo, s.tempo) << s.number << " " << s.value;
    }
    q->setPos(5000.0);
    t.turn(3, 0);
    EXPECT_EQ(q->pos, 5000.0);
    t.turn(3, 1);
    EXPECT_EQ(q->pos, 0.0);
}

/// value = (min + v / 127 (max - min)) / 127, once per change, in place of the controller, as long
/// as the map's program is the current one.
TEST(MidiRouting, MapsSweepTheirRange) {
    const struct {
        int min, max, v;
        double value;
    } cases[] = {{0, 127, 64, 64 / 127.0}, {127, 0, 127, 0.0},  {20, 60, 127, 60 / 127.0},
                 {20, 60, 0, 20 / 127.0},  {-500, 127, 0, 0.0}, {0, 9999, 127, 1.0}};
    for (const auto& c : cases) {
        Fixture t;
        t.connectMIDI(t.midiIn, t.midiOut);
        CMap* map = t.addMap(t.target, 7);
        map->min = c.min;
        map->max = c.max;
        for (const int program : {1, -1, 1000, 0}) {
            EXPECT_FALSE(map->changed);
            t.host->curMap = program;
            t.forget();
            const CMIDIBytes* e = t.turn(7, c.v);
            ASSERT_EQ(e != nullptr, program == 0) << program;
            EXPECT_EQ(t.sent.empty(), program == 0) << program;
            if (!e) continue;
            EXPECT_NEAR(e->value, c.value, 1e-6);
            EXPECT_TRUE(e->param == 5 && e->owner == t.target && e->time == 0.0);
        }
        EXPECT_EQ(t.turn(7, c.v), nullptr) << "the same value again";
        EXPECT_EQ(t.turn(8, c.v), nullptr) << "another controller";
    }
}

/// The channels of a sequencer have their events at the track.
TEST(MidiRouting, TargetsWithinATrackAndWithoutPorts) {
    Fixture t;
    auto* seq = t.add(new SeqStub(t.host));
    seq->child = t.target;
    CComp* insert = t.addInsert(seq->output(), new GainComp(t.host));
    t.run();               // finds out what is an insert
    CMIDIOut none(t.host); // without ports
    EXPECT_EQ(queueOfTarget(seq->output()), t.target->inPort());
    EXPECT_EQ(queueOfTarget(insert), t.target->inPort());
    EXPECT_EQ(queueOfTarget(seq->output()->sendLevels[2]), t.target->inPort());
    for (CObject* target : std::initializer_list<CObject*>{t.target->input(), &none, nullptr})
        EXPECT_EQ(queueOfTarget(target), nullptr);
}

/// A map takes controllers on the way into its component, also from elsewhere than a device.
TEST(MidiRouting, MapsServeWhatArrivesByCable) {
    Fixture t;
    SignalComp* source = t.add(new SignalComp(t.host));
    source->messages = {{33.0, controller(7, 127)}};
    t.connectMIDI(source, t.target);
    const auto kind = [&t] { // of what arrives, -1 nothing
        t.run();
        const CMIDIBytes* e = t.target->inPort()->first();
        return e ? int(e->kind) : -1;
    };
    CMap* map = t.addMap(t.target->output(), 7);
    EXPECT_EQ(kind(), int(eventMidi)) << "of another component";
    map->comp = t.target;
    EXPECT_EQ(kind(), int(eventParam));
    EXPECT_EQ(t.target->inPort()->first()->time, 33.0);
    EXPECT_EQ(kind(), -1) << "no change, but consumed";
    map->cc = 99;
    map->learning = true;
    EXPECT_EQ(kind(), -1) << "learned";
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

/// What hands have moved is unsaved, by whatever way. What a song plays is not.
TEST(MidiRouting, WhatTheUserMovesIsUnsaved) {
    Fixture t;
    COutputChannel* strip = t.target->output();
    t.addMap(strip, 7, 0);
    const std::pair<bool, std::function<void()>> cases[] = {
        {true, [&] { strip->moveFader(0.5f); }},
        {true, [&] { strip->movePan(0.5f); }},
        {true, [&] { t.host->addMap(t.target, 3, 0.5f); }},
        {true, [&] { t.turn(7, 20); }},
        {true, [&] { t.host->ctrlTempo = -2, t.turn(9, 60); }}, // learned
        {true, [&] { t.turn(9, 60); }},
        {false, [&] { t.turn(8, 20); }},
        {false, [&] {
             t.target->moves = {{0, strip, 0, 0.25f}}, t.run();
         }}};
    for (size_t k = 0; k < std::size(cases); ++k) {
        t.host->markSaved(t.host->saveMark());
        cases[k].second();
        EXPECT_EQ(t.host->modified(), cases[k].first) << "case " << k;
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
    struct Case {
        CObject* target;
        CComp* comp;
        COutputChannel* owner;
    };
    int count = 0;
    for (const Case& c : {Case{t.target, nullptr, nullptr},
                          {ch, t.target, nullptr},
                          Case{insert, t.target, ch},
                          {ch->sendLevels[0], t.target, ch},
                          Case{bus->output(), bus, nullptr}}) {
        for (const int param : {2, 3, 3}) { // the last one learns anew
            t.host->tasks->audioStopped();  // no step waits for a block
            t.host->addMap(c.target, param, 0.5f);
            auto* map = static_cast<CMap*>(t.maps().last());
            EXPECT_TRUE(map->target == c.target && map->comp == c.comp && map->owner == c.owner);
            EXPECT_TRUE(map->learning) << param;
            t.turn(20 + param, 127);
            EXPECT_TRUE(map->cc == 20 + param && !map->learning);
            EXPECT_EQ(queueOfTarget(c.target), (c.comp ? c.comp : t.target)->inPort());
        }
        EXPECT_EQ(t.maps().getCount(), count += 2);
    }
    EXPECT_TRUE(t.host->undoText() == "Add");
    t.host->curMap = 5;
    t.host->addMap(t.target, 99, 0.5f);
    EXPECT_EQ(t.maps().getCount(), count) << "no program, no map";
}

TEST(MidiRouting, RecordingTakesParametersDown) {
    Fixture t;
    auto* seq = t.add(new SeqStub(t.host));
    t.connectMIDI(seq, t.target);
    t.run();
    COutputChannel* ch = t.target->output();
    t.host->addMap(ch, 4, 0.5f);
    EXPECT_EQ(seq->recorded, nullptr);
    t.host->recording = 1;
    for (CObject* target : std::initializer_list<CObject*>{t.target, ch, ch->sendLevels[1]}) {
        t.host->addMap(target, 4, 0.25f);
        EXPECT_TRUE(seq->recorded == target && seq->recordedValue == 0.25f);
    }
    t.host->addMap(t.target->input(), 5, 0.25f); // without parameters
    t.host->addMap(t.midiOut, 5, 0.25f);         // not fed by a sequencer
    EXPECT_EQ(seq->recordedParam, 4);
}

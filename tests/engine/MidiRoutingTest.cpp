#include "engine/CFileMapperBase.h"
#include "engine/CMap.h"
#include "engine/MidiBytes.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr int controller(int number, int value) {
    return asData(midiController, number, value);
}

/// Takes down the parameter events that reach its port.
class Target : public SignalComp {
public:
    using SignalComp::SignalComp;
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        for (const CMIDIBytes* e = inPort()->first(); e; e = e->next) seen.push_back(*e);
    }
    std::vector<CMIDIBytes> seen;
};

struct Fixture : StripFixture {
    Fixture() : StripFixture(256) {
        target = add(new Target(host));
        connect(target);
    }
    CMap* addMap(CObject* to, int cc, int param = 5) {
        auto* map = new CMap;
        map->target = to;
        map->cc = cc;
        map->param = param;
        static_cast<CMapProg*>(host->maps.items(0))->items.add(map);
        return map;
    }
    /// One block with a controller in; the last event that the target saw of kind 1.
    const CMIDIBytes* turn(int number, int value, Target* at = nullptr) {
        if (!at) at = target;
        at->seen.clear();
        send(controller(number, value));
        run();
        for (const CMIDIBytes& e : at->seen)
            if (e.kind == eventParam) return &e;
        return nullptr;
    }
    Target* target;
};

} // namespace

TEST(MidiRouting, ControllersRunTheTransport) {
    Fixture t;
    t.host->ctrlStart = 1;
    t.host->ctrlStop = 2;
    t.host->ctrlRewind = 3;
    t.host->ctrlRecord = 4;
    t.host->ctrlTempo = 5;
    struct Step {
        int number, value, playing, recording;
        float tempo;
    };
    const Step steps[] = {
        {1, 0, 0, 0, 120},   {1, 64, 1, 0, 120}, {4, 1, 1, 1, 120}, {4, 127, 1, 1, 120},
        {4, 0, 1, 0, 120},   {4, 0, 1, 0, 120},  {2, 0, 1, 0, 120}, {5, 100, 1, 0, 200},
        {5, 127, 1, 0, 250}, {5, 0, 1, 0, 10},   {2, 1, 0, 0, 10},  {9, 1, 0, 0, 10},
    };
    for (const Step& s : steps) {
        t.turn(s.number, s.value);
        EXPECT_EQ(t.host->playing, s.playing) << s.number << " " << s.value;
        EXPECT_EQ(t.host->recording, s.recording) << s.number << " " << s.value;
        EXPECT_EQ(t.host->tempo, s.tempo) << s.number << " " << s.value;
        EXPECT_EQ(t.host->lastCC, controller(s.number, s.value));
    }
    t.host->setPos(5000.0);
    t.turn(3, 0);
    EXPECT_EQ(t.host->pos, 5000.0);
    t.turn(3, 1);
    EXPECT_EQ(t.host->pos, 0.0);
}

TEST(MidiRouting, BindingsLearnTheNextControllerWhateverItsValue) {
    Fixture t;
    Shared<int>* bindings[] = {&t.host->ctrlStart, &t.host->ctrlStop, &t.host->ctrlRewind,
                               &t.host->ctrlRecord, &t.host->ctrlTempo};
    for (int i = 0; i < 5; ++i) {
        t.host->learned = 0;
        *bindings[i] = -2;
        t.turn(70 + i, i == 0 ? 0 : 50);
        EXPECT_EQ(*bindings[i], 70 + i);
        EXPECT_EQ(t.host->learned, 1);
        EXPECT_EQ(t.host->playing, 0) << "learning does nothing more";
        EXPECT_EQ(t.host->recording, 0);
    }
}

/// value = (min + v / 127 (max - min)) / 127, once per change, in place of the controller.
TEST(MidiRouting, MapsSweepTheirRange) {
    struct Case {
        int min, max, v;
        double value;
    };
    const Case cases[] = {{0, 127, 0, 0.0},    {0, 127, 127, 1.0},        {0, 127, 64, 64 / 127.0},
                          {127, 0, 127, 0.0},  {20, 60, 127, 60 / 127.0}, {20, 60, 0, 20 / 127.0},
                          {-500, 127, 0, 0.0}, {0, 9999, 127, 1.0}};
    for (const Case& c : cases) {
        Fixture t;
        CMap* map = t.addMap(t.target, 7);
        map->min = c.min;
        map->max = c.max;
        const CMIDIBytes* e = t.turn(7, c.v);
        ASSERT_NE(e, nullptr);
        EXPECT_NEAR(e->value, c.value, 1e-6);
        EXPECT_EQ(e->param, 5);
        EXPECT_EQ(e->owner, t.target);
        EXPECT_EQ(e->time, 0.0);
        EXPECT_TRUE(map->changed);
        EXPECT_EQ(t.turn(7, c.v), nullptr) << "the same value again";
        EXPECT_EQ(t.turn(8, c.v), nullptr) << "another controller";
    }
}

/// The event takes the port through which its target is reached.
TEST(MidiRouting, EveryKindOfTargetIsReached) {
    Fixture t;
    auto* seq = t.add(new SeqStub(t.host));
    auto* track = new Target(t.host);
    track->init();
    track->createBuffers(t.host->frames);
    seq->child = track;
    seq->comps.add(track);
    CComp* insert = t.addInsert(t.target->output(), new GainComp(t.host));
    CComp* trackInsert = t.addInsert(seq->output(), new GainComp(t.host));
    t.run(); // finds out what is an insert
    struct Case {
        const char* name;
        CObject* target;
        Target* arrivesAt;
    };
    const Case cases[] = {
        {"component", t.target, t.target},
        {"channel", t.target->output(), t.target},
        {"send", t.target->output()->sendLevels[3], t.target},
        {"insert", insert, t.target},
        {"channel of a track", seq->output(), track},
        {"insert of a track", trackInsert, track},
    };
    for (const Case& c : cases) {
        CMap map;
        map.target = c.target;
        CMIDIBytes e;
        e.data = controller(0, 64);
        EXPECT_EQ(queueOfTarget(c.target), c.arrivesAt->inPort()) << c.name;
        c.arrivesAt->inPort()->clear();
        map.serve(c.arrivesAt->inPort(), &e);
        EXPECT_EQ(c.arrivesAt->inPort()->first()->owner, c.target) << c.name;
    }
    CMIDIOut none(t.host); // without ports
    EXPECT_EQ(queueOfTarget(&none), nullptr);
    EXPECT_EQ(queueOfTarget(t.target->input()), nullptr);
    EXPECT_EQ(queueOfTarget(nullptr), nullptr);
    seq->comps.clear();
    delete track;
}

/// A map takes controllers on the way into its component, also from elsewhere than a device.
TEST(MidiRouting, MapsServeWhatArrivesByCable) {
    Fixture t;
    class Source : public CComp {
    public:
        explicit Source(CQV* root) : CComp(root) {}
        void init() override { outPorts.add(new COutputPort(this)); }
        void process(int) override {
            const ProcessGuard guard(this);
            if (guard.enter) outPort()->addMidiEvent(33.0, controller(7, 127));
        }
    };
    t.connectMIDI(t.add(new Source(t.host)), t.target);
    const auto kinds = [&t] {
        t.target->seen.clear();
        t.run();
        std::vector<int> all;
        for (const CMIDIBytes& e : t.target->seen) all.push_back(e.kind);
        return all;
    };
    EXPECT_EQ(kinds(), std::vector<int>{eventMidi});
    CMap* map = t.addMap(t.target->output(), 7);
    EXPECT_EQ(kinds(), std::vector<int>{eventMidi}) << "of another component";
    map->comp = t.target;
    EXPECT_EQ(kinds(), std::vector<int>{eventParam});
    EXPECT_EQ(t.target->seen[0].time, 33.0);
    EXPECT_EQ(kinds(), std::vector<int>{}) << "no change, but consumed";
    map->cc = 99;
    map->learning = true;
    EXPECT_EQ(kinds(), std::vector<int>{}) << "learned";
    EXPECT_EQ(map->cc, 7);
    EXPECT_FALSE(map->learning);
}

TEST(MidiRouting, CurrentProgramOfMapsIsInForceAndConsumes) {
    Fixture t;
    t.connectMIDI(t.midiIn, t.midiOut);
    t.addMap(t.target, 7);
    t.host->maps.add(new CMapProg);
    for (const int index : {1, -1, 2, 1000, 0}) {
        t.host->curMap = index;
        t.forget();
        EXPECT_EQ(t.turn(7, 10) != nullptr, index == 0) << index;
        EXPECT_EQ(t.sent.size(), index == 0 ? 0u : 1u) << index;
    }
}

TEST(MidiRouting, ProgramChangesReachTheListOfProjects) {
    struct Mapper : CFileMapperBase {
        bool enabled() override { return on; }
        void setProgram(int index, bool play) override { got = play ? index : -2; }
        bool on = false;
        int got = -1;
    } mapper;
    TestHost t;
    t.host->fileMapper = &mapper;
    t.send(asData(midiProgram, 12, 0));
    t.run();
    t.host->idle();
    mapper.on = true;
    t.host->idle();
    EXPECT_EQ(mapper.got, -1) << "was not enabled then";
    t.send(asData(midiProgram | 5, 12, 0));
    t.run();
    EXPECT_EQ(mapper.got, -1) << "not on the audio thread";
    t.host->idle();
    EXPECT_EQ(mapper.got, 12);
}

/// What hands have moved is unsaved, by whatever way. What a song plays is not, nor what a setting
/// is asked for.
TEST(MidiRouting, WhatTheUserMovesIsUnsaved) {
    Fixture t;
    COutputChannel* strip = t.target->output();
    t.addMap(strip, 7, 0);
    const struct {
        const char* what;
        bool unsaved;
        std::function<void()> act;
    } cases[] = {
        {"a fader", true, [&] { strip->moveFader(0.5f); }},
        {"a pan", true, [&] { strip->movePan(0.5f); }},
        {"a parameter", true, [&] { t.host->addMap(t.target, 3, 0.5f); }},
        {"a controller that is mapped", true, [&] { t.turn(7, 20); }},
        {"another controller", false, [&] { t.turn(8, 20); }},
        {"automation", false,
         [&] {
             t.target->inPort()->insert(0.0, 0, eventParam, 0.25f, 0, strip, nullptr);
             t.run();
         }},
        {"a setter that automation uses", false, [&] { strip->setParam(0, 0.75f); }},
    };
    for (const auto& c : cases) {
        t.host->modified = false;
        const unsigned before = t.host->changes;
        c.act();
        EXPECT_EQ(t.host->modified, c.unsaved) << c.what;
        EXPECT_EQ(t.host->changes != before, c.unsaved) << c.what;
    }
}

// addMap

/// The user's gesture: learn on, a control moved, a controller moved; for each kind of target.
TEST(MidiRouting, LearningMakesOneMapForEachParameter) {
    Fixture t;
    CComp* insert = t.addInsert(t.target->output(), new GainComp(t.host));
    CGroupCh* bus = t.addBus();
    t.host->addMap(t.target, 1, 0.5f);
    auto& items = static_cast<CMapProg*>(t.host->maps.items(0))->items;
    EXPECT_EQ(items.getCount(), 0) << "neither learning nor recording";
    t.host->mapLearn = 1;
    struct Case {
        CObject* target;
        CComp* comp;
        COutputChannel* owner;
    };
    COutputChannel* ch = t.target->output();
    const Case cases[] = {{t.target, nullptr, nullptr},
                          {ch, t.target, nullptr},
                          {insert, t.target, ch},
                          {ch->sendLevels[0], t.target, ch},
                          {bus->output(), bus, nullptr}};
    int count = 0;
    for (const Case& c : cases) {
        for (const bool again : {false, true}) {
            t.host->addMap(c.target, 2, again ? 0.7f : 0.5f);
            ASSERT_EQ(items.getCount(), count + 1) << again;
            auto* map = static_cast<CMap*>(items.last());
            EXPECT_EQ(map->target, c.target);
            EXPECT_EQ(map->comp, c.comp);
            EXPECT_EQ(map->owner, c.owner);
            EXPECT_TRUE(map->learning) << again;
            t.turn(21 + count, 127);
            EXPECT_EQ(map->cc, 21 + count);
            EXPECT_FALSE(map->learning);
        }
        ++count;
    }
    EXPECT_TRUE(t.host->undoText() == "Add");
    t.host->curMap = 5;
    t.host->addMap(t.target, 9, 0.5f);
    EXPECT_EQ(items.getCount(), count) << "no program, no map";
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
    CObject* const targets[] = {t.target, ch, ch->sendLevels[1]};
    for (CObject* target : targets) {
        t.host->addMap(target, 4, 0.25f);
        EXPECT_TRUE(seq->recorded == target && seq->recordedParam == 4);
        EXPECT_EQ(seq->recordedValue, 0.25f);
    }
    t.host->addMap(t.target->input(), 5, 0.25f); // without parameters
    t.host->addMap(t.midiOut, 5, 0.25f);         // not fed by a sequencer
    EXPECT_EQ(seq->recordedParam, 4);
}

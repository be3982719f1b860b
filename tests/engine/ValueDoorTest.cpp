#include "engine/ValueDoor.h"
#include "StripFixture.h"
#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CMap.h"
#include "engine/StripValues.h"
#include "support/Rows.h"

namespace {

using Numbers = StoredValue::Numbers;

/// A strip with sends, and what a user does at it. Steps are carried out by blocks.
class ValueDoorTest : public StepTest {
protected:
    ValueDoorTest() {
        addBus();
        settled();
        host->markSaved(host->saveMark());
        rtReset();
    }
    ValueDoor& values() { return *host->values; }
    int steps() const { return host->undoIndex + 1; }
    void settled() {
        run();
        host->settle();
    }
    void undone() {
        host->undoClicked();
        settled();
    }
    void redone() {
        host->redoClicked();
        settled();
    }
    /// From here on, or until here, a take is recorded.
    void record(bool on) {
        host->recording = on;
        host->idle();
        settled();
    }

    SignalComp* source = addSignal();
    COutputChannel* strip = source->output();
};

/// Whatever is moved comes back as exactly what it was, though a parameter's 0 to 1 may round.
TEST_F(ValueDoorTest, GestureIsOneStepThereAndBack) {
    strip->setEqFrequency(1, 1234.567f);
    strip->pan = 0.1f;
    for (const auto& [value, to, beyond, most, name] :
         Rows<StoredValue, double, double, double, const char*>{
             {faderOf(strip), 0.3, 7.0, 1.0, "Volume"},
             {panOf(strip), -0.7, -2.0, -1.0, "Pan"},
             {muteOf(strip), 1.0, 1.0, 1.0, "Mute"},
             {soloOf(strip), 1.0, 1.0, 1.0, "Solo"},
             {trimOf(strip), 0.5, 3.0, 1.0, "Trim"},
             {eqPowerOf(strip, 2), 1.0, 1.0, 1.0, "EQ3 power"},
             {eqGainOf(strip, 0), -3.3, 99.0, CEQ::maxGain, "EQ1 gain"},
             {eqFrequencyOf(strip, 1), 777.7, 1e9, CEQ::maxFrequency, "EQ2 freq"},
             {eqQOf(strip, 3), 2.2, 99.0, CEQ::maxQ, "EQ4 Q"},
             {eqTypeOf(strip, 0), eqNotch, 99.0, eqNotch, "EQ type"},
             {levelOf(strip->sendLevels[0]), 0.4, 2.0, 1.0, "Send level"},
             {tempoOf(host), 90.5, 1000.0, 250.0, "Tempo"}}) {
        const Numbers before = value.get();
        const unsigned copied = host->changes; // as the copy against a crash knows it
        values().begin();
        for (const double asked : {to, beyond}) values().set(value, asked);
        EXPECT_TRUE(host->modified() && host->changes != copied) << name << " before the release";
        values().end();
        const Numbers after = value.get();
        EXPECT_EQ(after[0], double(float(most))) << name;
        EXPECT_EQ(steps(), 1) << name;
        EXPECT_STREQ(host->undoText().asChar(), name);
        undone();
        EXPECT_TRUE(value.get() == before && !host->modified()) << name;
        redone();
        EXPECT_TRUE(value.get() == after && host->modified()) << name;
        undone();
    }
}

/// By number, 0 to 1, as panels and controllers know them, the values are the same ones.
TEST_F(ValueDoorTest, ParametersAreTheSameValues) {
    for (int param = 0; param <= strip->numParams(); ++param) {
        const Numbers before = parameterOf(strip, param).get();
        const float share = strip->param(param) < 0.5f ? 1.0f : 0.0f;
        values().setParam(strip, param, share);
        EXPECT_EQ(strip->param(param), share) << param;
        EXPECT_NE(parameterOf(strip, param).get(), before) << param;
        undone();
        EXPECT_EQ(parameterOf(strip, param).get(), before) << param;
    }
    EXPECT_TRUE(parameterOf(strip, 0) == faderOf(strip));
    EXPECT_TRUE(parameterOf(strip, 13) == eqFrequencyOf(strip, 2));
    values().setParam(strip->sendLevels[0], 0, 0.5f);
    EXPECT_EQ(strip->sendLevels[0]->level, 0.5f);
}

TEST_F(ValueDoorTest, WhatEndsAsItWasIsNoStep) {
    values().set(faderOf(strip), {1.0, 1.0}); // where it stands
    values().begin();
    strip->movePan(0.5f);
    strip->movePan(0.0f);
    values().end();
    values().begin();
    strip->moveFader(0.5f);
    strip->toggleMute();
    values().cancel();
    EXPECT_TRUE(strip->vol == 1.0f && !strip->mute);
    EXPECT_TRUE(steps() == 0 && !host->modified());
}

TEST_F(ValueDoorTest, GestureOfSeveralValuesHasItsName) {
    values().begin("Nothing");
    values().end();
    strip->toggleMute();
    EXPECT_STREQ(host->undoText().asChar(), "Mute");
    undone();
    values().begin("Silence");
    strip->toggleMute();
    strip->moveFader(0.0f);
    values().end();
    EXPECT_STREQ(host->undoText().asChar(), "Silence");
    undone();
    EXPECT_TRUE(strip->vol == 1.0f && !strip->mute);
    EXPECT_EQ(steps(), 0);
}

TEST_F(ValueDoorTest, WheelTurnsJoinForASecond) {
    const auto later = [this](int ms) {
        values().idle(asTimeInMS() + ms);
        settled();
    };
    for (const double bpm : {121.0, 122.0, 123.0}) {
        values().nudge(tempoOf(host), bpm);
        EXPECT_TRUE(host->modified());
        EXPECT_EQ(steps(), 0) << "the run goes on";
    }
    later(0);
    EXPECT_EQ(steps(), 0);
    later(ValueDoor::runMs + 500);
    EXPECT_EQ(steps(), 1);
    values().nudge(tempoOf(host), 124.0);
    values().nudge(panOf(strip), 0.5); // another value
    EXPECT_EQ(steps(), 2);
    strip->moveFader(0.5f); // a click
    EXPECT_EQ(steps(), 4);
    for (const float bpm : {124.0f, 124.0f, 123.0f, 120.0f}) {
        undone();
        EXPECT_EQ(host->tempo, bpm);
    }
    EXPECT_FALSE(host->modified());
}

/// An edit or an undo in mid drag finds what was moved so far, and the drag goes on.
TEST_F(ValueDoorTest, StepsInMidGestureKeepTheirOrder) {
    values().begin();
    strip->moveFader(0.8f);
    step([&](CUndo* u) { u->asRemove(source, &host->comps); });
    EXPECT_EQ(steps(), 2);
    undone();
    strip->moveFader(0.6f);
    host->undoClicked();
    settled();
    EXPECT_EQ(strip->vol, 0.8f);
    strip->moveFader(0.4f);
    values().end();
    EXPECT_EQ(steps(), 2) << "the removal was cut off";
    undone();
    undone();
    EXPECT_EQ(strip->vol, 1.0f);
    EXPECT_FALSE(host->modified());
}

TEST_F(ValueDoorTest, MovesDuringATakeAreOfItsStep) {
    record(true);
    for (const float v : {0.5f, 0.25f}) strip->moveFader(v);
    EXPECT_TRUE(steps() == 0 && host->modified());
    record(false);
    EXPECT_EQ(steps(), 1);
    EXPECT_STREQ(host->undoText().asChar(), "Record");
    undone();
    EXPECT_TRUE(strip->vol == 1.0f && !host->modified());
    redone();
    EXPECT_EQ(strip->vol, 0.25f);
}

/// The file then holds a part of the take, which undo does not lead to.
TEST_F(ValueDoorTest, ProjectSavedInMidTakeStaysModified) {
    record(true);
    strip->moveFader(0.5f);
    host->markSaved(host->saveMark());
    record(false);
    EXPECT_TRUE(host->modified());
    undone();
    EXPECT_TRUE(host->modified());
}

TEST_F(ValueDoorTest, MovedControlIsLearned) {
    host->mapLearn = 1;
    host->tasks->audioStopped(); // no step waits for a block
    values().begin();
    for (const float v : {0.5f, 0.4f, 0.3f}) strip->moveFader(v);
    values().end();
    EXPECT_EQ(steps(), 2) << "the map, and the gesture";
    auto* maps = host->maps.first();
    ASSERT_EQ(maps->items.getCount(), 1);
    const auto* map = maps->items.first();
    EXPECT_TRUE(map->target == strip && map->param == 0 && map->learning);
}

/// Unmodified is where the file is, and nowhere else.
TEST_F(ValueDoorTest, ModifiedFollowsTheHistory) {
    using Act = std::function<void()>;
    const auto move = [this](float v) {
        return [this, v] {
            strip->moveFader(v);
            settled();
        };
    };
    const Act undo = [this] { undone(); }, save = [this] { host->markSaved(host->saveMark()); };
    const Act viewOnly = [this] {
        step([this](CUndo* u) {
            u->viewOnly = true;
            u->asRemove(source, &host->comps);
        });
    };
    int number = 0;
    for (const auto& [act, modified] :
         Rows<Act, bool>{{move(0.9f), true},
                         {move(0.8f), true},
                         {save, false},
                         {undo, true},
                         {[this] { redone(); }, false},
                         {move(0.7f), true},
                         {[this] { host->setModified(); }, true}, // past the history
                         {undo, true},
                         {save, false},
                         {undo, true},
                         {move(0.6f), true}, // the saved state can not be reached any more
                         {undo, true},
                         {undo, true},
                         {[this] { host->undoClear(); }, true},
                         {save, false},
                         {viewOnly, false}}) {
        act();
        EXPECT_EQ(host->modified(), modified) << "act " << ++number;
    }
}

/// A mark that was taken before something changed does not hide it.
TEST_F(ValueDoorTest, ChangesDuringASaveStayUnsaved) {
    const auto mark = host->saveMark();
    host->setModified();
    host->markSaved(mark);
    EXPECT_TRUE(host->modified());
}

} // namespace

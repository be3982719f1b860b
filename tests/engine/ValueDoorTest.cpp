#include "engine/ValueDoor.h"
#include "StripFixture.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CMap.h"
#include "engine/StripValues.h"
#include "support/RtTrap.h"

#include <gtest/gtest.h>

namespace {

using Numbers = StoredValue::Numbers;

/// A strip with sends, and what a user does at it. Steps are carried out by blocks.
class ValueDoorTest : public testing::Test, protected StripFixture {
protected:
    void SetUp() override {
        waiting = this;
        messageHooks().pumpIdle = [] { waiting->block(64); };
        source = addSignal();
        strip = source->output();
        addBus();
        settled();
        host->markSaved(host->saveMark());
        rtReset();
    }
    void TearDown() override {
        messageHooks().pumpIdle = nullptr;
        EXPECT_EQ(rtViolations(), 0) << "a step allocates, frees or locks";
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

    SignalComp* source = nullptr;
    COutputChannel* strip = nullptr;

private:
    static inline StripFixture* waiting = nullptr;
};

/// Whatever is moved comes back as exactly what it was, though a parameter's 0 to 1 may round.
TEST_F(ValueDoorTest, GestureIsOneStepThereAndBack) {
    strip->setEqFrequency(1, 1234.567f);
    strip->pan = 0.1f;
    const struct {
        StoredValue value;
        double to, beyond, most;
        const char* name;
    } cases[] = {
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
        {tempoOf(host), 90.5, 1000.0, 250.0, "Tempo"},
    };
    for (const auto& c : cases) {
        const Numbers before = c.value.get();
        values().begin();
        for (const double to : {c.to, c.beyond}) values().set(c.value, to);
        EXPECT_TRUE(host->modified()) << c.name << " before the release";
        values().end();
        EXPECT_EQ(c.value.get()[0], double(float(c.most))) << c.name;
        EXPECT_EQ(steps(), 1) << c.name;
        EXPECT_STREQ(host->undoText().asChar(), c.name);
        const Numbers after = c.value.get();
        undone();
        EXPECT_EQ(c.value.get(), before) << c.name;
        EXPECT_FALSE(host->modified()) << c.name;
        redone();
        EXPECT_EQ(c.value.get(), after) << c.name;
        EXPECT_TRUE(host->modified()) << c.name;
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
    EXPECT_EQ(steps(), 0);
    EXPECT_FALSE(host->modified());
}

/// Several values in one gesture are one step, under the name of what was done.
TEST_F(ValueDoorTest, GestureOfSeveralValuesHasItsName) {
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

/// The undo of a take gives back what was moved during it; no step comes between.
TEST_F(ValueDoorTest, MovesDuringATakeAreOfItsStep) {
    host->recording = 1;
    host->idle();
    ASSERT_TRUE(host->recUndo);
    for (const float v : {0.5f, 0.25f}) strip->moveFader(v);
    EXPECT_EQ(steps(), 0);
    EXPECT_TRUE(host->modified());
    host->recording = 0;
    host->idle();
    settled();
    EXPECT_EQ(steps(), 1);
    EXPECT_STREQ(host->undoText().asChar(), "Record");
    undone();
    EXPECT_EQ(strip->vol, 1.0f);
    EXPECT_FALSE(host->modified());
    redone();
    EXPECT_EQ(strip->vol, 0.25f);
}

/// The file then holds a part of the take, which undo does not lead to.
TEST_F(ValueDoorTest, ProjectSavedInMidTakeStaysModified) {
    host->recording = 1;
    host->idle();
    strip->moveFader(0.5f);
    host->markSaved(host->saveMark());
    host->recording = 0;
    host->idle();
    settled();
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
    auto* maps = static_cast<CMapProg*>(host->maps.first());
    ASSERT_EQ(maps->items.getCount(), 1);
    const auto* map = static_cast<CMap*>(maps->items.first());
    EXPECT_TRUE(map->target == strip && map->param == 0 && map->learning);
}

/// Unmodified is where the file is, and nowhere else.
TEST_F(ValueDoorTest, ModifiedFollowsTheHistory) {
    const auto move = [this](float v) {
        strip->moveFader(v);
        settled();
    };
    move(0.9f);
    move(0.8f);
    host->markSaved(host->saveMark());
    const auto expect = [this](bool modified, int line) {
        EXPECT_EQ(host->modified(), modified) << "line " << line;
    };
    expect(false, __LINE__);
    undone();
    expect(true, __LINE__);
    redone();
    expect(false, __LINE__);
    const unsigned copied = host->changes;
    move(0.7f);
    EXPECT_NE(host->changes, copied) << "for the copy against a crash";
    host->setModified(); // past the history
    undone();
    expect(true, __LINE__);
    host->markSaved(host->saveMark());
    undone();
    move(0.6f); // the saved state can not be reached any more
    expect(true, __LINE__);
    undone();
    expect(true, __LINE__);
    undone();
    expect(true, __LINE__);
    host->undoClear();
    expect(true, __LINE__);
    host->markSaved(host->saveMark());
    step([&](CUndo* u) {
        u->viewOnly = true;
        u->asRemove(source, &host->comps);
    });
    expect(false, __LINE__);
}

/// A mark that was taken before something changed does not hide it.
TEST_F(ValueDoorTest, ChangesDuringASaveStayUnsaved) {
    const auto mark = host->saveMark();
    host->setModified();
    host->markSaved(mark);
    EXPECT_TRUE(host->modified());
}

} // namespace

#include "StripFixture.h"
#include "base/Messages.h"
#include "engine/CMap.h"
#include "engine/EditorHooks.h"
#include "engine/ForgetHooks.h"
#include "support/RtTrap.h"

#include <gtest/gtest.h>

namespace {

/// A host whose blocks go on while it waits for a step.
class UndoHostTest : public testing::Test, protected StripFixture {
protected:
    void SetUp() override {
        waiting = this;
        messageHooks().pumpIdle = [] { waiting->block(64); };
        block(64);
        rtReset();
    }
    void TearDown() override {
        messageHooks().pumpIdle = nullptr;
        EXPECT_EQ(rtViolations(), 0) << "a task allocates, frees or locks";
    }
    /// A component in the graph by a step of its own.
    SignalComp* added(SignalComp* c) {
        step([&](CUndo* u) { u->asAdd(made(c), &host->comps); });
        return c;
    }
    SignalComp* added() { return added(new SignalComp(host)); }
    void cut(CComp* c) {
        step([&](CUndo* u) { u->asRemove(c, &host->comps); });
    }

private:
    static inline StripFixture* waiting = nullptr;
};

TEST_F(UndoHostTest, EmptyStepLeavesNothingButItsNotification) {
    host->updateFlags = 0;
    step([&](CUndo*) { EXPECT_TRUE(host->undoBusy()); }, 0x40);
    EXPECT_FALSE(host->undoBusy() || host->modified());
    EXPECT_TRUE(host->undoList.empty());
    EXPECT_EQ(host->updateFlags, 0x40u);
}

/// To every place, against a plain vector.
TEST_F(UndoHostTest, MovesLandInFrontOfTheirIndexAndComeBack) {
    CComp box(host);
    const auto order = [&box] {
        std::vector<int> all;
        for (auto* c : each<CComp>(box.comps)) all.push_back(c->posX);
        return all;
    };
    const std::vector<int> before = {0, 1, 2, 3};
    for (const int i : before) {
        auto* c = new CComp(host);
        c->posX = i;
        box.comps.add(c);
    }
    for (int from = 0; from < 4; ++from)
        for (int to = -1; to <= 5; ++to) {
            std::vector<int> expected = before;
            const size_t place = to < 0 || to > 4 ? 4 : size_t(to);
            expected.insert(expected.begin() + long(place), from);
            expected.erase(expected.begin() + from + (place <= size_t(from) ? 1 : 0));
            step([&](CUndo* u) {
                u->asMove(static_cast<CObject*>(box.comps.items(from)), &box.comps, &box.comps, to);
            });
            EXPECT_EQ(order(), expected) << from << " to " << to;
            undo();
            EXPECT_EQ(order(), before) << from << " to " << to;
            redo();
            EXPECT_EQ(order(), expected) << from << " to " << to;
            undo();
        }
    host->undoClear();
}

TEST_F(UndoHostTest, ComponentThatLeavesSleepsAndItsMapsLoseIt) {
    SignalComp* c = added();
    auto* map = new CMap;
    map->target = c->output();
    map->comp = c;
    static_cast<CMapProg*>(host->maps.items(0))->items.add(map);
    cut(c);
    EXPECT_EQ(c->sleeping, 1);
    EXPECT_EQ(map->target, nullptr);
    EXPECT_TRUE(host->updateFlags & updateMaps);
    undo();
    EXPECT_EQ(c->sleeping, 0);
    EXPECT_EQ(map->target, nullptr) << "for good";
    undo();
    EXPECT_EQ(c->sleeping, 1);
    redo();
    EXPECT_EQ(c->sleeping, 0);
}

TEST_F(UndoHostTest, StepOnItsWayIsSettledBeforeTheNextOne) {
    int number = 0;
    for (int i = 1; i <= 3; ++i) {
        CUndo* u = host->undoStart("Edit", host, 0);
        u->asInt(&number);
        number = i;
        host->undoEnd(u, false);
        EXPECT_TRUE(host->undoBusy());
    }
    host->undoClicked();
    host->undoClicked();
    redo();
    EXPECT_EQ(number, 2);
    EXPECT_EQ(host->undoIndex, 1);
    EXPECT_STREQ(host->undoText().asChar(), "Edit");
    host->recording = 1;
    undo();
    redo();
    EXPECT_EQ(host->undoIndex, 1) << "nothing is taken back while recording";
    host->recording = 0;
    for (int i = 0; i < 3; ++i) undo();
    EXPECT_EQ(number, 0);
    EXPECT_EQ(host->undoIndex, -1);
    EXPECT_STREQ(host->undoText().asChar(), "");
}

CObject* lastForgotten = nullptr;
int died = 0;

TEST_F(UndoHostTest, NewEditFreesTheRedoTailWhenTheGraphHasLetGo) {
    class Mortal : public SignalComp {
    public:
        using SignalComp::SignalComp;
        ~Mortal() override { ++died; }
    };
    enterForgetHook([](CQV*, CObject* object) { lastForgotten = object; });
    SignalComp* to = add(new SignalComp(host));
    for (int i = 0; i < 3; ++i) added(new Mortal(host));
    undo();
    undo();
    EXPECT_EQ(died, 0);
    SignalComp* c = added();
    EXPECT_EQ(died, 2);
    EXPECT_NE(lastForgotten, nullptr);
    EXPECT_EQ(host->undoList.getCount(), 2);
    EXPECT_STREQ(host->redoText().asChar(), "");
    connect(c, to);
    connectMIDI(c, to);
    undo();
    undo();
    host->undoClear();
    EXPECT_EQ(died, 3);
    EXPECT_EQ(host->undoIndex, -1);
    EXPECT_TRUE(to->audioCables.empty() && to->midiCables.empty()) << "its cables go with it";
}

TEST_F(UndoHostTest, LinkedObjectIsMovedOnUndoAndRedoOnly) {
    CList list;
    auto* object = new CObject;
    list.add(object);
    step([&](CUndo* u) { u->add2(object, &list, nullptr); });
    EXPECT_EQ(list.getCount(), 1);
    undo();
    EXPECT_EQ(list.getCount(), 0);
    redo();
    EXPECT_EQ(list.getCount(), 1);
    undo(); // the step owns it now
}

TEST_F(UndoHostTest, EditorsAreHiddenAndShownByTheInterface) {
    class Hooks : public EditorHooks {
    public:
        bool editorVisible(CComp*) override { return true; }
        void hideEditors(CComp* c) override { hidden = c; }
        void showEditor(CComp* c, bool) override { shown = c; }
        CComp *hidden = nullptr, *shown = nullptr;
    } hooks;
    SignalComp* c = added();
    setEditorHooks(&hooks);
    CUndo* u = host->undoStart("Edit", host, 0);
    u->asRemove(c, &host->comps);
    host->undoEnd(u, false);
    block(64);
    EXPECT_EQ(hooks.hidden, nullptr) << "not on the graph";
    host->idle();
    EXPECT_EQ(hooks.hidden, c);
    EXPECT_EQ(hooks.shown, nullptr);
    undo();
    EXPECT_EQ(hooks.shown, c);
    setEditorHooks(nullptr);
}

} // namespace

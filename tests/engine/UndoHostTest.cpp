#include "EditScenario.h"
#include "base/Messages.h"
#include "engine/CMap.h"
#include "engine/EditorHooks.h"
#include "engine/ForgetHooks.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>
#include <tuple>

namespace {

/// A host whose blocks go on while it waits for a step.
class UndoHostTest : public testing::Test {
protected:
    StripFixture f;
    CQV* host = f.host;

    void SetUp() override {
        fixture = &f;
        messageHooks().pumpIdle = [] { fixture->block(64); };
        f.block(64);
        rtReset();
    }
    void TearDown() override {
        messageHooks().pumpIdle = nullptr;
        EXPECT_EQ(rtViolations(), 0) << "a task allocates, frees or locks";
    }
    CUndo* start() { return host->undoStart("Edit", host, 0); }
    void end(CUndo* u) { host->undoEnd(u, true); }
    void undo() {
        host->undoClicked();
        host->settle();
    }
    void redo() {
        host->redoClicked();
        host->settle();
    }
    /// A component in the graph by a step of its own.
    SignalComp* added(SignalComp* c = nullptr) {
        if (!c) c = new SignalComp(host);
        c->init();
        c->createBuffers(host->frames);
        CUndo* u = start();
        u->asAdd(c, &host->comps);
        end(u);
        return c;
    }

private:
    static StripFixture* fixture;
};

StripFixture* UndoHostTest::fixture = nullptr;

TEST_F(UndoHostTest, EmptyStepLeavesNothingButItsNotification) {
    CUndo* u = host->undoStart("Nothing", host, 0x40);
    EXPECT_TRUE(host->undoBusy());
    host->updateFlags = 0;
    end(u);
    EXPECT_FALSE(host->undoBusy());
    EXPECT_EQ(host->undoList.getCount(), 0);
    EXPECT_EQ(host->updateFlags, 0x40u);
    EXPECT_FALSE(host->modified);
}

/// Adding and moving to every place, against a plain vector.
TEST_F(UndoHostTest, MovesLandInFrontOfTheirIndexAndComeBack) {
    CComp box(host);
    const auto order = [&box] {
        std::vector<int> ids;
        for (auto* c : each<CComp>(box.comps)) ids.push_back(c->posX);
        return ids;
    };
    for (int i = 0; i < 4; ++i) {
        auto* c = new CComp(host);
        c->posX = i;
        box.comps.add(c);
    }
    const std::vector<int> before = {0, 1, 2, 3};
    for (int from = 0; from < 4; ++from) {
        for (int to = -1; to <= 5; ++to) {
            std::vector<int> expected = before;
            const size_t place = to < 0 || to > 4 ? 4 : size_t(to);
            expected.insert(expected.begin() + long(place), from);
            expected.erase(expected.begin() + from + (place <= size_t(from) ? 1 : 0));
            CUndo* u = start();
            u->asMove(static_cast<CObject*>(box.comps.items(from)), &box.comps, &box.comps, to);
            end(u);
            EXPECT_EQ(order(), expected) << from << " to " << to;
            undo();
            EXPECT_EQ(order(), before) << from << " to " << to;
            redo();
            EXPECT_EQ(order(), expected) << from << " to " << to;
            undo();
        }
    }
    host->undoClear();
}

TEST_F(UndoHostTest, ValuesAndContentAreExchanged) {
    Content content;
    content.values = {1, 2};
    auto* edited = new Content;
    edited->values = {3};
    int number = 1;
    float level = 0.25f;
    void* pointer = &number;
    CUndo* u = start();
    u->asInt(&number);
    u->asFloat(&level);
    u->asPtr(&pointer);
    u->asSwap(&content, edited);
    number = 2;
    level = 0.5f;
    pointer = &level;
    end(u);
    for (const bool done : {true, false, true, false}) {
        EXPECT_EQ(number, done ? 2 : 1);
        EXPECT_EQ(level, done ? 0.5f : 0.25f);
        EXPECT_EQ(pointer, done ? static_cast<void*>(&level) : &number);
        EXPECT_EQ(content.values, done ? std::vector<int>{3} : (std::vector<int>{1, 2}));
        done ? undo() : redo();
    }
}

TEST_F(UndoHostTest, ComponentThatLeavesSleepsAndItsMapsLoseIt) {
    SignalComp* c = added();
    EXPECT_EQ(c->sleeping, 0);
    auto* maps = static_cast<CMapProg*>(host->maps.items(0));
    auto* map = new CMap;
    map->target = c->output();
    map->comp = c;
    maps->items.add(map);
    CUndo* u = start();
    u->asRemove(c, &host->comps);
    end(u);
    EXPECT_EQ(c->sleeping, 1);
    EXPECT_EQ(map->target, nullptr);
    EXPECT_TRUE(host->updateFlags & updateMaps);
    undo();
    EXPECT_EQ(c->sleeping, 0);
    EXPECT_EQ(map->target, nullptr) << "for good";
    undo();
    EXPECT_EQ(c->sleeping, 1);
    EXPECT_EQ(host->comps.indexed(c), -1);
}

TEST_F(UndoHostTest, StepOnItsWayIsSettledBeforeTheNextOne) {
    int number = 0;
    for (int i = 1; i <= 3; ++i) {
        CUndo* u = start();
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
    for (int i = 0; i < 3; ++i) undo();
    EXPECT_EQ(number, 0);
    EXPECT_EQ(host->undoIndex, -1);
    EXPECT_STREQ(host->undoText().asChar(), "");
}

TEST_F(UndoHostTest, NothingIsTakenBackWhileRecording) {
    added();
    added();
    undo();
    host->recording = 1;
    undo();
    redo();
    host->recording = 0;
    EXPECT_EQ(host->undoIndex, 0);
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
    died = 0;
    for (int i = 0; i < 3; ++i) added(new Mortal(host));
    undo();
    undo();
    EXPECT_EQ(died, 0);
    added();
    EXPECT_EQ(died, 2);
    EXPECT_NE(lastForgotten, nullptr);
    EXPECT_EQ(host->undoList.getCount(), 2);
    EXPECT_STREQ(host->redoText().asChar(), "");
    undo();
    undo();
    host->undoClear();
    EXPECT_EQ(died, 3);
    EXPECT_EQ(host->undoIndex, -1);
}

/// Cables that still lead from a component go with it.
TEST_F(UndoHostTest, FreedComponentLeavesNoCableBehind) {
    SignalComp* c = added();
    SignalComp* to = added();
    f.connect(c, to);
    f.connectMIDI(c, to);
    CUndo* u = start();
    u->asRemove(c, &host->comps);
    end(u);
    host->undoClear();
    EXPECT_TRUE(to->audioCables.empty() && to->midiCables.empty());
    f.block(64);
}

TEST_F(UndoHostTest, LinkedObjectIsMovedOnUndoAndRedoOnly) {
    CList list;
    auto* object = new CObject;
    list.add(object);
    CUndo* u = start();
    u->add2(object, &list, nullptr);
    end(u);
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
        void hideEditors(CComp* c) override { hidden = c, thread = std::this_thread::get_id(); }
        void showEditor(CComp* c, bool) override { shown = c; }
        CComp *hidden = nullptr, *shown = nullptr;
        std::thread::id thread;
    } hooks;
    SignalComp* c = added();
    setEditorHooks(&hooks);
    CUndo* u = start();
    u->asRemove(c, &host->comps);
    host->undoEnd(u, false);
    f.block(64);
    EXPECT_EQ(hooks.hidden, nullptr) << "not on the graph";
    host->idle();
    EXPECT_EQ(hooks.hidden, c);
    EXPECT_EQ(hooks.shown, nullptr);
    undo();
    EXPECT_EQ(hooks.shown, c);
    setEditorHooks(nullptr);
}

TEST_F(UndoHostTest, HolderOfAnObjectIsFound) {
    SignalComp* c = added();
    COutputChannel* ch = c->output();
    CComp* insert = f.addInsert(ch, new GainComp(host));
    f.connect(c);
    f.block(64);
    const std::tuple<CObject*, CObject*, int> cases[] = {
        {ch, c, 0}, {ch->sendLevels[17], ch, 17}, {insert, ch, 0}, {c, nullptr, -1}};
    for (const auto& [object, owner, place] : cases) {
        int index = -5;
        EXPECT_EQ(host->objectToOwner(object, index), owner);
        EXPECT_EQ(index, place);
    }
}

} // namespace

#include "SeqStub.h"
#include "StripFixture.h"
#include "engine/CMap.h"
#include "engine/EditorHooks.h"
#include "engine/ForgetHooks.h"

#include <random>
#include <set>

namespace {

int below2(std::mt19937& random) {
    return int(random() % 3);
}

class UndoHostTest : public StepTest {
protected:
    /// A component in the graph by a step of its own.
    SignalComp* added(SignalComp* c) {
        step([&](CUndo* u) { u->asAdd(made(c), &host->comps); });
        return c;
    }
    SignalComp* added() { return added(new SignalComp(host)); }
    void cut(CComp* c) {
        step([&](CUndo* u) { u->asRemove(c, &host->comps); });
    }
};

TEST_F(UndoHostTest, EmptyStepLeavesNothingButItsNotification) {
    step([&](CUndo*) { EXPECT_TRUE(host->undoBusy()); }, {.comp = CompNotice::program});
    EXPECT_FALSE(host->undoBusy() || host->modified());
    EXPECT_TRUE(host->undoList.empty());
    EXPECT_TRUE(host->notices.raised(CompNotice::program));
    EXPECT_FALSE(host->hostNotices.raised(HostNotice::step));
}

/// Host and song are told what a step names, and nothing else.
TEST_F(UndoHostTest, EachEffectOfAStepIsToldToWhomItConcerns) {
    auto* seq = made(new SeqStub(host));
    const NoticeSet<HostNotice> graph = HostNotice::graph | HostNotice::cables;
    const auto hostAll = graph | HostNotice::pool | HostNotice::pages | HostNotice::transport;
    const auto seqAll = SeqNotice::tracks | SeqNotice::parts | SeqNotice::cuts;
    const struct {
        StepEffects effects;
        NoticeSet<HostNotice> told{};
        int songs = 0;
    } cases[] = {
        {{}},
        {{.graph = true}, graph},
        {{.song = true}, {}, 1},
        {{.host = HostNotice::pool}, HostNotice::pool},
        {{.seq = SeqNotice::tracks | SeqNotice::parts}},
        {{.comp = CompNotice::program}},
    };
    step([&](CUndo* u) { u->asAdd(seq, &host->comps); });
    int number = 0;
    for (const auto& c : cases) {
        host->hostNotices.take(hostAll | HostNotice::step);
        seq->songNotices.take(seqAll);
        seq->notices.take(CompNotice::program);
        seq->songs = 0;
        step([&](CUndo* u) { u->asInt(&number); }, c.effects, seq);
        for (int twice = 0; twice < 2; ++twice) {
            const std::string name = "case " + std::to_string(&c - cases);
            EXPECT_EQ(host->hostNotices.take(hostAll), c.told) << name;
            EXPECT_TRUE(host->hostNotices.take(HostNotice::step)) << name;
            EXPECT_EQ(seq->songNotices.take(seqAll), c.effects.seq) << name;
            EXPECT_EQ(seq->notices.take(CompNotice::program), c.effects.comp) << name;
            EXPECT_EQ(seq->songs, (twice + 1) * c.songs) << name;
            if (!twice) undo();
        }
    }
}

/// To every place, against a plain vector.
TEST_F(UndoHostTest, MovesLandInFrontOfTheirIndexAndComeBack) {
    CComp box(host);
    const auto order = [&box] {
        std::vector<int> all;
        for (auto* c : box.comps) all.push_back(c->posX);
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
    host->maps.items(0)->items.add(map);
    connect(c);
    block(64);
    step([&](CUndo* u) {
        host->stripCables(c, u);
        u->asRemove(c, &host->comps);
    });
    EXPECT_EQ(c->sleeping, 0) << "while it fades";
    const auto sleeps = [&] {
        host->undoIdle();
        return c->sleeping == 1;
    };
    EXPECT_TRUE(runUntil(sleeps));
    EXPECT_EQ(map->target, nullptr);
    EXPECT_TRUE(host->notices.raised(CompNotice::maps));
    undo();
    EXPECT_EQ(c->sleeping, 0);
    EXPECT_EQ(map->target, nullptr) << "for good";
    undo();
    redo();
    EXPECT_FALSE(runUntil(sleeps));
    undo();
    EXPECT_TRUE(runUntil(sleeps));
    redo();
    EXPECT_EQ(c->sleeping, 0);
}

TEST_F(UndoHostTest, StepOnItsWayIsSettledBeforeTheNextOne) {
    int number = 0;
    for (int i = 1; i <= 3; ++i) {
        CUndo* u = host->undoStart("Edit", host);
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

/// A component that carries out its steps item by item, or all at once.
class Lists : public CComp {
public:
    Lists(CQV* root, bool atOnce) : CComp(root), whole(atOnce) {}
    bool takesWhole(const CUndoItem*) override { return whole; }
    void perform(CUndoItem*, int) override { ++performed; }
    void performPlan() override { ++plans; }
    /// An object of a number comes into a list, leaves it, goes to the other one or elsewhere in
    /// it.
    void record(CUndo* u, int kind, int from, int at, int index) {
        CList* lists[] = {&one, &two};
        auto* object = static_cast<CObject*>(lists[from]->items(at));
        if (kind == 0) {
            object = new CObject;
            object->type = ++numbers;
            u->asAdd(object, lists[from], index);
        } else if (object && !taken.count(object)) {
            taken.insert(object);
            if (kind == 1)
                u->asRemove(object, lists[from]);
            else
                u->asMove(object, lists[from], lists[kind == 2 ? 1 - from : from], index);
        }
    }
    std::vector<int> numbersOf(const CList& list) const {
        std::vector<int> all;
        for (const auto* object : each<CObject>(list)) all.push_back(object->type);
        all.push_back(-list.getCount());
        return all;
    }
    std::vector<int> state() const {
        std::vector<int> all = numbersOf(one), more = numbersOf(two);
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    ~Lists() override {
        deleteAll<CObject>(one);
        deleteAll<CObject>(two);
    }

    const bool whole;
    CList one, two;
    std::set<CObject*> taken; ///< by the step that is recorded
    int numbers = 0, performed = 0, plans = 0;
};

/// Random steps lead to the same lists, there and back, and cost the graph no item each.
TEST_F(UndoHostTest, ManyItemsGoAtOnceAsOneByOne) {
    Lists single(host, false), whole(host, true);
    std::mt19937 random(3);
    const auto compare = [&](const char* what) {
        ASSERT_EQ(single.state(), whole.state()) << what << " " << host->undoIndex;
    };
    for (int turn = 0; turn < 200; ++turn) {
        const unsigned seed = random();
        for (Lists* lists : {&single, &whole}) {
            std::mt19937 same(seed);
            const auto below = [&same](int n) { return int(same() % unsigned(n)); };
            CUndo* u = host->undoStart("Edit", lists);
            const int kind = below(4), items = 1 + below(12), from = below(2), rise = below(2);
            for (int i = 0; i < items; ++i)
                lists->record(u, below(4) ? kind : below(4), below(4) ? from : below(2), below(30),
                              rise ? 2 * i : below(30) - 1);
            lists->taken.clear();
            host->undoEnd(u, true);
        }
        compare("done");
        for (int i = below2(random); i > 0; --i) {
            undo();
            undo();
            compare("undone");
        }
        for (int i = below2(random); i > 0; --i) {
            redo();
            redo();
            compare("redone");
        }
    }
    EXPECT_EQ(whole.performed, 0);
    EXPECT_GT(whole.plans, 200);
    host->undoClear();
}

/// What joins a list while a step about it is on its way stays in it.
TEST_F(UndoHostTest, StepIsPreparedAnewWhenItsListChanges) {
    Lists lists(host, true);
    for (const bool late : {false, true}) {
        CUndo* u = host->undoStart("Edit", &lists);
        lists.record(u, late ? 1 : 0, 0, 0, -1);
        host->undoEnd(u, false);
        if (late) {
            const GraphHold hold(host);
            lists.one.add(new CObject);
        }
        host->settle();
    }
    EXPECT_EQ(lists.numbersOf(lists.one), (std::vector<int>{0, -1}));
    undo();
    EXPECT_EQ(lists.one.getCount(), 2);
    host->undoClear();
}

int forgotten = 0, forgetCalls = 0;
int died = 0;

TEST_F(UndoHostTest, NewEditFreesTheRedoTailWhenTheGraphHasLetGo) {
    class Mortal : public SignalComp {
    public:
        using SignalComp::SignalComp;
        ~Mortal() override { ++died; }
    };
    enterForgetHook([](CQV*, const ForgetSet& gone) {
        forgotten += int(gone.all().size());
        ++forgetCalls;
    });
    SignalComp* to = add(new SignalComp(host));
    for (int i = 0; i < 3; ++i) added(new Mortal(host));
    undo();
    undo();
    EXPECT_EQ(died, 0);
    SignalComp* c = added();
    EXPECT_EQ(died, 2);
    EXPECT_EQ(forgotten, 2);
    EXPECT_EQ(forgetCalls, 1) << "once for all that goes";
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
    CUndo* u = host->undoStart("Edit", host);
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

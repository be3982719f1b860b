#include "StripFixture.h"
#include "base/Messages.h"

#include <gtest/gtest.h>
#include <random>

namespace {

struct Send {
    float level = 0.0f;
    int muted = 0, shown = -1;
    bool operator==(const Send&) const = default;
};

/// The sends of all channels, bus by bus, and behind them the first that has no bus.
using Levels = std::vector<std::vector<Send>>;

/// Channels that send to buses. What the edits have to do to the levels is done to `expected`.
class Desk : public StripFixture {
public:
    Levels expected = Levels(1, std::vector<Send>(channels));

    Desk() {
        for (int i = 0; i < channels; ++i) add(new SignalComp(host));
        for (int k = 0; k < 4; ++k) addBusAt(k);
        for (CComp* c : sources())
            for (int k = 0; k < 4; ++k) set(c->output()->sendLevels[k]);
        expected = levels();
    }
    Levels levels() {
        Levels all;
        for (int k = 0; k <= host->sends.getCount(); ++k) {
            all.emplace_back();
            for (CComp* c : sources()) {
                const CSend* send = c->output()->sendLevels[k];
                all.back().push_back({send->level, send->muted, send->shownLevel});
            }
        }
        return all;
    }
    void edit() {
        const int count = host->sends.getCount(), at = pick(std::max(count, 1));
        const int kind = pick(5);
        if (kind == 0 && count < 6) return addBusAt(pick(count + 1));
        if (kind == 1 && count > 0) return removeBus(at);
        if (kind == 2 && count > 0) return moveBus(at, pick(count + 1));
        if (kind == 3 && count > 0) return changeLevel(at);
        if (count < 6) return addSourceAndBus();
        removeBus(at);
    }

private:
    static constexpr int channels = 100;

    int pick(int n) { return int(random() % unsigned(n)); }
    std::vector<CComp*> sources() {
        std::vector<CComp*> all;
        for (auto* c : each<CComp>(host->comps))
            if (c->id == "Signal") all.push_back(c);
        return all;
    }
    void set(CSend* send) {
        send->level = float(pick(1000)) / 1000;
        send->muted = pick(2);
        send->shownLevel = pick(100);
    }
    template <class Record>
    void step(Record&& record) {
        CUndo* u = host->undoStart("Edit", host, undoGraph);
        record(u);
        host->undoEnd(u, true);
    }
    CComp* bus(int at) { return static_cast<CComp*>(host->sends.items(at)); }
    template <class T>
    T* made(T* c) {
        c->init();
        c->createBuffers(host->frames);
        return c;
    }
    void insertRow(int at) {
        expected.insert(expected.begin() + at, std::vector<Send>(expected[0].size()));
    }

    void addBusAt(int at) {
        step([&](CUndo* u) { u->asAdd(made(new CGroupCh(host)), &host->sends, at); });
        insertRow(at);
    }
    void removeBus(int at) {
        step([&](CUndo* u) { u->asRemove(bus(at), &host->sends); });
        expected.erase(expected.begin() + at);
    }
    void moveBus(int from, int to) {
        step([&](CUndo* u) { u->asMove(bus(from), &host->sends, &host->sends, to); });
        const auto row = expected[size_t(from)];
        expected.insert(expected.begin() + to, row);
        expected.erase(expected.begin() + from + (to <= from ? 1 : 0));
    }
    void changeLevel(int at) {
        const auto all = sources();
        const size_t i = size_t(pick(int(all.size())));
        CSend* send = all[i]->output()->sendLevels[at];
        step([&](CUndo* u) {
            u->asFloat(send->level.address());
            send->level = expected[size_t(at)][i].level = float(pick(1000)) / 1000;
        });
    }
    /// The levels of a channel that enters with a bus shift like the others.
    void addSourceAndBus() {
        auto* c = made(new SignalComp(host));
        for (size_t k = 0; k < expected.size(); ++k) {
            CSend* send = c->output()->sendLevels[k];
            if (k + 1 < expected.size()) set(send);
            expected[k].push_back({send->level, send->muted, send->shownLevel});
        }
        step([&](CUndo* u) {
            u->asAdd(c, &host->comps);
            u->asAdd(made(new CGroupCh(host)), &host->sends, 0);
        });
        insertRow(0);
    }

    std::mt19937 random{1};
};

std::string lastMessage;

} // namespace

/// Buses come, go and move, with levels on a hundred channels: the levels stay with their buses,
/// and undo and redo bring back every state exactly.
TEST(SendOrder, LevelsFollowTheirBusesThroughAnyHistory) {
    Desk desk;
    std::vector<Levels> states(size_t(desk.host->undoIndex + 1));
    states.push_back(desk.expected);
    const size_t first = states.size() - 1;
    const auto turn = [&](void (UndoHost::*click)(CObject*)) {
        (desk.host->*click)(nullptr);
        desk.host->settle();
        desk.expected = states[size_t(desk.host->undoIndex + 1)];
        ASSERT_TRUE(desk.levels() == desk.expected) << "at step " << desk.host->undoIndex;
    };
    for (int i = 0; i < 300; ++i) {
        for (int back = i % 7 == 0 ? i % 5 : 0; back > 0 && states.size() > first + 5; --back)
            turn(&UndoHost::undoClicked);
        desk.edit();
        ASSERT_TRUE(desk.levels() == desk.expected) << "edit " << i;
        states.resize(size_t(desk.host->undoIndex + 1));
        states.push_back(desk.expected);
    }
    while (size_t(desk.host->undoIndex + 1) > first) turn(&UndoHost::undoClicked);
    while (size_t(desk.host->undoIndex + 2) < states.size()) turn(&UndoHost::redoClicked);
}

TEST(SendOrder, BusesEndAtThirtyTwo) {
    StripFixture f;
    messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int) {
        lastMessage = std::string(title.asChar()) + ": " + text.asChar();
        return int(mbOk);
    };
    for (int k = 0; k < maxSends; ++k) f.host->addSendClicked();
    EXPECT_EQ(lastMessage, "");
    f.host->addSendClicked();
    messageHooks() = MessageHooks();
    EXPECT_EQ(lastMessage, "Error: Too many sends");
    EXPECT_EQ(f.host->sends.getCount(), maxSends);
    EXPECT_EQ(f.out->audioCables.getCount(), maxSends);
    COutputChannel* ch = f.out->output();
    ch->sendLevels[maxSends - 1]->level = 0.5f;
    CUndo* u = f.host->undoStart("Remove", f.host, undoGraph);
    u->asRemove(static_cast<CComp*>(f.host->sends.items(3)), &f.host->sends);
    f.host->undoEnd(u, true);
    EXPECT_EQ(ch->sendLevels[maxSends - 2]->level, 0.5f);
    EXPECT_EQ(ch->sendLevels[maxSends - 1]->level, 0.0f) << "none comes after it";
    f.host->addGroupClicked();
    EXPECT_STREQ(f.host->undoText().asChar(), "Add Group");
    EXPECT_EQ(f.out->audioCables.getCount(), maxSends + 1);
}

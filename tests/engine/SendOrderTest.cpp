#include "StripFixture.h"
#include "support/Told.h"

/// Buses come, go and move: the levels stay with their buses, on channels too that come in the same
/// step.
TEST(SendOrder, LevelsFollowTheirBuses) {
    StripFixture f;
    auto& buses = f.host->sends;
    SignalComp* sources[] = {f.add(new SignalComp(f.host)), f.made(new SignalComp(f.host))};
    for (int k = 0; k < 3; ++k) {
        f.addBus();
        for (SignalComp* s : sources) {
            CSend* send = s->output()->sendLevels[k];
            send->level = float(k + 1);
            send->muted = k % 2;
            send->shownLevel = 0;
        }
    }
    using Levels = std::vector<int>; // level, mute and shown level as one number
    const auto expectLevels = [&](const Levels& expected) {
        for (const SignalComp* s : sources) {
            Levels found;
            for (size_t k = 0; k < expected.size(); ++k) {
                const CSend* send = s->outputs.getFirst()->sendLevels[k];
                found.push_back(int(send->level * 100) + send->muted * 10 + send->shownLevel);
            }
            EXPECT_EQ(found, expected);
        }
    };
    Levels before = {100, 210, 300, -1, -1};
    const auto expectStep = [&](const Levels& after, auto&& record) {
        f.step(record);
        expectLevels(after);
        f.undo();
        expectLevels(before);
        f.redo();
        expectLevels(before = after);
    };
    const auto expectMove = [&](const Levels& after, int from, int to) {
        auto* bus = static_cast<CObject*>(buses.items(from));
        expectStep(after, [&](CUndo* u) { u->asMove(bus, &buses, &buses, to); });
    };
    expectStep({-1, 100, 210, 300, -1}, [&](CUndo* u) {
        u->asAdd(sources[1], &f.host->comps);
        u->asAdd(f.made(new CGroupCh(f.host)), &buses, 0);
    });
    expectMove({100, 210, 300, -1, -1}, 0, -1);
    expectMove({210, 100, 300, -1, -1}, 0, 2);
    expectMove({300, 210, 100, -1, -1}, 2, 0);
    expectStep({300, 100, -1, -1, -1},
               [&](CUndo* u) { u->asRemove(static_cast<CObject*>(buses.items(1)), &buses); });
}

TEST(SendOrder, BusesEndAtThirtyTwo) {
    StripFixture f;
    auto& buses = f.host->sends;
    const Told told;
    for (int k = 0; k < maxSends; ++k) f.host->addSendClicked();
    EXPECT_TRUE(told.messages.empty());
    f.host->addSendClicked();
    EXPECT_EQ(told.messages, std::vector<std::string>{"Error: Too many sends"});
    EXPECT_EQ(buses.getCount(), maxSends);
    EXPECT_EQ(f.out->audioCables.getCount(), maxSends);
    CSend* const* sends = f.out->output()->sendLevels;
    sends[maxSends - 1]->level = 0.5f;
    f.step([&](CUndo* u) { u->asRemove(static_cast<CObject*>(buses.items(3)), &buses); });
    EXPECT_EQ(sends[maxSends - 2]->level, 0.5f);
    EXPECT_EQ(sends[maxSends - 1]->level, 0.0f) << "none comes after it";
    f.host->addGroupClicked();
    EXPECT_STREQ(f.host->undoText().asChar(), "Add Group");
    EXPECT_EQ(f.out->audioCables.getCount(), maxSends + 1);
}

#include "base/Deadline.h"
#include "engine/StripFixture.h"

namespace {

/// Takes down which tasks ran, and whether the last one did so in a block.
struct Fixture : StripFixture {
    Fixture() : StripFixture(64), tasks(*host->tasks) { order.reserve(2000); }
    /// A task that may do `more`.
    bool add(int i, const std::function<void()>& more = {}) {
        return host->addTask(new Call([this, i, more] {
                                 order.push_back(i);
                                 insideBlock = insideCallback();
                                 if (more) more();
                             }),
                             nullptr);
    }
    CTasks& tasks;
    std::vector<int> order;
    bool insideBlock = false;
};

} // namespace

TEST(CTasks, RunInOrderAtTheEndOfABlock) {
    Fixture t;
    t.run();
    rtReset();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 127; ++i) ASSERT_TRUE(t.add(i));
        EXPECT_FALSE(t.add(200)) << "dropped and freed";
        EXPECT_TRUE(t.order.empty());
        t.run();
        ASSERT_EQ(t.order.size(), 127u);
        for (int i = 0; i < 127; ++i) ASSERT_EQ(t.order[size_t(i)], i);
        t.order.clear();
    }
    EXPECT_TRUE(t.insideBlock);
    EXPECT_EQ(rtViolations(), 0);
}

TEST(CTasks, TasksOfTasksWaitForTheNextTurn) {
    Fixture t;
    t.add(1, [&] { t.add(3); });
    t.add(2, [&] { t.tasks.exec(true); });
    t.tasks.exec(true);
    EXPECT_EQ(t.order, (std::vector{1, 2})) << "not the one that was added meanwhile";
    t.tasks.exec(true);
    EXPECT_EQ(t.order, (std::vector{1, 2, 3}));
}

TEST(CTasks, InterfaceTakesOverAfterElevenPassesWithoutABlock) {
    Fixture t;
    EXPECT_FALSE(t.tasks.blocksComing()) << "at the beginning";
    t.run();
    EXPECT_TRUE(t.tasks.blocksComing());
    t.add(5);
    for (int i = 0; i < 10; ++i) t.host->idle();
    EXPECT_TRUE(t.order.empty());
    t.host->idle();
    EXPECT_EQ(t.order, std::vector{5});
    EXPECT_FALSE(t.insideBlock || t.tasks.blocksComing());
    t.add(6);
    t.run();
    EXPECT_TRUE(t.insideBlock) << "the next block takes them back";
    t.tasks.audioStopped();
    t.add(7);
    t.host->idle();
    EXPECT_EQ(t.order, (std::vector{5, 6, 7})) << "at once when the device is closed";
    t.run();
    t.add(8);
    EXPECT_TRUE(comes([&] { return t.tasks.pump(), t.order.size() == 4; }))
        << "turns of a waiting loop count too";
}

TEST(CTasks, EachRunsOnceWhoeverRunsThem) {
    Fixture t;
    {
        const BlockThread driver([&] { t.block(64); });
        for (int sent = 0; sent < 1500;) {
            if (t.add(sent)) ++sent;
            if (sent % 100 == 0) t.tasks.audioStopped();
            t.tasks.exec(true);
        }
        EXPECT_TRUE(comes([&] { return t.tasks.count() == 0; }));
    }
    ASSERT_EQ(t.order.size(), 1500u);
    for (int i = 0; i < 1500; ++i) ASSERT_EQ(t.order[size_t(i)], i);
}

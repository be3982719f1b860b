#include "base/Delegates.h"
#include "base/Numbers.h"
#include "support/RtTrap.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

/// Takes down which tasks ran, by the number in `flags` of what they were given.
struct Worker : CObject {
    explicit Worker(CQV* root) : host(root) { order.reserve(2000); }
    void run(CObject* arg) {
        order.push_back(int(arg->flags.load()));
        insideBlock = insideCallback();
    }
    void addMore(CObject* arg) {
        run(arg);
        add(arg);
    }
    void nested(CObject* arg) {
        run(arg);
        host->tasks->exec(true);
    }
    bool add(CObject* arg) {
        return host->addTask(new _COnChange<Worker>(this, &Worker::run), arg);
    }

    CQV* host;
    std::vector<int> order;
    bool insideBlock = false;
};

struct Fixture : TestHost {
    Fixture() : TestHost(64), worker(host) {
        for (int i = 0; i < 300; ++i) args[i].flags = unsigned(i);
    }
    bool add(int i) { return worker.add(&args[i]); }
    Worker worker;
    CObject args[300];
};

} // namespace

TEST(CTasks, RunInOrderAtTheEndOfABlock) {
    Fixture t;
    t.run();
    rtReset();
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(t.add(i));
    EXPECT_EQ(t.host->tasks->count(), 3);
    EXPECT_TRUE(t.worker.order.empty());
    t.run();
    EXPECT_EQ(t.worker.order, (std::vector{0, 1, 2}));
    EXPECT_TRUE(t.worker.insideBlock);
    EXPECT_EQ(t.host->tasks->count(), 0);
    EXPECT_EQ(rtViolations(), 0);
}

TEST(CTasks, HundredAndTwentySevenWaitAndNoMore) {
    Fixture t;
    t.run();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 127; ++i) ASSERT_TRUE(t.add(i));
        EXPECT_TRUE(t.host->tasks->full());
        EXPECT_FALSE(t.add(200)) << "dropped and freed";
        t.worker.order.clear();
        t.run();
        ASSERT_EQ(t.worker.order.size(), 127u);
        EXPECT_EQ(t.worker.order.back(), 126);
    }
}

TEST(CTasks, TasksOfTasksWaitForTheNextTurn) {
    Fixture t;
    const auto addWith = [&](void (Worker::*f)(CObject*), int i) {
        t.host->addTask(new _COnChange<Worker>(&t.worker, f), &t.args[i]);
    };
    addWith(&Worker::addMore, 1);
    addWith(&Worker::nested, 2);
    t.host->tasks->exec(true);
    EXPECT_EQ(t.worker.order, (std::vector{1, 2})) << "not the one that was added meanwhile";
    t.host->tasks->exec(true);
    EXPECT_EQ(t.worker.order, (std::vector{1, 2, 1}));
}

TEST(CTasks, InterfaceTakesOverAfterElevenPassesWithoutABlock) {
    Fixture t;
    EXPECT_FALSE(t.host->tasks->blocksComing()) << "at the beginning";
    t.run();
    EXPECT_TRUE(t.host->tasks->blocksComing());
    t.add(5);
    for (int i = 0; i < 10; ++i) t.host->idle();
    EXPECT_TRUE(t.worker.order.empty());
    t.host->idle();
    EXPECT_EQ(t.worker.order, std::vector{5});
    EXPECT_FALSE(t.worker.insideBlock);
    EXPECT_FALSE(t.host->tasks->blocksComing());
    t.add(6);
    t.run();
    EXPECT_TRUE(t.worker.insideBlock) << "the next block takes them back";
    EXPECT_TRUE(t.host->tasks->blocksComing());
    t.host->tasks->audioStopped();
    t.add(7);
    t.host->idle();
    EXPECT_EQ(t.worker.order, (std::vector{5, 6, 7})) << "at once when the device is closed";
}

/// Turns of a waiting loop run what blocks never come for.
TEST(CTasks, WaitingLoopTakesOverInTheEnd) {
    Fixture t;
    t.run();
    t.add(1);
    const int began = asTimeInMS();
    while (t.worker.order.empty() && msBetween(began, asTimeInMS()) < 10000) {
        t.host->tasks->pump();
        asSleep(1);
    }
    EXPECT_EQ(t.worker.order, std::vector{1});
}

TEST(CTasks, EachRunsOnceWhoeverRunsThem) {
    Fixture t;
    std::atomic<bool> stop{false};
    std::thread driver([&] {
        float l[64], r[64];
        float* bufs[] = {l, r};
        while (!stop) {
            libio(bufs, bufs, 2, 2, 64, nullptr, 0);
            std::this_thread::yield();
        }
    });
    int sent = 0;
    while (sent < 1500) {
        if (t.add(sent % 300)) ++sent;
        if (sent % 100 == 0) t.host->tasks->audioStopped();
        t.host->tasks->exec(true);
    }
    while (t.host->tasks->count() > 0) asSleep(1);
    stop = true;
    driver.join();
    ASSERT_EQ(t.worker.order.size(), 1500u);
    for (int i = 0; i < 1500; ++i) ASSERT_EQ(t.worker.order[size_t(i)], i % 300);
}

#include "base/CThread.h"

#include "Deadline.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

/// A worker that waits, counts its rounds, and looks at content that others delete.
class Worker : public CThread {
public:
    explicit Worker(int msToWait) : wait(msToWait) {}
    ~Worker() override { finish(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void execute() override {
        while (!terminated) {
            checkPark();
            if (wait != 0) suspend(wait);
            if (const int* p = content.loadAcquire()) seen = *p;
            rounds.fetchAdd(1);
        }
        ended = true;
    }

    Shared<int*> content{nullptr};
    Shared<int> seen{0}, rounds{0};
    Shared<bool> ended{false};

private:
    int wait;
};

} // namespace

TEST(CThread, EndsHoweverItIsStopped) {
    for (int wait : {-1, 0, 1}) {
        Worker worker(wait);
        worker.start();
        worker.setPriority(-20);
        worker.resume();
        EXPECT_TRUE(comes([&] { return worker.rounds > 0; }));
        worker.finish();
        EXPECT_TRUE(worker.ended) << wait;
        worker.finish();
        worker.waitFor();
        worker.park();
    }
    for (int i = 0; i < 100; ++i) {
        Worker atOnce(-1);
        atOnce.start();
    }
    const Worker never(-1);
}

TEST(CThread, KeepsAWakeUpThatCameEarly) {
    Worker worker(-1);
    worker.resume();
    worker.start();
    for (int wanted = 1; wanted < 200; ++wanted) {
        ASSERT_TRUE(comes([&] { return worker.rounds >= wanted; })) << wanted;
        worker.resume();
    }
}

/// While a worker is parked, its content may be deleted; wake-ups meanwhile do not start it.
TEST(CThread, StandsStillWhileParked) {
    for (int wait : {-1, 0, 1}) {
        Worker worker(wait);
        auto content = std::make_unique<int>(1);
        worker.content.storeRelease(content.get());
        worker.start();
        for (int i = 0; i < 300; ++i) {
            worker.park();
            worker.park();
            const int before = worker.rounds;
            content = std::make_unique<int>(i);
            worker.content.storeRelease(content.get());
            worker.resume();
            worker.unpark();
            std::this_thread::yield();
            ASSERT_EQ(worker.rounds, before) << "still parked once";
            worker.unpark();
            ASSERT_TRUE(comes([&] { return worker.rounds > before; })) << wait;
        }
        worker.park();
        worker.finish();
        EXPECT_TRUE(worker.ended) << "the end does not wait for unpark";
    }
}

#include "base/CObject.h"
#include "base/Denormals.h"
#include "base/Ring.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

/// Each thread sets and clears a bit of its own; none may be lost to another.
TEST(CObject, FlagsOfSeveralThreadsDoNotDisturbEachOther) {
    CObject object;
    std::vector<std::thread> threads;
    std::array<int, 4> lost{};
    for (unsigned t = 0; t < lost.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 20000; ++i) {
                object.setFlag(1u << t, true);
                lost[t] += !object.hasFlag(1u << t);
                object.setFlag(1u << t, false);
                lost[t] += object.hasFlag(1u << t);
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(lost, (std::array<int, 4>{}));
    EXPECT_EQ(object.flags, 0u);
}

TEST(Ring, HandsWholeRecordsToAnotherThread) {
    struct Record {
        int a, b, c;
    };
    constexpr int total = 20000;
    Ring<Record, 16> ring;
    int filled = 0, wrong = 0;
    while (ring.push({filled, -filled, filled * 3})) ++filled;
    EXPECT_EQ(filled, 16) << "it takes its capacity";
    std::thread producer([&] {
        for (int i = filled; i < total; ++i)
            while (!ring.push({i, -i, i * 3})) std::this_thread::yield();
    });
    for (int i = 0; i < total; ++i) {
        Record r{};
        while (!ring.pop(r)) std::this_thread::yield();
        wrong += r.a != i || r.b != -i || r.c != i * 3;
    }
    producer.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(ring.empty());
}

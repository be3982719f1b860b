#include "driver/ClockPace.h"

#include <gtest/gtest.h>

/// The times are told, so none of this depends on the machine.
struct PaceFixture : testing::Test {
    static constexpr int frames = 441, rate = 44100;
    static constexpr int64_t start = 5 * nsPerSecond, block = 10 * nsPerMs;
    ClockPace pace{frames, rate, start};
    int64_t now = start;
    bool late = false, wokenLate = false;

    /// A block that the clock is woken for so much too late, if it sleeps at all.
    bool run(int64_t takes, int64_t overslept = 0) {
        const bool sleeps = now < pace.beginNs();
        if (sleeps) now = pace.beginNs() + overslept;
        pace.begin(now, sleeps);
        now += takes;
        late = now > pace.dueNs();
        wokenLate = late && now - pace.lost() <= pace.dueNs();
        return pace.end(now);
    }
};
using ClockPaceTest = PaceFixture;

/// Blocks of a length that is no whole number of nanoseconds do not drift.
TEST_F(ClockPaceTest, KeepsTime) {
    ClockPace odd(1, 7, start);
    for (int64_t i = 0; i < 70'000; ++i) {
        ASSERT_EQ(odd.beginNs(), start + i * nsPerSecond / 7);
        ASSERT_EQ(odd.dueNs(), start + (i + 2) * nsPerSecond / 7);
        ASSERT_TRUE(odd.end(odd.beginNs()));
    }
}

/// One that is woken too late is no fault of the blocks, nor is what it leaves to be made up for.
TEST_F(ClockPaceTest, TellsAStallFromHeavyBlocks) {
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(run(block / 2) && !late);
    ASSERT_TRUE(run(block / 2, block) && !late) << "a card has some in store";
    while (now >= pace.beginNs()) run(block / 2);
    for (int i = 0; i < 3; ++i) { // at 4.5 blocks behind, 4, 3.5 and so on
        run(block / 2, 4 * block);
        EXPECT_TRUE(late && wokenLate) << i;
    }
    while (now >= pace.beginNs()) run(block / 2);
    EXPECT_FALSE(late);
    for (int i = 0; i < 6; ++i) { // each half a block too long: the third empties the card
        run(block * 3 / 2);
        EXPECT_EQ(late, i >= 2);
        EXPECT_FALSE(wokenLate);
    }
}

TEST_F(ClockPaceTest, StartsAnewBehindAGap) {
    run(block / 2);
    EXPECT_FALSE(run(block / 2, 3 * nsPerSecond));
    EXPECT_EQ(pace.beginNs(), now);
    EXPECT_TRUE(run(block / 2) && !late);
}

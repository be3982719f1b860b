#include "engine/LoopCalls.h"

#include "base/Deadline.h"

#include <gtest/gtest.h>
#include <unistd.h>

/// Timers come again and again, till they are taken away; also by one that is due with them, or by
/// themselves. With each comes the mark that it was added with.
TEST(LoopCalls, TimersComeUntilTheyGo) {
    LoopCalls calls;
    int wanted = 0, marked = 0, first = 0, second = 0, once = 0;
    calls.onWanted = [&] { wanted++; };
    calls.onCall = [&](int mark) { marked = mark; };
    unsigned gone = 0, itself = 0;
    calls.mark = 7;
    const unsigned stays = calls.addTimer(0, [&] {
        EXPECT_EQ(marked, 7);
        if (++first == 3) calls.remove(gone);
    });
    calls.mark = 0;
    gone = calls.addTimer(1, [&] { second++; });
    itself = calls.addTimer(10, [&] {
        once++;
        calls.remove(itself);
    });
    calls.addTimer(60000, [] { FAIL() << "not due"; });
    std::vector<pollfd> files;
    int ms = 500;
    calls.await(files, ms);
    EXPECT_TRUE(ms <= 10 && files.empty()) << ms;
    calls.idle();
    EXPECT_EQ(first, 0) << "somebody else serves";
    ASSERT_TRUE(comes([&] { return calls.serve(), first >= 6; }));
    EXPECT_TRUE(second <= 3 && once == 1 && marked == 0 && wanted == 1);
    EXPECT_TRUE(calls.remove(stays) && !calls.remove(stays) && !calls.remove(0));
    calls.onWanted = nullptr;
    gone = calls.addTimer(10, [&] { second = 100; });
    ASSERT_TRUE(comes([&] { return calls.idle(), second == 100; }));
}

/// A file is told of as it can be read, and that its other end has gone.
TEST(LoopCalls, FilesTellWhatTheyAreReadyFor) {
    LoopCalls calls;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    unsigned told = 0;
    const unsigned reads =
        calls.watch(ends[0], LoopCalls::readable, [&](unsigned uses) { told |= uses; });
    calls.serve();
    EXPECT_EQ(told, 0u);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    calls.serve();
    EXPECT_EQ(told, unsigned(LoopCalls::readable));
    std::vector<pollfd> files;
    int ms = 500;
    calls.await(files, ms);
    EXPECT_TRUE(ms == 500 && files.size() == 1 && files[0].fd == ends[0]);
    const unsigned writes =
        calls.watch(ends[1], LoopCalls::writable, [&](unsigned uses) { told = uses; });
    calls.serve();
    EXPECT_EQ(told, unsigned(LoopCalls::writable));
    calls.remove(writes);
    close(ends[1]);
    calls.serve();
    EXPECT_TRUE(told & LoopCalls::broken);
    told = 0;
    calls.remove(reads);
    calls.serve();
    EXPECT_TRUE(told == 0 && calls.empty());
    close(ends[0]);
}

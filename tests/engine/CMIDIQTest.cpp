#include "engine/CMIDIQ.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

std::vector<CMIDIBytes> walk(CMIDIQ& q) {
    std::vector<CMIDIBytes> found;
    for (const CMIDIBytes* e = q.first(); e; e = e->next) found.push_back(*e);
    return found;
}

/// `insert` has to sort as a stable sort does, and the links have to tell the same as the array.
TEST(CMIDIQ, InsertSortsByTimeAndKeepsTheOrderOfEqualTimes) {
    std::mt19937 random(1);
    for (const int count : {1, 2, 50, CMIDIQ::maxEvents}) {
        CMIDIQ q(nullptr);
        std::vector<std::pair<double, int>> expected;
        for (int i = 0; i < count; ++i) {
            const double time = double(random() % 16);
            expected.emplace_back(time, i);
            q.insert(time, i, eventParam, 0.5f, 7, &q, &expected);
        }
        std::ranges::stable_sort(expected, {}, &std::pair<double, int>::first);
        const auto found = walk(q);
        ASSERT_EQ(found.size(), expected.size());
        for (size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(found[i].time, expected[i].first);
            EXPECT_EQ(found[i].data, expected[i].second) << "event " << i << " of " << count;
            EXPECT_EQ(found[i].owner, &q);
        }
    }
}

TEST(CMIDIQ, FullQueueDropsWhatComesAndKeepsWhatItHas) {
    CMIDIQ q(nullptr);
    for (int i = 0; i < CMIDIQ::capacity + 3; ++i) q.addMidiEvent(i, i);
    q.insert(-1.0, 9999, eventMidi, 0, 0, nullptr, nullptr);
    EXPECT_EQ(q.count, 511);
    const auto found = walk(q);
    EXPECT_EQ(found.size(), 511u);
    EXPECT_EQ(found.front().data, 0);
    EXPECT_EQ(found.back().data, 510);
    q.clear();
    EXPECT_EQ(q.first(), nullptr);
}

TEST(CMIDIQ, PopClosesTheGapWhereverItIs) {
    for (const int gone : {0, 2, 4}) {
        CMIDIQ q(nullptr), other(nullptr);
        for (int i = 0; i < 5; ++i) q.addMidiEvent(i, i);
        q.pop(gone);
        q.pop(17);
        q.pop(-1);
        other.addMidiEvent(0, 77);
        other.copyEvents(&q);
        for (CMIDIQ* queue : {&q, &other}) {
            const auto found = walk(*queue);
            ASSERT_EQ(found.size(), 4u);
            for (int i = 0; i < 4; ++i) EXPECT_EQ(found[size_t(i)].data, i < gone ? i : i + 1);
        }
    }
    CMIDIQ one(nullptr);
    one.addMidiEvent(0, 1);
    one.pop(0);
    EXPECT_EQ(one.first(), nullptr);
}

TEST(CMIDIQ, FrameOfStaysInItsRange) {
    struct Case {
        double time;
        int low, high, frame;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Case cases[] = {{0, 0, 64, 0},   {10.49, 0, 64, 10}, {10.5, 0, 64, 11},
                          {-3, 0, 64, 0},  {63.6, 0, 64, 64},  {1e300, 0, 64, 64},
                          {5, 20, 64, 20}, {nan, 3, 64, 3}};
    for (const Case& c : cases) {
        CMIDIBytes e;
        e.time = c.time;
        EXPECT_EQ(CMIDIQ::frameOf(&e, c.low, c.high), c.frame) << c.time;
    }
}

} // namespace

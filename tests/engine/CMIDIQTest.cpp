#include "engine/CMIDIQ.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

/// What the links tell.
std::vector<std::pair<double, int>> walk(CMIDIQ& q) {
    std::vector<std::pair<double, int>> found;
    for (const CMIDIBytes* e = q.first(); e; e = e->next) found.emplace_back(e->time, e->data);
    return found;
}

} // namespace

TEST(CMIDIQ, InsertSortsByTimeAndKeepsTheOrderOfEqualTimes) {
    std::mt19937 random(1);
    for (const int count : {1, 2, 50, CMIDIQ::maxEvents}) {
        CMIDIQ q(nullptr);
        std::vector<std::pair<double, int>> expected;
        for (int i = 0; i < count; ++i) {
            expected.emplace_back(double(random() % 16), i);
            q.insert(expected.back().first, i, eventParam, 0.5f, 7, &q, nullptr);
        }
        std::ranges::stable_sort(expected, {}, &std::pair<double, int>::first);
        EXPECT_EQ(walk(q), expected) << count;
    }
}

TEST(CMIDIQ, PopClosesTheGapWhereverItIs) {
    for (const int gone : {0, 2, 4}) {
        CMIDIQ q(nullptr), other(nullptr);
        std::vector<std::pair<double, int>> expected;
        for (int i = 0; i < 5; ++i) {
            q.addMidiEvent(i, i);
            if (i != gone) expected.emplace_back(i, i);
        }
        for (const int at : {gone, 17, -1}) q.pop(at);
        EXPECT_EQ(walk(q), expected) << gone;
        other.addMidiEvent(0, 77);
        other.copyEvents(&q);
        EXPECT_EQ(walk(other), expected) << gone;
    }
}

#include "SongFixture.h"
#include "support/Rows.h"

#include <algorithm>
#include <random>

/// Of two events at one tick the newer goes last; each delta counts from the event before.
TEST(CPart, EventsKeepTheOrderOfInsertionAtOneTick) {
    std::mt19937 random(1);
    CMIDIPart part, bulk;
    EventCollector collector;
    Ticks expected;
    for (int i = 0; i < 300; i++) {
        const int tick = int(random() % 97) * 10, number = i & 127;
        part.addEvent(tick, note(number));
        collector.add(tick, note(number));
        expected.emplace_back(tick, number);
    }
    bulk.setEvents(collector.takeList());
    std::ranges::stable_sort(expected, {}, &Ticks::value_type::first);
    EXPECT_EQ(notesOf(&part), expected);
    EXPECT_EQ(notesOf(&bulk), expected);
}

/// Of two points at one tick the newer goes first, but never before the first point of all.
TEST(CPart, PointsStandInReverseOrderAtOneTick) {
    for (const auto& [added, expected] : Rows<Ticks, Ticks>{
             {{{0, 1}, {50, 2}, {50, 3}, {90, 4}}, {{0, 1}, {50, 3}, {50, 2}, {90, 4}}},
             {{{50, 1}, {50, 2}, {50, 3}}, {{50, 1}, {50, 3}, {50, 2}}},
             {{{10, 1}, {-20, 2}}, {{-20, 2}, {10, 1}}}}) {
        CMIDIPart part;
        for (const auto& [tick, percent] : added)
            part.addEventParam(tick, createEnvEvent(nullptr, float(percent) / 100.0f), 9);
        EXPECT_EQ(pointsOf(&part, 9), expected);
        EXPECT_TRUE(pointsOf(&part, 8).empty());
    }
}

/// There is a pointer for each slot that is reserved and one for the main list, 64 at most.
TEST(CPart, SlotsAndPointersEndWhereTheRoomEnds) {
    for (int slot : {-1, maxSlots, 1 << 30, -(1 << 30)}) {
        CMIDIPart part;
        part.addEventParam(0, createEnvEvent(nullptr, 0.5f), slot);
        part.setParam(slot, createEnvEvent(nullptr, 0.5f));
        EXPECT_EQ(part.getParam(slot), nullptr) << slot;
        EXPECT_EQ(part.reservedSlots(), 0);
    }
    for (const auto& [slots, pointers] : {std::pair{0, 1}, {8, 9}, {9, 17}, {1000, 64}}) {
        CMIDIPart part;
        part.reserveSlots(slots);
        int added = 0;
        while (added < 200 && part.addPlay()) added++;
        EXPECT_EQ(added, pointers) << slots;
    }
}

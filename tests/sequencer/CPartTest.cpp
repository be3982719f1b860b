#include "SongFixture.h"

#include <algorithm>
#include <cmath>
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
    const std::pair<Ticks, Ticks> cases[] = {
        {{{0, 1}, {50, 2}, {50, 3}, {90, 4}}, {{0, 1}, {50, 3}, {50, 2}, {90, 4}}},
        {{{50, 1}, {50, 2}, {50, 3}}, {{50, 1}, {50, 3}, {50, 2}}},
        {{{50, 1}, {20, 2}}, {{20, 2}, {50, 1}}},
        {{{10, 1}, {-20, 2}}, {{-20, 2}, {10, 1}}},
    };
    for (const auto& [added, expected] : cases) {
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

TEST(CPart, AGhostSharesContentAndNothingElse) {
    CMIDIPart master, ghost;
    ghost.ghostOf = &master;
    ghost.pos = 500;
    ghost.addEvent(30, note(64));
    ghost.addEventParam(40, createEnvEvent(nullptr, 0.5f), 2);
    master.addEvent(10, note(60));
    EXPECT_EQ(notesOf(&ghost), (Ticks{{10, 60}, {30, 64}}));
    EXPECT_EQ(pointsOf(&master, 2), (Ticks{{40, 50}}));
    EXPECT_EQ(ghost.events, nullptr);
    master.getEvents()->flags = eventSelected;
    ghost.deleteSelected();
    EXPECT_EQ(notesOf(&master).size(), 2u);
    const std::unique_ptr<CPart> twin(ghost.copy(0));
    EXPECT_EQ(twin->ghostOf, &master);
    EXPECT_EQ(twin->events, nullptr);
}

TEST(Points, HostileValuesAreClamped) {
    CTempoPart tempo;
    for (const auto& [given, kept] :
         {std::pair{-1e30f, 10.0f}, {1e30f, 250.0f}, {99.5f, 99.5f}, {std::nanf(""), 10.0f}}) {
        tempo.setTempo(given);
        EXPECT_EQ(tempo.getTempo(), kept) << given;
    }
    CTimesigPart timesig;
    for (const auto& [given, kept] : {std::pair{0, 4}, {-7, 1}, {1 << 20, int(maxTimesig)}}) {
        timesig.setTimesig(given, given);
        EXPECT_EQ(timesig.getNum(), kept);
        EXPECT_EQ(timesig.getDen(), kept);
    }
}

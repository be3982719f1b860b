#include "SongFixture.h"

#include <algorithm>
#include <random>

namespace {

constexpr int manyEvents = 300;
const int hostileSlots[] = {-1, maxSlots, 1 << 30, -(1 << 30)};

/// A list of ticks that grows in random order, with many ties.
std::vector<int> randomTicks(unsigned seed) {
    std::mt19937 random(seed);
    std::vector<int> ticks(manyEvents);
    for (int& tick : ticks) tick = int(random() % 97) * 10;
    return ticks;
}

} // namespace

/// Of two events at one tick the newer goes last; each delta counts from the event before.
TEST(CPart, EventsKeepTheOrderOfInsertionAtOneTick) {
    for (unsigned seed = 1; seed <= 5; seed++) {
        CMIDIPart part, bulk;
        EventCollector collector;
        Ticks expected;
        int number = 0;
        for (int tick : randomTicks(seed)) {
            part.addEvent(tick, note(number & 127));
            collector.add(tick, note(number & 127));
            expected.emplace_back(tick, number++ & 127);
        }
        bulk.setEvents(collector.takeList());
        std::stable_sort(expected.begin(), expected.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        EXPECT_EQ(notesOf(&part), expected) << "seed " << seed;
        EXPECT_EQ(notesOf(&bulk), expected) << "seed " << seed;
    }
}

/// Of two points at one tick the newer goes first, but never before the first point of all.
TEST(CPart, PointsStandInReverseOrderAtOneTick) {
    struct Case {
        const char* name;
        std::vector<std::pair<int, int>> added;
        Ticks expected;
    };
    const Case cases[] = {
        {"tie in the middle",
         {{0, 1}, {50, 2}, {50, 3}, {90, 4}},
         {{0, 1}, {50, 3}, {50, 2}, {90, 4}}},
        {"tie at the head", {{50, 1}, {50, 2}, {50, 3}}, {{50, 1}, {50, 3}, {50, 2}}},
        {"head at tick 0", {{0, 1}, {0, 2}}, {{0, 1}, {0, 2}}},
        {"new head", {{50, 1}, {20, 2}}, {{20, 2}, {50, 1}}},
        {"before tick 0", {{10, 1}, {-20, 2}}, {{-20, 2}, {10, 1}}},
    };
    for (const Case& c : cases) {
        CMIDIPart part;
        for (const auto& [tick, percent] : c.added)
            part.addEventParam(tick, createEnvEvent(nullptr, float(percent) / 100.0f), 9);
        EXPECT_EQ(pointsOf(&part, 9), c.expected) << c.name;
        EXPECT_TRUE(pointsOf(&part, 8).empty()) << c.name;
    }
}

TEST(CPart, SlotsOutOfRangeAreIgnored) {
    CMIDIPart part;
    for (int slot : hostileSlots) {
        part.addEventParam(0, createEnvEvent(nullptr, 0.5f), slot);
        part.setParam(slot, createEnvEvent(nullptr, 0.5f));
        EXPECT_EQ(part.getParam(slot), nullptr) << slot;
    }
    EXPECT_EQ(part.reservedSlots(), 0);
    part.addEventParam(0, createEnvEvent(nullptr, 0.5f), maxSlots - 1);
    EXPECT_NE(part.getParam(maxSlots - 1), nullptr);
}

TEST(CPart, DeletingLeavesTheRestInPlace) {
    CMIDIPart part;
    Ticks expected;
    for (int i = 0; i < 40; i++) {
        CMIDIEvent* event = note(i);
        auto* point = createEnvEvent(nullptr, float(i) / 100.0f);
        event->flags = point->flags = i % 3 == 0 || i > 36 ? eventSelected : 0;
        part.addEvent(i * 7, event);
        part.addEventParam(i * 7, point, 63);
        if (!event->flags) expected.emplace_back(i * 7, i);
    }
    part.deleteSelected();
    EXPECT_EQ(notesOf(&part), expected);
    EXPECT_EQ(pointsOf(&part, 63), expected);
}

TEST(CPart, CopiesAreDeepAndOfTheSameClass) {
    CMIDIPart midi;
    CDrumPart drum;
    CAudioPart audio;
    midi.addEvent(10, note(60));
    drum.addEvent(10, createDrumEvent());
    audio.addEvent(10, createAudioEvent());
    for (CPart* part : std::initializer_list<CPart*>{&midi, &drum, &audio}) {
        part->offset = -20;
        part->setMuted(true);
        part->addEventParam(30, createEnvEvent(nullptr, 0.25f), 40);
        const std::unique_ptr<CPart> twin(part->copy(0)), bare(part->copy(1));
        EXPECT_EQ(twin->type, part->type);
        EXPECT_EQ(twin->offset, -20);
        EXPECT_TRUE(twin->muted());
        EXPECT_NE(twin->getEvents(), part->getEvents());
        EXPECT_EQ(twin->getEvents()->delta, 10);
        EXPECT_EQ(pointsOf(twin.get(), 40), pointsOf(part, 40));
        EXPECT_NE(bare->getEvents(), nullptr);
        EXPECT_EQ(bare->getParam(40), nullptr);
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
    EXPECT_EQ(master.pos, 0);
    master.getEvents()->flags = eventSelected;
    ghost.deleteSelected();
    EXPECT_EQ(notesOf(&master).size(), 2u);
    const std::unique_ptr<CPart> twin(ghost.copy(0));
    EXPECT_EQ(twin->ghostOf, &master);
    EXPECT_EQ(twin->events, nullptr);
}

/// A pointer for each slot that is reserved and one for the main list, 64 at most.
TEST(CPart, PlayPointersEndWhereTheRoomEnds) {
    for (int slots : {0, 1, 8, 9, 64, 1000}) {
        CMIDIPart part;
        part.reserveSlots(slots);
        int added = 0;
        while (added < 200 && part.addPlay()) added++;
        EXPECT_EQ(added, std::min((slots + 7) / 8 * 8 + 1, 64)) << slots;
        EXPECT_EQ(part.numPlay, added) << slots;
        part.dropPlay();
        EXPECT_EQ(part.numPlay, 0);
    }
}

TEST(Points, HostileValuesAreClamped) {
    CTempoPart tempo;
    for (const auto& [given, kept] : {std::pair{0.0f, 10.0f},
                                      {10.0f, 10.0f},
                                      {250.5f, 250.0f},
                                      {-1e30f, 10.0f},
                                      {1e30f, 250.0f},
                                      {99.5f, 99.5f}}) {
        tempo.setTempo(given);
        EXPECT_EQ(tempo.getTempo(), kept) << given;
    }
    tempo.setTempo(std::nanf(""));
    EXPECT_EQ(tempo.getTempo(), 10.0f);
    CTimesigPart timesig;
    timesig.setTimesig(0, 0);
    EXPECT_EQ(timesig.getNum(), 4);
    EXPECT_EQ(timesig.getDen(), 4);
    timesig.setTimesig(-7, 1 << 20);
    EXPECT_EQ(timesig.getNum(), 1);
    EXPECT_EQ(timesig.getDen(), maxTimesig);
}

#include "sequencer/TempoMap.h"

#include "SongFixture.h"

#include <climits>
#include <cmath>
#include <random>

namespace {

/// A list of tempo points that owns them.
struct Tempos {
    CList list;
    ~Tempos() { deleteAll<CPart>(list); }
    void add(int tick, float bpm) {
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        list.add(point);
    }
};

/// Seconds from tick 0 of a song, by the sum over every point: an independent calculation.
double secondsAt(const std::vector<std::pair<int, double>>& map, double before, double tick) {
    double seconds = 0.0, bpm = before, at = 0.0;
    for (const auto& [point, next] : map) {
        if (point >= tick) break;
        seconds += (point - at) * 60.0 / (960.0 * bpm);
        at = point;
        bpm = next;
    }
    return seconds + (tick - at) * 60.0 / (960.0 * bpm);
}

struct RandomMap {
    Tempos tempos;
    std::vector<std::pair<int, double>> map;
    explicit RandomMap(std::mt19937& random, int points) {
        int tick = 0;
        for (int i = 0; i < points; i++) {
            tick += 1 + int(random() % 4000);
            const float bpm = 10.0f + float(random() % 2400) / 10.0f;
            tempos.add(tick, bpm);
            map.emplace_back(tick, double(bpm));
        }
    }
};

} // namespace

/// From inside the song, the points before it rule too.
TEST(TempoMap, FramesOfTicksFollowEveryPoint) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; round++) {
        RandomMap song(random, 60);
        const int from = round % 2 ? int(random() % 90000) : 0, ticks = int(random() % 90000);
        const int rate = round % 3 ? 44100 : 192000;
        const double seconds =
            secondsAt(song.map, 97.5, from + ticks) - secondsAt(song.map, 97.5, from);
        EXPECT_NEAR(tempoTicksToFrames(song.tempos.list, 97.5f, from, ticks, rate), seconds * rate,
                    1e-3)
            << from << " + " << ticks << " at " << rate;
    }
}

/// A stretch loses less than a tick by cutting, and carries less than a frame, that is a tenth of a
/// tick at most, into the last one.
TEST(TempoMap, RoundTripsLoseATickPerPoint) {
    std::mt19937 random(9);
    for (int round = 0; round < 50; round++) {
        const int points = int(random() % 40);
        RandomMap song(random, points);
        const int ticks = int(random() % 150000);
        const double frames = tempoTicksToFrames(song.tempos.list, 120.0f, 0, ticks, 44100);
        const double back = tempoFramesToTicks(song.tempos.list, 120.0f, 0.0, frames, 44100);
        EXPECT_LE(back, ticks + points * 0.1);
        EXPECT_GE(back, ticks - 2 - points * 1.1);
        EXPECT_EQ(back, std::floor(back));
    }
}

TEST(TempoMap, EdgesOfTheConversions) {
    Tempos none, two;
    two.add(960, 60.0f);
    two.add(960, 240.0f);
    struct Case {
        const char* name;
        double got, expected;
    };
    const Case cases[] = {
        {"no ticks", tempoTicksToFrames(two.list, 120.0f, 500, 0, 44100), 0.0},
        {"no rate", tempoTicksToFrames(two.list, 120.0f, 0, 960, 0), 0.0},
        {"no rate back", tempoFramesToTicks(two.list, 120.0f, 0.0, 960.0, -5), 0.0},
        {"a minute of quarters", tempoTicksToFrames(none.list, 60.0f, 0, 60 * 960, 44100),
         60.0 * 44100},
        {"the later of two points counts", tempoTicksToFrames(two.list, 60.0f, 960, 960, 44100),
         44100.0 / 4},
        {"before the first point the host's tempo",
         tempoTicksToFrames(two.list, 120.0f, 0, 960, 8000), 4000.0},
        {"ten hours in one stretch",
         tempoFramesToTicks(none.list, 120.0f, 0.0, 36000.0 * 96000, 96000), 36000.0 * 1920},
        {"a part of a frame is lost", tempoFramesToTicks(none.list, 250.0f, 0.0, 0.9, 8000), 0.0},
    };
    for (const Case& c : cases) EXPECT_NEAR(c.got, c.expected, 1e-6) << c.name;
}

TEST(TempoMap, Snaps) {
    struct Case {
        int grid, value;
        bool round;
        int expected;
    };
    const Case cases[] = {
        {240, -130, true, -240}, {240, -119, true, 0}, {240, 120, true, 240},
        {240, 119, true, 0},     {240, 239, false, 0}, {240, -239, false, 0},
        {1, 77, true, 77},       {0, 77, true, 77},    {-5, -77, true, -77},
    };
    for (const Case& c : cases)
        EXPECT_EQ(snapped(c.grid, c.value, c.round), c.expected) << c.grid << ' ' << c.value;
    EXPECT_EQ(snapped(1 << 30, INT_MAX, true), INT_MAX);
    EXPECT_EQ(snapped(1 << 30, INT_MIN, true), INT_MIN);
}

TEST(TempoMap, ScreenAndText) {
    EXPECT_EQ(ticksToX(1440.0, 32.0), 48.0);
    EXPECT_EQ(XToTicks(48.0, 32.0), 1440.0);
    EXPECT_EQ(ticksToStr(0), "001:000");
    EXPECT_EQ(ticksToStr(960 * 1233 + 45), "1234:045");
}

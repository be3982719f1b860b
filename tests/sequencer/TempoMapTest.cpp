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
    void addMany(std::mt19937& random, int points) {
        for (int i = 0, tick = 0; i < points; i++)
            add(tick += 1 + int(random() % 4000), 10.0f + float(random() % 2400) / 10.0f);
    }
    /// From tick 0 on, by the sum over every point: an independent calculation.
    double secondsAt(double before, double tick) const {
        double seconds = 0.0, bpm = before, at = 0.0;
        for (const auto* point : each<CTempoPart>(list)) {
            if (point->pos >= tick) break;
            seconds += (point->pos - at) * 60.0 / (960.0 * bpm);
            at = point->pos;
            bpm = double(point->getTempo());
        }
        return seconds + (tick - at) * 60.0 / (960.0 * bpm);
    }
};

} // namespace

/// Frames of ticks follow every point, from inside the song those before it, too. The way back
/// loses less than a tick by cutting at each point, and carries less than a frame, that is a tenth
/// of a tick at most, into the last stretch.
TEST(TempoMap, ConversionsFollowEveryPoint) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; round++) {
        const int points = int(random() % 60), ticks = int(random() % 90000);
        const int from = round % 2 ? int(random() % 90000) : 0, rate = round % 3 ? 44100 : 192000;
        Tempos song;
        song.addMany(random, points);
        const double seconds = song.secondsAt(97.5, from + ticks) - song.secondsAt(97.5, from);
        const double frames = tempoTicksToFrames(song.list, 97.5f, from, ticks, rate);
        EXPECT_NEAR(frames, seconds * rate, 1e-3) << from << " + " << ticks << " at " << rate;
        if (from > 0) continue;
        const double back = tempoFramesToTicks(song.list, 97.5f, 0.0, frames, rate);
        EXPECT_LE(back, ticks + points * 0.1);
        EXPECT_GE(back, ticks - 2 - points * 1.1);
        EXPECT_EQ(back, std::floor(back));
    }
}

TEST(TempoMap, EdgesOfTheConversions) {
    Tempos none, two;
    two.add(960, 60.0f);
    two.add(960, 240.0f);
    EXPECT_EQ(tempoTicksToFrames(two.list, 120.0f, 0, 960, 0), 0.0) << "no rate";
    EXPECT_EQ(tempoFramesToTicks(two.list, 120.0f, 0.0, 960.0, -5), 0.0) << "no rate";
    EXPECT_EQ(tempoTicksToFrames(two.list, 60.0f, 960, 960, 44100), 11025.0) << "the later rules";
    EXPECT_EQ(tempoTicksToFrames(two.list, 120.0f, 0, 960, 8000), 4000.0) << "none rules yet";
    EXPECT_EQ(tempoFramesToTicks(none.list, 250.0f, 0.0, 0.9, 8000), 0.0) << "part of a frame";
    EXPECT_EQ(tempoFramesToTicks(none.list, 120.0f, 0.0, 36000.0 * 96000, 96000), 36000.0 * 1920)
        << "ten hours in one stretch";
}

#include "sequencer/song/TempoMap.h"

#include "SongFixture.h"

#include <climits>
#include <cmath>
#include <random>

namespace {

/// A list of tempo points that owns them.
struct Tempos {
    ListOf<CTempoPart> list;
    ~Tempos() { deleteAll<CPart>(list); }
    void add(int tick, float bpm, bool ramp = false) {
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        point->ramp = ramp;
        list.add(point);
    }
    /// Lines where `ramps` has the bit of the point's number, again after 8.
    void addMany(std::mt19937& random, int points, unsigned ramps) {
        for (int i = 0, tick = 0; i < points; i++)
            add(tick += 1 + int(random() % 4000), 10.0f + float(random() % 2400) / 10.0f,
                ramps >> i % 8 & 1);
    }
    const TempoMap& map() {
        made.refresh(list, 0);
        return made;
    }
    /// From tick 0 on, by the sum over every point, and over a line by Simpson's rule: an
    /// independent calculation.
    double secondsAt(double before, double tick) const {
        double seconds = 0.0, bpm = before, at = 0.0;
        const CTempoPart* last = nullptr;
        const auto span = [&](double to, double whole, double target) {
            const double end = whole > 0 ? bpm + (target - bpm) * (to - at) / whole : bpm;
            constexpr int parts = 2000;
            double sum = 0.0;
            for (int i = 0; i <= parts; i++)
                sum += (i == 0 || i == parts ? 1 : i % 2 ? 4 : 2) / (bpm + (end - bpm) * i / parts);
            seconds += sum / (3 * parts) * (to - at) * 60.0 / 960.0;
        };
        for (const auto* point : each<CTempoPart>(list)) {
            const bool line = last && last->ramp;
            const double target = line ? double(point->getTempo()) : bpm;
            if (point->pos >= tick) return span(tick, point->pos - at, target), seconds;
            span(point->pos, point->pos - at, target);
            at = point->pos;
            bpm = double(point->getTempo());
            last = point;
        }
        return span(tick, 0, bpm), seconds;
    }

private:
    TempoMap made;
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
        const unsigned ramps = round % 4 ? 0 : 0b10110010;
        song.addMany(random, points, ramps);
        const double seconds = song.secondsAt(97.5, from + ticks) - song.secondsAt(97.5, from);
        const double frames = song.map().ticksToFrames(97.5f, from, ticks, rate);
        EXPECT_NEAR(frames, seconds * rate, 1e-3) << from << " + " << ticks << " at " << rate;
        if (from > 0) continue;
        const double back = song.map().framesToTicks(97.5f, 0.0, frames, rate);
        EXPECT_LE(back, ticks + points * 0.1);
        EXPECT_GE(back, ticks - 2 - points * 1.1);
        EXPECT_EQ(back, std::floor(back));
    }
}

TEST(TempoMap, EdgesOfTheConversions) {
    Tempos none, two;
    two.add(960, 60.0f);
    two.add(960, 240.0f);
    EXPECT_EQ(two.map().ticksToFrames(120.0f, 0, 960, 0), 0.0) << "no rate";
    EXPECT_EQ(two.map().framesToTicks(120.0f, 0.0, 960.0, -5), 0.0) << "no rate";
    EXPECT_EQ(two.map().ticksToFrames(60.0f, 960, 960, 44100), 11025.0) << "the later rules";
    EXPECT_EQ(two.map().ticksToFrames(120.0f, 0, 960, 8000), 4000.0) << "none rules yet";
    EXPECT_EQ(none.map().framesToTicks(250.0f, 0.0, 0.9, 8000), 0.0) << "part of a frame";
    EXPECT_EQ(none.map().framesToTicks(120.0f, 0.0, 36000.0 * 96000, 96000), 36000.0 * 1920)
        << "ten hours in one stretch";
}

#include "sequencer/song/Bars.h"

#include "SongFixture.h"

/// A signature counts from its point on, where a bar begins, also within one of the signature
/// before; of two at one tick the later.
TEST(Bars, FollowTheSignatures) {
    SongFixture f;
    f.seq->options.bytes[SongOptions::timeSigNum] = 3;
    struct Point {
        int tick, num, den;
    };
    for (const Point& p : {Point{2 * 2880, 4, 4}, {2 * 2880, 5, 8}, {2 * 2880 + 2400 + 10, 1, 1}}) {
        auto* point = new CTimesigPart;
        point->pos = p.tick;
        point->setTimesig(p.num, p.den);
        f.prog()->timesigs.add(point);
    }
    struct Case {
        int tick, bar, beat, ticks;
    };
    const Case cases[] = {
        {0, 1, 1, 0},           {2879, 1, 3, 959},       {2880, 2, 1, 0},
        {5760, 3, 1, 0},        {5760 + 479, 3, 1, 479}, {5760 + 480, 3, 2, 0},
        {5760 + 2400, 4, 1, 0}, {5760 + 2410, 5, 1, 0},  {5760 + 2410 + 3841, 6, 1, 1}};
    for (const Case& c : cases) {
        const BarPlace at = barPlace(f.seq, c.tick);
        EXPECT_EQ(at.bar, c.bar) << c.tick;
        EXPECT_EQ(at.beat, c.beat) << c.tick;
        EXPECT_EQ(at.ticks, c.ticks) << c.tick;
    }
    std::string starts;
    eachBar(f.seq, 8171, [&](int tick, int number) {
        starts += std::to_string(number) + "=" + std::to_string(tick) + " ";
    });
    EXPECT_EQ(starts, "1=0 2=2880 3=5760 4=8160 5=8170 ");
}

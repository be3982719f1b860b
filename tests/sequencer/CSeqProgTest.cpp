#include "SongFixture.h"

namespace {

template <class T>
T* at(int pos, int length = quarterTicks) {
    auto* point = new T;
    point->pos = pos;
    point->length = length;
    return point;
}

CTimesigPart* timesig(int pos, int num, int den) {
    auto* point = at<CTimesigPart>(pos);
    point->setTimesig(num, den);
    return point;
}

struct ProgFixture : SongFixture, testing::Test {};
using CSeqProgTest = ProgFixture;

} // namespace

TEST_F(CSeqProgTest, PointsEnterInOrderOfPosition) {
    for (int pos : {960, 0, 480, 960, 480}) {
        CTimesigPart* sig = timesig(pos, 3, 4);
        prog()->addTimesig(sig, nullptr);
        for (auto* other : each<CTimesigPart>(prog()->timesigs)) {
            if (other == sig) break;
            EXPECT_LT(other->pos, pos) << "a new signature goes first";
        }
        auto* tempo = at<CTempoPart>(pos);
        prog()->addTempo(tempo, nullptr);
        for (void* o = prog()->tempos.next(tempo); o; o = prog()->tempos.next(o))
            EXPECT_GT(static_cast<CTempoPart*>(o)->pos, pos) << "a new tempo goes last";
    }
    EXPECT_EQ(prog()->timesigs.getCount(), 5);
}

TEST_F(CSeqProgTest, OneStepAddsPointsAsManyWould) {
    const int ticks[] = {960, 0, 960, 480, 960};
    step([&](CUndo* u) {
        float bpm = 100.0f;
        for (int tick : ticks) {
            auto* tempo = at<CTempoPart>(tick);
            tempo->setTempo(bpm++);
            prog()->addTempo(tempo, u);
        }
    });
    std::vector<float> order;
    for (auto* tempo : each<CTempoPart>(prog()->tempos)) order.push_back(tempo->getTempo());
    EXPECT_EQ(order, (std::vector<float>{101, 103, 100, 102, 104}));
}

TEST_F(CSeqProgTest, GridsBeginAnewAtASignature) {
    prog()->addTimesig(timesig(1000, 3, 8), nullptr);
    prog()->addTimesig(timesig(5000, 2, 960), nullptr);
    struct Case {
        int tick, grid, snapped, beat;
    };
    // The beat is 960 / den * 4: 960 before the first point, 480 behind it, then 4.
    const Case cases[] = {{0, 960, 0, 0},          {999, 960, 960, 960},    {1000, 960, 1000, 1000},
                          {1479, 960, 1000, 1480}, {1480, 960, 1960, 1480}, {1239, 960, 1000, 1000},
                          {5003, 7, 5000, 5004},   {-600, 960, -960, -960}};
    for (const Case& c : cases) {
        EXPECT_EQ(prog()->snapTo(c.tick, c.grid), c.snapped) << c.tick;
        EXPECT_EQ(prog()->snapToBeat(c.tick, 4, 4), c.beat) << c.tick;
    }
    EXPECT_EQ(prog()->snapToBeat(77, 4, 0), 77) << "a beat of nothing";
    EXPECT_EQ(prog()->snapToBeat(77, 4, 5000), 77) << "a beat below a tick";
}

TEST_F(CSeqProgTest, TheFirstMarkerChosenJumpsAndTheNextWaits) {
    CMarkerPart* first = at<CMarkerPart>(960, 1920);
    CMarkerPart* second = at<CMarkerPart>(4800, 960);
    prog()->addMarker(first, nullptr);
    prog()->addMarker(second, nullptr);
    prog()->priorMarker();
    EXPECT_EQ(prog()->activeMarker, first);
    EXPECT_EQ(prog()->playingMarker, first);
    EXPECT_EQ(prog()->leftLocator, 960);
    EXPECT_EQ(prog()->rightLocator, 2880);
    EXPECT_EQ(prog()->pos, 960.0);

    prog()->playing = 1;
    prog()->nextMarker();
    EXPECT_EQ(prog()->activeMarker, second);
    EXPECT_EQ(prog()->playingMarker, first);
    EXPECT_EQ(prog()->leftLocator, 960);
    prog()->nextMarker();
    EXPECT_EQ(prog()->activeMarker, second) << "stops at the end";
    prog()->playing = 0;
}

TEST_F(CSeqProgTest, WhiteKeysChooseMarkers) {
    for (int i = 0; i < 9; i++) prog()->addMarker(at<CMarkerPart>(i * 960), nullptr);
    const std::pair<int, int> keys[] = {{36, 0},  {37, -1}, {38, 1},  {40, 2},  {41, 3},
                                        {42, -1}, {43, 4},  {45, 5},  {47, 6},  {48, 7},
                                        {50, 8},  {52, -1}, {35, -1}, {-4, -1}, {1 << 30, -1}};
    for (const auto& [key, index] : keys)
        EXPECT_EQ(prog()->noteToMarker(key), prog()->markers.items(index)) << key;
}

TEST_F(CSeqProgTest, AMarkerThatLeavesIsForgotten) {
    CMarkerPart* marker = at<CMarkerPart>(0);
    CMarkerPart* other = at<CMarkerPart>(960);
    prog()->addMarker(marker, nullptr);
    prog()->addMarker(other, nullptr);
    prog()->setMarker(marker);
    for (CMarkerPart* visited : {marker, other, marker}) prog()->session.add(visited);
    step([&](CUndo* u) { u->asRemove(marker, &prog()->markers); });
    EXPECT_EQ(prog()->activeMarker, nullptr);
    EXPECT_EQ(prog()->playingMarker, nullptr);
    ASSERT_EQ(prog()->session.count(), 1);
    EXPECT_EQ(prog()->session.at(0), other);
}

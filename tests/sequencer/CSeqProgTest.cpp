#include "SongFixture.h"
#include "support/Rows.h"

namespace {

struct ProgFixture : SongFixture, testing::Test {
    CMarkerPart* marker(int pos, int length = quarterTicks) {
        auto* made = new CMarkerPart;
        made->pos = pos;
        made->length = length;
        prog()->addMarker(made, nullptr);
        return made;
    }
    void timesig(int pos, int num, int den, CUndo* undo = nullptr) {
        auto* made = new CTimesigPart;
        made->pos = pos;
        made->setTimesig(num, den);
        prog()->addTimesig(made, undo);
    }
};
using CSeqProgTest = ProgFixture;

} // namespace

/// Of two at one tick a new signature goes first, and a new tempo last; one by one, or in one step.
TEST_F(CSeqProgTest, PointsEnterInOrderOfPosition) {
    const auto addAll = [this](CUndo* undo) {
        int number = 10;
        for (int pos : {960, 0, 960, 480, 960}) {
            timesig(pos, number, 4, undo);
            auto* tempo = new CTempoPart;
            tempo->pos = pos;
            tempo->setTempo(float(number++));
            prog()->addTempo(tempo, undo);
        }
    };
    for (bool inOneStep : {false, true}) {
        deleteAll<CPart>(prog()->timesigs);
        deleteAll<CPart>(prog()->tempos);
        inOneStep ? step(addAll) : addAll(nullptr);
        std::vector<int> sigs, tempos;
        for (auto* sig : prog()->timesigs) sigs.push_back(sig->getNum());
        for (auto* tempo : prog()->tempos) tempos.push_back(int(tempo->getTempo()));
        EXPECT_EQ(sigs, (std::vector<int>{11, 13, 14, 12, 10})) << inOneStep;
        EXPECT_EQ(tempos, (std::vector<int>{11, 13, 10, 12, 14})) << inOneStep;
    }
}

TEST_F(CSeqProgTest, GridsBeginAnewAtASignature) {
    timesig(1000, 3, 8);
    timesig(5000, 2, 960);
    // The beat is 960 / den * 4: 960 before the first point, 480 behind it, then 4.
    for (const auto& [tick, grid, snapped, beat] :
         Rows<int, int, int, int>{{999, 960, 960, 960},
                                  {1000, 960, 1000, 1000},
                                  {1479, 960, 1000, 1480},
                                  {1480, 960, 1960, 1480},
                                  {5003, 7, 5000, 5004},
                                  {-600, 960, -960, -960}}) {
        EXPECT_EQ(prog()->snapTo(tick, grid), snapped) << tick;
        EXPECT_EQ(prog()->snapToBeat(tick, 4, 4), beat) << tick;
    }
    for (int den : {0, 5000}) EXPECT_EQ(prog()->snapToBeat(77, 4, den), 77) << "no whole tick";
}

TEST_F(CSeqProgTest, WhiteKeysChooseMarkers) {
    for (int i = 0; i < 9; i++) marker(i * 960);
    const std::pair<int, int> keys[] = {{36, 0}, {37, -1}, {41, 3},  {47, 6},  {48, 7},
                                        {50, 8}, {52, -1}, {35, -1}, {-4, -1}, {1 << 30, -1}};
    for (const auto& [key, index] : keys)
        EXPECT_EQ(prog()->noteToMarker(key), prog()->markers.items(index)) << key;
}

TEST_F(CSeqProgTest, AMarkerThatLeavesIsForgotten) {
    CMarkerPart *leaves = marker(0), *stays = marker(960);
    prog()->setMarker(leaves);
    for (CMarkerPart* visited : {leaves, stays, leaves}) prog()->session.add(visited);
    step([&](CUndo* u) { u->asRemove(leaves, &prog()->markers); });
    EXPECT_EQ(prog()->activeMarker, nullptr);
    EXPECT_EQ(prog()->playingMarker, nullptr);
    ASSERT_EQ(prog()->session.count(), 1);
    EXPECT_EQ(prog()->session.at(0), stays);
}

#include "SongFixture.h"

#include <climits>

namespace {

struct TrackFixture : SongFixture, testing::Test {
    CTrack* midi = track(trackMIDI)->track;
};
using CTrackTest = TrackFixture;

} // namespace

/// The distance from 127 shrinks to `inSens` percent.
TEST_F(CTrackTest, SensitivityScalesTheDistanceFromFullStrength) {
    for (int percent : {0, 1, 50, 99, 100}) {
        midi->inSens = percent;
        for (int v = 1; v <= 127; v++) {
            const int got = asByte2(midi->setVel(asData(midiNoteOn, 60, v)));
            const double exact = 127 - (127 - v) * percent / 100.0;
            EXPECT_TRUE(got <= exact + 1e-9 && got >= exact - 1) << percent << " % of " << v;
        }
    }
    for (int percent : {-5000, 5000, INT_MIN, INT_MAX}) {
        midi->inSens = percent;
        const int v = midi->setVel(asData(midiNoteOn, 60, 64)) >> 16;
        EXPECT_TRUE(v >= 1 && v <= 127) << percent;
    }
    for (int msg : {0x3C90, 0x403C80, 0x4007B0}) EXPECT_EQ(midi->setVel(msg), msg);
}

TEST_F(CTrackTest, LanesTakeTheLowestFreeSlotAndEndAt64) {
    CSongTrack* songTrack = prog()->songTrackOf(midi);
    CPart* part = songTrack->addPart(midiPart(0), nullptr);
    const auto newLane = [&] {
        return midi->addLane(new CSubTrack("lane", laneAutomation), nullptr);
    };
    for (int slot = 0; slot < maxSlots; slot++) {
        ASSERT_EQ(newLane()->slot, slot);
        EXPECT_GT(part->reservedSlots(), slot) << "room in the part";
    }
    EXPECT_EQ(newLane(), nullptr);
    auto* third = midi->subTracks.items(3); // the first is no automation
    midi->subTracks.remove(third);
    delete third;
    EXPECT_EQ(newLane()->slot, 2);
    EXPECT_EQ(songTrack->addPart(midiPart(3840), nullptr)->reservedSlots(), maxSlots);
}

TEST_F(CTrackTest, PreviewNotesEndByThemselvesOrTogether) {
    using Events = std::vector<std::pair<double, int>>;
    CMIDIQ queue(nullptr);
    CTrakPreview preview;
    const auto block = [&](double ticks) {
        queue.clear();
        preview.process(&queue, ticks, 2.0);
        Events list;
        for (CMIDIBytes* e = queue.first(); e; e = e->next) list.emplace_back(e->time, e->data);
        return list;
    };
    preview.assignCh(3);
    for (int hostile : {-1, 128}) {
        preview.addNote(hostile, 100);
        preview.addNote(60, hostile);
    }
    preview.addNote(60, 100);
    EXPECT_EQ(block(950.0), (Events{{0.0, 0x643C93}}));
    EXPECT_EQ(block(20.0), (Events{{20.0, 0x3C93}})) << "after 960 ticks of two frames";
    for (int i = 0; i < 20; i++) preview.addNote(i, 1);
    EXPECT_EQ(block(1.0).size(), 16u) << "that many sound";
    preview.mute();
    EXPECT_EQ(block(1.0).size(), 16u) << "and all end";
    EXPECT_EQ(block(1000.0), (Events{}));
}

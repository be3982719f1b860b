#include "sequencer/edit/RangeEdits.h"
#include "EditsFixture.h"
#include "sequencer/play/AudioVoices.h"

#include <functional>

namespace {

/// Of the tracks of those rows.
TimeRange rangeOf(CSeq* seq, int from, int to, std::vector<int> rows = {0}, bool markers = false) {
    TimeRange range{from, to, {}, markers};
    for (const int row : rows) range.tracks.push_back(seq->getProg()->tracks.items(row));
    return range;
}

/// `edit` of a range of the instrument track.
template <class F>
std::function<void(CSeq*)> on(int from, int to, F edit) {
    return [=](CSeq* seq) { EXPECT_EQ(edit(seq, rangeOf(seq, from, to)), ""); };
}

void none(Edits&) {
}

/// A clip of two seconds from 960 to 4800.
void audioPart(Edits& e) {
    deleteAll<CPart>(e.prog()->tempos);
    e.addAudio(960, {{0, clip(e.sample)}});
}

std::function<void(CSeq*)> onAudio(CStr (*edit)(CSeq*, const TimeRange&)) {
    return [edit](CSeq* seq) { EXPECT_EQ(edit(seq, rangeOf(seq, 1920, 2880, {1})), ""); };
}

const std::string left = "| 0:960 0=60/240 ~0 ", middle = "950=62/960 ~960 ", right = "| 4800:960 ";

const EditCase cases[] = {
    {"split", none, on(960, 4800, splitRange), "Split",
     left + "| 960:2880 " + middle + "| 3840:960 100=64/240 " + right + ghost(7680)},
    {"move", none,
     on(960, 4800, [](CSeq* seq, const TimeRange& r) { return moveRange(seq, r, 10000, 0); }),
     "Move", left + right + ghost(7680) + "| 10960:2880 " + middle + "| 13840:960 100=64/240 "},
    {"move whole parts", none,
     on(3840, 9600, [](CSeq* seq, const TimeRange& r) { return moveRange(seq, r, 480, 0); }),
     "Move", noteA + ghost(4320) + ghost(8160), "", 2},
    {"not before the song", none,
     on(3840, 5760, [](CSeq* seq, const TimeRange& r) { return moveRange(seq, r, -9999, 0); }),
     "Move", noteA + ghost(0) + ghost(7680)},
    {"move to another track", [](Edits& e) { e.track(trackMIDI); },
     on(960, 4800, [](CSeq* seq, const TimeRange& r) { return moveRange(seq, r, 0, 3); }), "Move",
     left + right + ghost(7680)},
    {"copy", none,
     on(960, 5760, [](CSeq* seq, const TimeRange& r) { return copyRange(seq, r, 9600, 0); }),
     "Copy", noteA + ghost(3840) + ghost(7680) + "| 10560:2880 " + middle + ghost(13440)},
    {"duplicate", none, on(960, 1920, duplicateRange), "Duplicate",
     noteA + "| 1920:960 " + middle + ghost(3840) + ghost(7680)},
    {"delete", none, on(960, 4800, deleteRange), "Delete", left + right + ghost(7680)},
    {"mute", none, on(3840, 4800, muteRange), "Mute part",
     noteA + "| 3840:960 mute 100=64/240 " + right + ghost(7680)},
    {"hear again", [](Edits& e) { e.part(e.midi, 0)->setMuted(true); }, on(0, 3840, muteRange),
     "Mute part", noteA + ghost(3840) + ghost(7680), "", 1},
    {"stretch", none,
     on(1920, 9600, [](CSeq* seq, const TimeRange& r) { return stretchRange(seq, r, 3840); }),
     "Stretch", halfA + "| 1920:960 ~0 | 2880:960 50=64/120 | 4800:960 50=64/120 "},
    {"with its marker", none,
     [](CSeq* seq) { moveRange(seq, rangeOf(seq, 0, 3840, {0}, true), 480, 0); }, "Move",
     "| 480:3840 0=60/240 1910=62/960 ~0 ~1920 " + ghost(3840) + ghost(7680),
     "960@100 2880@140 4800@90 M480:3840"},
    {"copy a marker", none,
     [](CSeq* seq) { copyRange(seq, rangeOf(seq, 0, 960, {}, true), 3840, 0); }, "Copy",
     noteA + ghost(3840) + ghost(7680), "960@100 2880@140 4800@90 M0:3840M3840:3840"},
    {"delete from a clip", audioPart, onAudio(deleteRange), "Delete",
     "| 960:960 0=0-23999 | 2880:1920 0=48000-95999 ", "", 3, &Edits::audio},
    {"duplicate of a clip", audioPart, onAudio(duplicateRange), "Duplicate",
     "| 960:3840 0=0-95999 | 2880:960 0=24000-47999 ", "", 1, &Edits::audio},
    {"stretch a clip", audioPart,
     [](CSeq* seq) { stretchRange(seq, rangeOf(seq, 1920, 2880, {1}), 480); }, "Stretch",
     "| 960:960 0=0-23999 | 1920:480 0=24000-47999 | 2880:1920 0=48000-95999 ", "", 4,
     &Edits::audio},
};

} // namespace

TEST(RangeEdits, AreStepsOfTheHistory) {
    for (const EditCase& c : cases) checkEdit(c);
}

/// What can't be done for all of it changes nothing, and what was in the range is selected.
TEST(RangeEdits, AreDoneWholeOrNotAtAll) {
    Edits e;
    audioPart(e);
    e.track(trackMIDI);
    e.select(e.midi, "c");
    const std::string start = e.bytes();
    const TimeRange both = rangeOf(e.seq, 1000, 2000, {0, 1});
    EXPECT_EQ(moveRange(e.seq, both, 0, 3), "There are no such tracks");
    EXPECT_EQ(copyRange(e.seq, both, 0, 1), "A track does not take these parts");
    EXPECT_EQ(moveRange(e.seq, both, 1 << 30, 0), "The song would become too long");
    EXPECT_EQ(stretchRange(e.seq, both, 1 << 30), "The song would become too long");
    EXPECT_EQ(deleteRange(e.seq, rangeOf(e.seq, 2000, 2000)), "");
    EXPECT_EQ(deleteRange(e.seq, rangeOf(e.seq, 20000, 30000)), "");
    EXPECT_TRUE(e.host.undoList.empty() && e.bytes() == start);
    EXPECT_TRUE(e.part(e.midi, 2)->selected());
    EXPECT_EQ(splitRange(e.seq, both), "");
    e.host.settle();
    for (CSongTrack* t : {e.midi, e.audio})
        for (auto* part : t->parts) EXPECT_EQ(part->selected(), part->pos == 1000);
}

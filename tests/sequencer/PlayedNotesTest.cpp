#include "sequencer/play/PlayedNotes.h"
#include "TakeFixture.h"

namespace {

const int on = asData(midiNoteOn, 60, 100);

} // namespace

/// Older messages make room, and a minute is told by the frames.
TEST(PlayedNotes, KeepTheLatest) {
    PlayedNotes notes;
    EXPECT_TRUE(notes.since(0).empty());
    EXPECT_FALSE(notes.anySince(0));
    constexpr int more = 1000, all = int(PlayedNotes::capacity) + more;
    for (int i = 0; i < all; i++) notes.note({i, i * 2.0, -1.0, 0, on});
    const auto kept = notes.since(0);
    // The slot that comes next may be half written.
    ASSERT_EQ(kept.size(), PlayedNotes::capacity - 1);
    EXPECT_EQ(kept.front().frame, more + 1);
    EXPECT_EQ(kept.back().tick, (all - 1) * 2.0);
    EXPECT_EQ(notes.since(all - 3).size(), 3u);
    EXPECT_TRUE(notes.anySince(all - 1));
    EXPECT_FALSE(notes.anySince(all));
}

/// The part that is made of what was played: its place, and its notes with their lengths. It is
/// played from a position on, along with the song or not, and once more after a stop, to what is
/// heard.
TEST(PlayedNotes, BecomeAPart) {
    struct Case {
        int from;
        bool along, loop;
        const char *played, *after, *part;
    };
    const Case cases[] = {
        Case{1000, false, false, "10+60 14-60 40+62", "", "960-3840 40:60+40 340:62+2600"},
        {0, true, false, "100+60 120-60 295+62", "", "960-2880 40:60+200 1990:62+50"},
        {0, true, true, "100+60 120-60 295+62", "", "960-2880 40:60+200 1990:62+50"},
        {0, true, false, "100+60 120-60 295+62", "5-62 6+60",
         "960-4800 40:60+200 1990:62+100 3840:60+40"},
        {0, true, true, "190+60 196-60", "", "960-1920 940:60+60"}};
    const auto keep = [](const Case& c, int late) {
        SCOPED_TRACE(c.part + std::string(" late by ") + std::to_string(late));
        TakeFixture f;
        f.device.connect(f.device.add(new Late(&f.host, late * f.block)));
        CSongTrack* t = f.ready(trackMIDI);
        EXPECT_FALSE(canKeepPlayed(f.seq));
        if (c.loop) f.loop(0, 1920);
        f.host.setPos(c.from);
        if (c.along) f.host.start();
        f.play(300 + late, script(c.played, late));
        if (*c.after) f.host.stop(), f.host.setPos(4800.0);
        f.play(*c.after ? 10 : 0, script(c.after));
        f.host.undoClear();
        ASSERT_TRUE(canKeepPlayed(f.seq));
        keepPlayed(f.seq);
        f.host.settle();
        ASSERT_EQ(t->parts.getCount(), 1);
        EXPECT_EQ(text(f.partOf(t)), c.part);
        EXPECT_EQ(f.host.undoText(), CStr("Keep what I played"));
        f.undo();
        EXPECT_EQ(t->parts.getCount(), 0);
        t->track->locked = 1;
        EXPECT_FALSE(canKeepPlayed(f.seq));
    };
    for (const Case& c : cases)
        for (const int late : {0, 3}) keep(c, late);
}

/// Drums by their keys; what is older than a minute is not offered.
TEST(PlayedNotes, OfDrumsAndOfTheLastMinute) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackDrum);
    f.seq->addStandardKit(t->track);
    f.play(10, {{3, asData(midiNoteOn, firstDrumKey + 2, 127)}, {5, on}});
    ASSERT_TRUE(canKeepPlayed(f.seq));
    keepPlayed(f.seq);
    f.host.settle();
    const auto* hit = static_cast<CDrumEvent*>(f.partOf(t)->getEvents());
    EXPECT_EQ(hit->sound, 2);
    EXPECT_EQ(hit->velocity, 1.0f);
    EXPECT_EQ(hit->next, nullptr);
    f.play(keptSeconds * f.rate / f.block);
    EXPECT_FALSE(canKeepPlayed(f.seq));
}

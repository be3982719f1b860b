#include "sequencer/PlayedNotes.h"
#include "TakeFixture.h"
#include "sequencer/PartEdits.h"

#include <array>

namespace {

const int on = asData(midiNoteOn, 60, 100), off = asData(midiNoteOff, 60, 0);

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

/// The part that is made of what was played: its place, and its notes with their lengths.
TEST(PlayedNotes, BecomeAPart) {
    struct Case {
        const char* name;
        std::function<void(TakeFixture&)> play;
        int pos, length;
        std::vector<std::array<int, 3>> notes; ///< tick, key, length
    };
    const auto along = [](TakeFixture& f) {
        f.host.start();
        f.play(300, {{100, on}, {120, off}, {295, asData(midiNoteOn, 62, 90)}});
    };
    const Case cases[] = {
        {"while the song stands: from the position on, the held one until now",
         [](TakeFixture& f) {
             f.host.setPos(1000.0);
             f.play(50, {{10, on}, {14, off}, {40, asData(midiNoteOn, 62, 90)}});
         },
         960,
         960,
         {{40, 60, 40}, {340, 62, 100}}},
        {"along with the song", along, 960, 2880, {{40, 60, 200}, {1990, 62, 50}}},
        {"over the end of a loop",
         [&along](TakeFixture& f) {
             f.loop(0, 1920);
             along(f);
         },
         960,
         2880,
         {{40, 60, 200}, {1990, 62, 50}}},
        {"then on, standing",
         [&along](TakeFixture& f) {
             along(f);
             f.host.stop();
             f.host.setPos(4800.0);
             f.play(10, {{5, asData(midiNoteOff, 62, 0)}, {6, on}});
         },
         960,
         4800,
         {{40, 60, 200}, {1990, 62, 100}, {3840, 60, 40}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TakeFixture f;
        CSongTrack* t = f.ready(trackMIDI);
        EXPECT_FALSE(canKeepPlayed(f.seq));
        c.play(f);
        f.host.undoClear();
        ASSERT_TRUE(canKeepPlayed(f.seq));
        keepPlayed(f.seq);
        f.host.settle();
        ASSERT_EQ(t->parts.getCount(), 1);
        CPart* part = f.partOf(t);
        EXPECT_EQ(part->pos, c.pos);
        EXPECT_EQ(part->length, c.length);
        std::vector<std::array<int, 3>> notes;
        eachEvent(part->events, [&notes](const CBaseEvent* e, int tick) {
            const auto* note = static_cast<const CMIDIEvent*>(e);
            notes.push_back({tick, asByte1(note->data), note->length});
        });
        EXPECT_EQ(notes, c.notes);
        EXPECT_EQ(f.host.undoText(), CStr("Keep what I played"));
        f.undo();
        EXPECT_EQ(t->parts.getCount(), 0);
        t->track->locked = 1;
        EXPECT_FALSE(canKeepPlayed(f.seq));
    }
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

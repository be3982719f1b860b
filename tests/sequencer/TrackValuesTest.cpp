#include "sequencer/song/TrackValues.h"
#include "SongFileFixture.h"
#include "TakeFixture.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/SongValues.h"

#include <filesystem>

namespace {

using Numbers = StoredValue::Numbers;

struct Case {
    const char* step;
    StoredValue (*of)(CTrack* track);
    Numbers to, kept;
};

const Case cases[] = {
    {"Track colour", colourOf, {0x123456}, {0x123456}},
    {"Track colour", colourOf, {-7}, {-1}},
    {"Lock", lockedOf, {1}, {1}},
    {"Arm", armOf, {1}, {1}},
    {"Live", liveOf, {1}, {1}},
    {"Monitor", monitorOf, {1}, {1}},
    {"MIDI channel", channelOf, {99}, {15}},
    {"Sensitivity", sensitivityOf, {40}, {40}},
    {"Recorded channels", recChannelsOf, {0}, {1}},
    {"Swing", swingOf, {1, 0.5, 4, 480}, {1, 0.5, 4, 480}},
    {"Swing", [](CTrack* t) { return swingStepOf(t, 1); }, {-3}, {-1}},
    {"Punch", [](CTrack* t) { return punchOf(t->seq); }, {1}, {1}},
    {"Pre-roll", [](CTrack* t) { return preRollOf(t->seq); }, {99}, {16}},
    {"Scale", [](CTrack* t) { return scaleOf(t->seq); }, {14, 2}, {11, 2}},
};

} // namespace

/// Each is one step, kept in its range and in the file.
TEST(TrackValues, AreStepsAndComeBackFromTheFile) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.step);
        SongFileFixture song;
        CTrack* track = song.track(trackMIDI)->track;
        track->colour = 5;
        song.host.undoClear();
        const std::string start = song.write();
        const Numbers before = c.of(track).get();
        song.host.values->set(c.of(track), c.to);
        const bool changes = c.kept != before;
        EXPECT_EQ(song.host.undoList.getCount(), changes);
        EXPECT_EQ(song.host.undoText(), CStr(changes ? c.step : ""));
        EXPECT_EQ(c.of(track).get(), c.kept);
        const std::string edited = song.write();
        song.undo();
        EXPECT_EQ(song.write(), start);
        song.read(edited);
        EXPECT_EQ(c.of(song.seq->tracks.getFirst()).get(), c.kept);
        EXPECT_EQ(song.write(), edited);
    }
}

/// The height of a row is in the file only where it is not the usual one.
TEST(TrackValues, RowsKeepTheirHeight) {
    SongFileFixture song;
    CTrack* track = song.track(trackAudio)->track;
    const std::string usual = song.write();
    for (const auto& [to, kept] : {std::pair{10, 28}, {120, 120}, {999, 200}, {0, 44}}) {
        track->setRowHeight(to);
        const std::string bytes = song.write();
        EXPECT_EQ(bytes == usual, to == 0);
        song.read(bytes);
        track = song.seq->tracks.getFirst();
        EXPECT_EQ(track->getRowHeight(), kept);
        EXPECT_EQ(song.write(), bytes);
    }
}

TEST(TrackValues, RenamingIsAStep) {
    SongFixture song;
    CTrack* track = song.track(trackDrum)->track;
    song.host.undoClear();
    renameObject(song.seq, track, "Snares");
    renameObject(song.seq, track, "Snares");
    song.host.settle();
    EXPECT_EQ(track->id, CStr("Snares"));
    EXPECT_EQ(song.host.undoList.getCount(), 1);
    song.undo();
    EXPECT_EQ(track->id, CStr("drum-1"));
    song.redo();
    EXPECT_EQ(track->id, CStr("Snares"));
}

/// Takes go where the switches tell; without one on, to the selected tracks; never to locked ones.
TEST(TrackValues, TakesGoToArmedTracks) {
    struct Way {
        bool arm, lock;
        int first, second; ///< parts there afterwards
    };
    for (const Way& way : {Way{false, false, 1, 0}, {true, false, 0, 1}, {true, true, 0, 0}}) {
        TakeFixture f;
        CSongTrack *selected = f.ready(trackMIDI), *other = f.track(trackMIDI);
        if (way.arm) other->track->recArm = 1;
        if (way.lock) other->track->locked = 1;
        f.begin(0);
        f.play(40, {{5, asData(midiNoteOn, 60, 90)}, {20, asData(midiNoteOff, 60, 0)}});
        f.end();
        EXPECT_EQ(selected->parts.getCount(), way.first);
        EXPECT_EQ(other->parts.getCount(), way.second);
    }
}

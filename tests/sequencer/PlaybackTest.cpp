#include "PlayFixture.h"

#include "engine/ValueDoor.h"
#include "sequencer/play/SongPlayback.h"
#include "sequencer/song/SongValues.h"

/// Each note starts and ends at the frame of its tick, whatever the block size and rate. Notes end
/// with their part, what lies outside is silent, an offset moves the content; a ghost plays the
/// same at its own place.
TEST(SongPlayback, NotesFallOnTheFrameOfTheirTick) {
    for (const auto& [block, rate] : {std::pair{64, 44100.0}, {333, 96000.0}, {1024, 44100.0}}) {
        PlayFixture f;
        f.host.setFrames(block);
        f.host.setRate(rate);
        CPart* part = f.part(f.songTrack, 960, 960, {0, 107, 347, 348, 1060, 2000}, 100);
        part->addEvent(900, note(60, 4000));
        part->offset = -100;
        f.step([&](CUndo* undo) {
            CPart* ghost = f.seq->makeGhost(part, undo);
            ghost->pos = 1920;
            f.songTrack->addPart(ghost, undo);
        });
        f.play(int(f.frame(3000)) / block);
        const int starts[] = {967, 1207, 1208, 1760, 1927, 2167, 2168, 2720};
        const Frames on = f.ear->ons(), off = f.ear->offs();
        ASSERT_EQ(on.size(), std::size(starts));
        ASSERT_EQ(off.size(), std::size(starts));
        for (size_t i = 0; i < on.size(); i++) {
            const int end = i % 4 == 3 ? starts[i] + 159 : starts[i] + 99;
            EXPECT_NEAR(double(on[i]), starts[i] * f.framesPerTick(), 0.5001) << block;
            EXPECT_NEAR(double(off[i]), end * f.framesPerTick(), 0.5001) << block;
        }
    }
}

/// 960 ticks take 26,460 frames at the slower tempo and half of it at the faster one, whatever the
/// blocks.
TEST(SongPlayback, TempoStepsAtItsPoint) {
    for (const int block : {32, 256, 1000, 4096}) {
        PlayFixture f;
        f.host.setFrames(block);
        f.tempoAt(0, 100.0f);
        f.tempoAt(1920, 200.0f);
        f.part(f.songTrack, 0, 7680, {0, 960, 1920, 3840});
        f.play(90000 / block);
        EXPECT_EQ(f.ear->ons(), (Frames{0, 26460, 52920, 79380})) << block;
    }
}

/// Until the first point the song's own tempo holds, in every pass of a loop alike.
TEST(SongPlayback, TheSongsTempoHoldsBeforeTheFirstPoint) {
    PlayFixture f;
    f.host.setFrames(64);
    f.tempoAt(1920, 60.0f);
    f.part(f.songTrack, 0, 3840, {0, 960, 1920, 2880});
    f.play(6 * 44100 * 3 / 64, 0.0, true);
    // Two quarters at 120 beats a minute, two at 60; a point holds from its block on.
    const long beats[] = {0, 22050, 44100, 88200}, pass = 132300;
    const Frames on = f.ear->ons();
    ASSERT_GE(on.size(), 16u);
    for (size_t i = 0; i < 16; i++)
        EXPECT_NEAR(double(on[i]), double(long(i / 4) * pass + beats[i % 4]),
                    64.0 * double(1 + i / 2))
            << i;
    EXPECT_NEAR(f.seq->ticksToFrames(0, 1920, 44100), 44100.0, 1e-6) << "wherever the song is";
}

/// What the display changes is what is in force at the position, as one step, live as well.
TEST(SongPlayback, TheTempoInForceIsChangedAsOneStep) {
    PlayFixture f;
    f.host.setTempo(90.0f);
    f.tempoAt(1920, 60.0f);
    const auto tempos = [&] {
        auto* point = f.prog()->tempos.first();
        return std::vector<float>{f.host.songTempo, point->getTempo(), f.host.tempo};
    };
    for (const auto& [tick, before, after] :
         {std::tuple{0.0, std::vector{90.0f, 60.0f, 90.0f}, std::vector{250.0f, 60.0f, 250.0f}},
          {4000.0, {90.0f, 60.0f, 60.0f}, {90.0f, 250.0f, 250.0f}}}) {
        f.host.setPos(tick);
        ASSERT_EQ(tempos(), before) << tick;
        const StoredValue tempo = tempoHereOf(f.seq);
        const int steps = f.host.undoIndex;
        f.host.values->begin();
        f.host.values->set(tempo, 100.0);
        EXPECT_EQ(f.host.tempo, 100.0f) << "heard while it is dragged";
        f.host.values->set(tempo, 1000.0);
        f.host.values->end();
        f.host.values->set(tempo, 1000.0);
        EXPECT_EQ(tempos(), after) << tick;
        EXPECT_EQ(f.host.undoIndex, steps + 1) << "nothing changed the second time";
        f.undo();
        EXPECT_EQ(tempos(), before) << tick;
        f.redo();
        EXPECT_EQ(tempos(), after) << tick;
        f.undo();
    }
}

/// A loop repeats to the frame, however it lies against the blocks; nothing sounds on its end.
TEST(SongPlayback, LoopsWrapInsideBlocks) {
    struct Case {
        int block, left, right;
    };
    for (const Case& c : {Case{1024, 0, 960}, {333, 240, 1680}, {4096, 0, 120}, {64, 0, 3}}) {
        PlayFixture f;
        f.host.setFrames(c.block);
        f.prog()->leftLocator = c.left;
        f.prog()->rightLocator = c.right;
        f.part(f.songTrack, 0, 3840, {c.left, c.right});
        const double pass = (c.right - c.left) * f.framesPerTick();
        f.play(int(pass * 6.5) / c.block + 1, c.left, true);
        const Frames on = f.ear->ons();
        ASSERT_GE(on.size(), 6u) << c.block;
        for (size_t i = 0; i < 6; i++)
            EXPECT_NEAR(double(on[i]), double(i) * pass, 1.0) << c.block << ", pass " << i;
        // A note over the end of the loop is ended by the wrap, once per pass.
        EXPECT_GE(f.ear->offs().size(), 5u);
    }
    PlayFixture f; // from the end of a loop on it never wraps
    f.prog()->rightLocator = 960;
    f.play(100, 960, true);
    EXPECT_NEAR(f.prog()->pos, 960 + 100 * 1024 / f.framesPerTick(), 0.01);
}

/// A note that ends in the block of a wrap ends at its own frame.
TEST(SongPlayback, NotesEndBeforeTheWrapThatFollows) {
    PlayFixture f;
    f.prog()->rightLocator = 960;           // 22050 frames; a block begins with 21504
    f.part(f.songTrack, 0, 3840, {938}, 5); // from 21544 to 21636
    f.play(22, 0.0, true);
    EXPECT_EQ(f.ear->ons(), (Frames{f.frame(938)}));
    EXPECT_EQ(f.ear->offs(), (Frames{f.frame(938 + 4)}));
}

/// Mute silences a track; solo silences all others; both act while it plays.
TEST(SongPlayback, MuteAndSolo) {
    PlayFixture f;
    CSongTrack* other = f.track(trackMIDI);
    Ear* otherEar = f.connect(other, f.device.add(new Ear(&f.host)));
    for (int i = 0; i < 64; i++)
        for (CSongTrack* t : {f.songTrack, other}) f.part(t, i * 480, 480, {0});
    const auto passes = [&](bool first, bool second) {
        const size_t a = f.ear->ons().size(), b = otherEar->ons().size();
        f.device.run(60);
        EXPECT_EQ(f.ear->ons().size() > a, first);
        EXPECT_EQ(otherEar->ons().size() > b, second);
    };
    f.play(1);
    passes(true, true);
    f.songTrack->setMuted(true);
    passes(false, true);
    f.songTrack->setMuted(false);
    other->setSoloed(true);
    passes(false, true);
    other->setSoloed(false);
    passes(true, true);
}

/// The default table, at full amount, moves every second sixteenth by a third of its length.
TEST(SongPlayback, GrooveMovesEvents) {
    PlayFixture f;
    f.songTrack->track->groove.amount = 1.0f;
    f.part(f.songTrack, 0, 3840, {0, 480});
    f.part(f.songTrack, 960, 3840, {240});
    f.play(150);
    EXPECT_EQ(f.ear->ons(), (Frames{0, f.frame(480), f.frame(960 + 240 + 79)}));

    CGroove table;
    table.initGroove();
    table.amount = 0.5f;
    EXPECT_EQ(groove(&table, 240), 40); // half of round(0.33 * 240) = 79, halves up
    EXPECT_EQ(groove(&table, -240), 40);
    table.on = 0;
    EXPECT_EQ(groove(&table, 240), 0);
}

/// Automation follows the curve between its points, in steps of at most 32 frames, and a jump sends
/// the value in force.
TEST(SongPlayback, AutomationFollowsItsCurve) {
    for (double bend : {0.0, 0.5, -0.5}) {
        PlayFixture f;
        f.host.setFrames(333);
        const CSubTrack* lane = f.faderLane();
        CPart* part = f.part(f.songTrack, 0, 3840, {});
        CEnvEvent* end = createEnvEvent(nullptr, 0.9f);
        end->curve = float(bend);
        part->addEventParam(480, createEnvEvent(nullptr, 0.2f), lane->slot);
        part->addEventParam(1440, end, lane->slot);
        f.play(200);

        const double fpt = f.framesPerTick();
        double last = -32.0;
        int inRamp = 0;
        for (const Heard& e : f.ear->events) {
            if (e.kind != eventParam || e.frame < 480 * fpt - 1 || e.frame > 1440 * fpt) continue;
            const double t = (e.frame / fpt - 480.0) / 960.0;
            const double k = bend > 0 ? 1 + 63 * bend * bend : 1 / (1 + 63 * bend * bend);
            const double way = t / ((1 - k) * t + k);
            EXPECT_NEAR(double(e.value), 0.2 + 0.7 * way, 2e-3) << "frame " << e.frame;
            EXPECT_LE(e.frame - last, inRamp++ ? 33.0 : 1e9);
            last = e.frame;
        }
        EXPECT_GT(inRamp, 600);
        EXPECT_NEAR(double(f.ear->events.back().value), 0.9, 1e-6);

        f.ear->events.clear();
        f.host.setPos(2000.0);
        f.device.run(2);
        ASSERT_FALSE(f.ear->events.empty());
        EXPECT_NEAR(double(f.ear->events.front().value), 0.9, 1e-6);
    }
}

/// Lanes that act by MIDI send whole values, and each only once.
TEST(SongPlayback, ControllerLanesSendWholeValuesOnce) {
    struct Case {
        LaneTarget target;
        float value;
        int message;
    };
    for (const Case& c : {Case{targetController, 0.5f, asData(0xB3, 74, 64)},
                          {targetController, 7.0f, asData(0xB3, 74, 127)},
                          {targetPitchBend, 0.5f, asData(0xE3, 0, 64)}}) {
        CMIDIQ queue(nullptr);
        CSubTrack lane("lane", laneAutomation);
        lane.target = c.target;
        lane.param = 74;
        CPlayStruct pointer;
        for (int i = 0; i < 3; i++) insertEvent(&lane, &queue, 5.0, c.value, &pointer, 3);
        ASSERT_EQ(queue.count, 1);
        EXPECT_EQ(queue.first()->data, c.message);
        insertEvent(&lane, &queue, 5.0, c.value, nullptr, -1);
        EXPECT_EQ(chByte(queue.events[1].data), 0);
    }
}

/// A jump and a stop end what sounds at the first frame of the block; nothing hangs.
TEST(SongPlayback, JumpsAndStopsEndNotes) {
    PlayFixture f;
    f.part(f.songTrack, 0, 38400, {0}, 30000);
    f.play(3);
    EXPECT_EQ(f.ear->offs().size(), 0u);
    f.host.setPos(20000.0);
    f.device.run();
    EXPECT_EQ(f.ear->offs(), (Frames{3 * 1024}));
    f.host.setPos(0.0);
    f.device.run(2);
    f.host.stop();
    f.device.run();
    EXPECT_EQ(f.ear->ons().size(), f.ear->offs().size());
}

/// What is played live is heard on a selected track, with its sensitivity, and ends with the
/// selection.
TEST(SongPlayback, LiveNotesEndWithTheSelection) {
    PlayFixture f;
    f.songTrack->track->inSens = 0;
    for (int key : {70, 71}) {
        f.device.send(asData(midiNoteOn, key, 50));
        f.device.run(2);
        f.seq->selectTrack(f.songTrack, key == 70);
    }
    ASSERT_EQ(f.ear->events.size(), 1u) << "the second key alone";
    EXPECT_EQ(f.ear->events[0].data, asData(midiNoteOn, 71, 127));
    f.device.run(2);
    EXPECT_EQ(f.ear->offs(71).size(), 1u);
}

/// The arranger plays the sounding section to its end and goes on with the chosen one.
TEST(SongPlayback, MarkersChain) {
    PlayFixture f;
    f.seq->options.bytes[SongOptions::arranger] = 1;
    CMarkerPart* sections[2];
    for (int i = 0; i < 2; i++) {
        sections[i] = new CMarkerPart;
        sections[i]->pos = i * 3840;
        f.prog()->addMarker(sections[i], nullptr);
        f.part(f.songTrack, i * 3840, 960, {0}, 240, 60 + i);
    }
    f.part(f.songTrack, 0, 3840, {1000}, 240, 62); // behind the first section
    f.prog()->setMarker(sections[0]);
    f.play(30);
    f.prog()->setMarker(sections[1]);
    f.device.run(60);
    const Frames second = f.ear->ons(61);
    ASSERT_FALSE(second.empty());
    EXPECT_NEAR(double(second[0]), f.frame(2 * 960), 2.0);
    EXPECT_EQ(f.prog()->playingMarker, sections[1]);
    EXPECT_GE(f.prog()->session.count(), 2);
    EXPECT_TRUE(f.ear->ons(62).empty());
}

/// A jump of the arranger, to a later section or an earlier one, plays that section from its
/// beginning, and nothing of what lies between.
TEST(SongPlayback, MarkersJumpOverTheSong) {
    for (const auto& [from, to] : {std::pair{0, 3840}, {3840, 0}}) {
        PlayFixture f;
        f.seq->options.bytes[SongOptions::arranger] = 1;
        CMarkerPart* sections[2];
        for (int i = 0; i < 2; i++) {
            sections[i] = new CMarkerPart;
            sections[i]->pos = i ? to : from;
            f.prog()->addMarker(sections[i], nullptr);
        }
        f.part(f.songTrack, 0, 9600, {from, to, to + 480}, 100);
        f.part(f.songTrack, 960, 2880, {2500 - 960, 3000 - 960}, 100, 61);
        f.prog()->setMarker(sections[0]);
        f.play(10);
        f.prog()->setMarker(sections[1]);
        f.device.run(50);
        const Frames on = f.ear->ons();
        ASSERT_GE(on.size(), 4u) << to;
        const double expected[] = {0, 960, 1440, 1920};
        for (size_t i = 0; i < 4; i++)
            EXPECT_NEAR(double(on[i]), expected[i] * f.framesPerTick(), 2.0) << to << ", " << i;
        EXPECT_TRUE(f.ear->ons(61).empty()) << to;
    }
}

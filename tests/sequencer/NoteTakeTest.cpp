#include "TakeFixture.h"

/// What is played, as events worked out by hand, in time with what is heard. A take begins on a
/// quarter; of the count-in only the last quarter counts.
TEST(NoteTake, PlayedNotesBecomeEvents) {
    struct Case {
        double from;
        int kind, loopEnd, quantize, countIn; ///< `countIn` in beats
        const char *played, *expected;
    };
    const int midi = trackMIDI, drum = trackDrum;
    const Case cases[] = {
        // controllers, and a note that the stop ends
        {1000, midi, 0, 0, 0, "24+60 34c7 48-60 193+62 205-62 210+64",
         "960-2880 240:60+240 340:c7 1930:62+120 2100:64+500"},
        // same key twice: first on is first off
        {0, midi, 0, 0, 0, "4+60 6+60 10-60 20-60 25-60", "0-1920 40:60+60 60:60+140"},
        // quantized, but not in length
        {960, midi, 0, 1, 0, "37+60 45-60", "960-1920 480:60+80"},
        // loop: overdub, held over the wrap, upbeats
        {0, midi, 1920, 0, 0, "48+60 72-60 150+62 212-62 170+65 175-65 180+64 222-64 242+61 246-61",
         "0-1920 0:65+50 0:64+300 480:60+240 500:61+40 1500:62+420"},
        // count-in of 192 blocks
        {960, midi, 0, 0, 2, "10+60 20-60 180+61 200-61 230+62 231-62",
         "960-1920 0:61+80 380:62+10"},
        // drums by their sounds, quantized
        {0, drum, 0, 1, 0, "5+36 5+38 30+36 31+99", "0-1920 0:0*100 0:2*100 240:0*100"},
    };
    const auto play = [](const Case& c, int late) {
        SCOPED_TRACE(c.played + std::string(" late by ") + std::to_string(late));
        TakeFixture f;
        f.device.connect(f.device.add(new Late(&f.host, late * f.block)));
        CSongTrack* t = f.ready(c.kind);
        if (c.kind == trackDrum) f.seq->addStandardKit(t->track);
        f.seq->options.bytes[SongOptions::midiMonitor] = c.kind != trackDrum; // heard or not
        if (c.loopEnd) f.loop(0, c.loopEnd);
        f.seq->autoQuantize = c.quantize;
        f.host.click->enabled = c.countIn > 0;
        f.host.click->beats = c.countIn;
        const std::string before = dump(f.seq);
        f.begin(c.from);
        f.play(260 + late, script(c.played, late));
        f.end();
        ASSERT_EQ(t->parts.getCount(), 1);
        EXPECT_EQ(text(f.partOf(t)), c.expected);
        f.expectOneStep(before);
    };
    for (const Case& c : cases)
        for (const int late : {0, 3}) play(c, late);
}

/// A take that begins before the loop has all of it in one part, and a note that is held at the end
/// of it ends there.
TEST(NoteTake, BeginsBeforeTheLoop) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    f.loop(960, 1920);
    const std::string before = dump(f.seq);
    f.begin(0);
    f.play(220, script("10+60 20-60 110+61 120-61 200+62"));
    f.end();
    ASSERT_EQ(t->parts.getCount(), 1);
    EXPECT_EQ(text(f.partOf(t)), "0-1920 100:60+100 1040:62+200 1100:61+100");
    f.expectOneStep(before);
}

/// Into a part that is there, also by way of a ghost. What the part held goes on playing where it
/// stands, what is recorded is not played back at once.
TEST(NoteTake, OverdubsThePartAtItsStart) {
    for (const bool ghost : {false, true}) {
        TakeFixture f;
        CSongTrack* t = f.ready(trackMIDI);
        CPart* part = midiPart(960, 960);
        for (int tick : {95, 125, 700}) part->addEvent(tick, note(50));
        t->addPart(part, nullptr);
        if (ghost) f.step([&](CUndo* u) { t->addPart(f.seq->makeGhost(part, u), u); });
        CPart* into = f.partOf(t, ghost);
        into->pos = 1920;
        into->offset = -20;
        into->setSelected(true);
        const std::string before = dump(f.seq);
        const std::multimap<int, int> keys = script("5+60 12-60 20+61 22-61 96+60 99-60");
        std::vector<int> heard;
        f.begin(1920);
        for (int i = 0; i < 102; i++) {
            if (keys.contains(i)) f.device.send(keys.find(i)->second);
            f.play(1);
            for (const CMIDIBytes* e = t->track->outPort()->first(); e; e = e->next)
                if (noteOn(e->data)) heard.push_back(i * 10 + asByte1(e->data) / 60);
        }
        f.end();
        EXPECT_EQ(heard, (std::vector<int>{51, 70, 100, 201, 680, 961})) << "1: by hand";
        EXPECT_EQ(text(into),
                  "1920-1920 70:60+70 95:50+240 125:50+240 220:61+20 700:50+240 980:60+30");
        f.expectOneStep(before);
    }
}

/// Punched in and out while the song plays: what lies outside is not recorded. A second take may be
/// asked for before the first one has been put away; then both are one step. Nothing selected,
/// nothing recorded.
TEST(NoteTake, PunchesInAndOut) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    f.host.start();
    f.play(10, script("5+60 7-60"));
    f.host.rec();
    f.play(10, script("2+61 4-61"));
    f.host.rec();
    f.device.send(asData(midiNoteOn, 62, 100));
    f.device.run(); // the take ends here
    f.host.rec();
    f.device.run(3); // nothing is ready yet
    f.play(10, script("2+63 4-63"));
    f.end();
    ASSERT_EQ(t->parts.getCount(), 1);
    EXPECT_EQ(text(f.partOf(t)), "0-1920 120:61+20 260:63+20");
    EXPECT_FALSE(f.seq->recording || f.host.recording || t->track->armed);
    f.seq->unselectTracks();
    f.begin(3840);
    f.play(10, script("1+60 5-60"));
    f.end();
    EXPECT_EQ(t->parts.getCount(), 1);
    EXPECT_EQ(f.host.undoIndex, 0);
}

/// By the locators, from where the song stands or a pre-roll of bars before, and asked for while it
/// plays. A note just before the left one begins there, as long as it was held; others before and
/// behind are not recorded,
/// and one that is held on ends at the right one. The song plays on. With a loop all passes count.
TEST(NoteTake, PunchesByTheLocators) {
    struct Case {
        const char* name;
        double from;
        bool punch, running, loop;
        int preRoll;
        double begins; ///< ticks, where the song does
        const char *played, *expected;
    };
    const Case cases[] = {
        {"from before", 0, true, false, false, 0, 0,
         "10+60 20-60 88+61 100-61 110+62 120-62 180+63 200-63 205+64 206-64",
         "960-1920 0:61+120 140:62+100 840:63+120"},
        {"from behind", 4000, true, false, false, 0, 960, "14+62 24-62", "960-1920 140:62+100"},
        {"running", 0, true, true, false, 0, 0, "10+60 20-60 110+62 120-62", "960-1920 140:62+100"},
        {"with a bar before", 4800, true, false, false, 1, 0, "10+60 20-60 110+62 120-62",
         "960-1920 140:62+100"},
        {"a bar before alone", 4800, false, false, false, 1, 960,
         "10+60 20-60 383+61 390-61 394+62 404-62", "4800-1920 0:61+70 100:62+100"},
        {"a loop", 0, true, false, true, 0, 0, "50+60 60-60 110+62 120-62 206+63 216-63",
         "960-960 140:62+100 140:63+100"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TakeFixture f;
        CSongTrack* t = f.ready(trackMIDI);
        f.loop(960, 1920);
        if (!c.loop) f.host.loop = f.prog()->loop = 0;
        f.seq->punch = c.punch;
        f.seq->preRoll = c.preRoll;
        f.host.setPos(c.from);
        if (c.running) f.host.start();
        f.host.rec();
        f.device.run(0);
        const std::string before = dump(f.seq);
        auto keys = script(c.played);
        f.play(1, keys);
        EXPECT_EQ(f.prog()->pos, c.begins + f.blockTicks);
        std::multimap<int, int> rest;
        for (const auto& [block, key] : keys) rest.emplace(block - 1, key);
        f.play(420, rest);
        EXPECT_TRUE(f.host.playing);
        EXPECT_EQ(f.host.recording, !c.punch || c.loop);
        f.end();
        ASSERT_EQ(t->parts.getCount(), 1);
        EXPECT_EQ(text(f.partOf(t)), c.expected);
        f.expectOneStep(before);
    }
}

/// A track that leaves takes its take with it, whole, in a step before its own.
TEST(NoteTake, EndsBeforeItsTrackLeaves) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    const std::string before = dump(f.seq);
    f.begin(0);
    f.play(10, script("2+60 4-60"));
    f.step([&](CUndo* u) { f.seq->removeTrack(t->track, u); });
    EXPECT_FALSE(f.host.recording);
    f.undo();
    EXPECT_EQ(text(f.partOf(t)), "0-1920 20:60+20");
    f.seq->selectTrack(t, true);
    f.expectOneStep(before);
}

/// Chords are written when the last key is up, at a position that moves on and stays in the part.
TEST(NoteTake, StepsWriteChords) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    t->track->setOpen(true);
    CPart* part = midiPart(1920, 600);
    part->setSelected(true);
    t->addPart(part, nullptr);
    CPart* second = t->addPart(midiPart(0), nullptr);
    for (bool alone : {false, true}) {
        second->setSelected(!alone);
        f.seq->stepRecClicked();
        ASSERT_EQ(f.seq->recorder.stepRec.getPart(), alone ? part : nullptr);
    }
    const std::string empty = dump(f.seq);
    f.play(30, script("0+60 1+64 2-60 3+67 4-64 5-67"));
    EXPECT_EQ(text(part), "1920-600 0:67+240 0:64+240 0:60+240");
    EXPECT_EQ(f.seq->recorder.stepRec.getPos(), 240);
    f.expectOneStep(empty);
    f.play(10, script("0+61 1-61 2+62 3-62"));
    EXPECT_EQ(text(part), "1920-600 0:67+240 0:64+240 0:60+240 240:61+240 360:62+240");
    EXPECT_EQ(f.seq->recorder.stepRec.getPos(), 360) << "600 - 240 is the last";
    EXPECT_EQ(f.seq->recorder.stepRec.note, 62);
    f.seq->stepRecClicked();
    f.play(5, script("0+70 1-70"));
    EXPECT_EQ(f.host.undoIndex, 2);
}

#include "TakeFixture.h"

#include "engine/CSnap.h"
#include "engine/MidiBytes.h"

#include <sstream>

namespace {

constexpr int on(int key, int velocity = 100) {
    return asData(midiNoteOn, key, velocity);
}
constexpr int off(int key) {
    return asData(midiNoteOff, key, 0);
}

/// "tick:key+length" per note, "tick:status/number" for other messages, in the order of the list.
std::string text(CPart* part) {
    std::ostringstream out;
    int tick = 0;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
        tick += e->delta;
        if (part->type == partDrum) {
            const auto* drum = static_cast<CDrumEvent*>(e);
            out << tick << ":" << drum->sound << "*" << int(drum->velocity * 127 + 0.5f) << " ";
            continue;
        }
        const auto* midi = static_cast<CMIDIEvent*>(e);
        out << tick << ":";
        if (noteOn(midi->data))
            out << asByte1(midi->data) << "+" << midi->length << " ";
        else
            out << std::hex << statusByte(midi->data) << std::dec << "/" << asByte1(midi->data)
                << " ";
    }
    return out.str();
}

std::string whereAndWhat(CPart* part) {
    std::ostringstream out;
    out << part->pos << "-" << part->length << " " << text(part);
    return out.str();
}

struct NoteCase {
    const char* name;
    double from;                    ///< where the take begins
    int left, right;                ///< of the loop; 0, 0 none
    int quantize;                   ///< 1: on
    int blocks;                     ///< of ten ticks
    std::multimap<int, int> script; ///< by block
    const char* expected;           ///< of the part
};

} // namespace

/// What is played, as events worked out by hand. A take begins on a quarter.
TEST(NoteTake, PlayedNotesBecomeEvents) {
    const NoteCase cases[] = {
        {"notes and controllers, the open one dropped",
         1000,
         0,
         0,
         0,
         220,
         {{24, on(60)},
          {34, asData(midiController, 7, 90)},
          {48, off(60)},
          {193, on(62)},
          {205, off(62)},
          {210, on(64)}},
         "960-2880 240:60+240 340:b0/7 1930:62+120 "},
        {"same key twice, first on is first off",
         0,
         0,
         0,
         0,
         40,
         {{4, on(60)}, {6, on(60)}, {10, off(60)}, {20, off(60)}, {25, off(60)}},
         "0-1920 40:60+60 60:60+140 "},
        {"quantized on, not its length",
         960,
         0,
         0,
         1,
         60,
         {{37, on(60)}, {45, off(60)}},
         "960-1920 480:60+80 "},
        {"loop: overdub, held over the wrap, upbeats",
         0,
         0,
         1920,
         0,
         250,
         {{48, on(60)},
          {72, off(60)},
          {150, on(62)},
          {212, off(62)},
          {170, on(65)},
          {175, off(65)},
          {180, on(64)},
          {222, off(64)},
          {242, on(61)},
          {246, off(61)}},
         "0-1920 0:65+50 0:64+300 480:60+240 500:61+40 1500:62+420 "},
    };
    for (const NoteCase& c : cases) {
        SCOPED_TRACE(c.name);
        TakeFixture f;
        CSongTrack* t = f.ready(trackMIDI);
        t->track->channel = -1;
        if (c.right) f.loop(c.left, c.right);
        f.seq->autoQuantize = c.quantize;
        const std::string before = dump(f.seq);
        f.begin(c.from);
        f.play(c.blocks, c.script);
        f.end();
        ASSERT_EQ(t->parts.getCount(), 1);
        EXPECT_EQ(whereAndWhat(f.partOf(t)), c.expected);
        EXPECT_EQ(f.host.undoText(), CStr("Record"));
        const std::string after = dump(f.seq);
        f.undo();
        EXPECT_EQ(dump(f.seq), before);
        EXPECT_EQ(f.host.undoIndex, -1) << "one step";
        f.redo();
        EXPECT_EQ(dump(f.seq), after);
    }
}

/// Into a part that is there, also by way of a ghost; what was there comes back.
TEST(NoteTake, OverdubsIntoThePartAtItsStart) {
    for (const bool ghost : {false, true}) {
        TakeFixture f;
        CSongTrack* t = f.ready(trackMIDI);
        CPart* part = midiPart(960, 960);
        part->addEvent(100, note(50));
        t->addPart(part, nullptr);
        if (ghost) f.step([&](CUndo* u) { t->addPart(f.seq->makeGhost(part, u), u); });
        CPart* into = ghost ? f.partOf(t, 1) : part;
        into->pos = 1920;
        into->offset = -20;
        into->setSelected(true);
        const std::string before = dump(f.seq);
        f.begin(1920);
        f.play(2);
        EXPECT_FALSE(part->getEvents() == nullptr) << "goes on sounding meanwhile";
        f.play(100, {{3, on(60)}, {10, off(60)}, {94, on(61)}, {97, off(61)}});
        f.end();
        EXPECT_EQ(text(part), "70:60+70 100:50+240 980:61+30 ");
        EXPECT_EQ(into->length, 960) << "980 - 20 is its end";
        EXPECT_EQ(t->parts.getCount(), ghost ? 2 : 1);
        const std::string after = dump(f.seq);
        f.undo();
        EXPECT_EQ(dump(f.seq), before);
        f.redo();
        EXPECT_EQ(dump(f.seq), after);
    }
}

/// Recorded notes are not played back in the pass that they belong to, and those of the part are
/// played once, where they stand.
TEST(NoteTake, PlayersKeepTheirPlace) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    CPart* part = midiPart(0);
    for (int tick : {95, 105, 400, 700}) part->addEvent(tick, note(50 + tick / 100));
    t->addPart(part, nullptr);
    std::vector<int> heard;
    int live = 0;
    f.begin(0);
    for (int i = 0; i < 100; i++) {
        f.play(1, {{0, i % 9 == 0 ? on(90) : off(90)}});
        for (const CMIDIBytes* e = t->track->outPort()->first(); e; e = e->next)
            if (noteOn(e->data) && asByte1(e->data) < 90)
                heard.push_back(i * 10);
            else
                live += noteOn(e->data);
    }
    f.end();
    EXPECT_EQ(live, 12) << "blocks 0, 9, 18, ... 99";
    EXPECT_EQ(heard, (std::vector<int>{90, 100, 400, 700}));
}

/// Of the count-in only the last quarter is recorded, at the beginning of the take.
TEST(NoteTake, CountInLetsUpbeatsThrough) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    f.host.click->enabled = 1;
    f.host.click->beats = 2; // 192 blocks
    f.begin(960);
    f.play(250, {{10, on(60)},
                 {20, off(60)},
                 {180, on(61)},
                 {200, off(61)},
                 {230, on(62)},
                 {231, off(62)}});
    f.end();
    EXPECT_EQ(whereAndWhat(f.partOf(t)), "960-1920 0:61+80 380:62+10 ");
}

/// Only what is selected records, monitored or not; drums by their sounds; a take with nothing
/// selected leaves nothing.
TEST(NoteTake, SelectionAndDrums) {
    TakeFixture f;
    CSongTrack* other = f.track(trackMIDI);
    other->track->monitor = 1;
    f.begin(0);
    f.play(10, {{1, on(60)}, {5, off(60)}});
    f.end();
    EXPECT_EQ(f.host.undoIndex, -1);
    EXPECT_TRUE(other->parts.empty());

    CSongTrack* drums = f.ready(trackDrum);
    f.seq->addStandardKit(drums->track);
    f.seq->options.bytes[SongOptions::midiMonitor] = 0;
    f.begin(0);
    f.play(40, {{5, on(36, 64)}, {5, on(38)}, {30, on(36)}, {31, on(99)}});
    f.end();
    ASSERT_EQ(drums->parts.getCount(), 1);
    EXPECT_EQ(text(f.partOf(drums)), "50:0*64 50:2*100 300:0*100 ");
}

/// Punched in and out while the song plays: what lies outside is not recorded. A second take may be
/// asked for before the first one has been put away.
TEST(NoteTake, PunchesInAndOut) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    f.host.setPos(0);
    f.host.start();
    f.play(10, {{5, on(60)}, {7, off(60)}});
    f.host.rec();
    f.play(10, {{2, on(61)}, {4, off(61)}});
    f.host.rec();
    f.device.send(on(62));
    f.device.run(); // the take ends here
    f.host.rec();
    f.device.run(3); // nothing is ready yet
    f.play(10, {{2, on(63)}, {4, off(63)}});
    f.end();
    ASSERT_GE(t->parts.getCount(), 1);
    EXPECT_EQ(text(f.partOf(t)), "120:61+20 260:63+20 ");
    EXPECT_FALSE(f.seq->recording || f.host.recording || t->track->armed);
}

/// Chords are written when the last key is up, at a position that moves on and stays in the part.
TEST(NoteTake, StepsWriteChords) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackMIDI);
    t->track->setOpen(true);
    CPart* part = midiPart(1920, 600);
    part->setSelected(true);
    t->addPart(part, nullptr);
    CSnap snap;
    f.seq->snap = &snap; // 240 ticks
    f.seq->stepRecClicked();
    ASSERT_EQ(f.seq->stepRec.getPart(), part);
    f.play(30, {{0, on(60)}, {1, on(64)}, {2, off(60)}, {4, off(64)}});
    EXPECT_EQ(text(part), "0:64+240 0:60+240 ");
    EXPECT_EQ(f.seq->stepRec.getPos(), 240);
    const std::string before = dump(f.seq);
    f.play(10, {{0, on(61)}, {1, off(61)}, {2, on(62)}, {3, off(62)}});
    EXPECT_EQ(text(part), "0:64+240 0:60+240 240:61+240 360:62+240 ") << "600 - 240 is the last";
    EXPECT_EQ(f.seq->stepRec.getPos(), 360);
    EXPECT_EQ(f.seq->stepRec.note, 62);
    f.undo();
    f.undo();
    EXPECT_EQ(dump(f.seq), before);
    f.seq->stepRecClicked();
    EXPECT_EQ(f.seq->stepRec.getPart(), nullptr);
    f.play(5, {{0, on(70)}, {1, off(70)}});
    EXPECT_EQ(dump(f.seq), before);
    f.seq->snap = nullptr;
}

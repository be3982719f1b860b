#include "sequencer/take/Takes.h"
#include "SongFileFixture.h"
#include "TakeFixture.h"

#include <sstream>

namespace {

/// "take:from-to" for each stretch.
std::string show(const Takes& takes) {
    std::ostringstream out;
    for (const Takes::Piece& p : takes.comp) out << p.take << ':' << p.from << '-' << p.to << ' ';
    return out.str();
}

/// Three passes of a bar at 48000 Hz and 120 beats a minute, of 96000 frames each; in the first one
/// all samples are 0.1, in the second 0.2, in the third 0.3.
struct TakesFixture : SongFileFixture {
    static constexpr int bar = 3840, barFrames = 96000, framesPerTick = 25;
    CSongTrack* on = track(trackAudio);
    CAudioPart* part = new CAudioPart;

    TakesFixture() {
        enterSequencer();
        host.setRate(48000);
        CAudioEvent* clip = createAudioEvent();
        clip->sample = addSample(
            3 * barFrames, [](int i) { return 0.1 * (1 + i / barFrames); }, 48000);
        clip->end = 3 * barFrames - 1;
        part->pos = 960;
        part->multiclip = 1;
        part->addEvent(0, clip);
        part->takes = new Takes;
        for (int i = 0; i < 3; i++)
            part->takes.load()->takes.push_back({0, bar, i * barFrames, (i + 1) * barFrames - 1});
        part->takes.load()->chooseLast();
        playComp(seq, part, 960);
        on->addPart(part, nullptr);
        host.undoClear();
    }
    std::string comp() { return show(*takesOf(part)); }
    /// "tick=start-end" for each clip.
    std::string clips(CPart* of) {
        std::ostringstream out;
        int tick = 0;
        for (CBaseEvent* e = of->getEvents(); e; e = e->next)
            out << (tick += e->delta) << '=' << static_cast<CAudioEvent*>(e)->start << '-'
                << static_cast<CAudioEvent*>(e)->end << ' ';
        return out.str();
    }
    void comp(int take, int from, int to) {
        EXPECT_TRUE(compTake(seq, part, take, from, to));
        host.settle();
    }
};

} // namespace

/// Stretches of a comp give way to the one that is chosen, as far as its take reaches.
TEST(Takes, AreChosenByStretches) {
    Takes t;
    t.takes = {{0, 1000, 0, 99}, {100, 800, 100, 199}, {500, 500, 200, 299}};
    t.chooseLast();
    EXPECT_EQ(show(t), "0:0-500 2:500-1000 ");
    struct Case {
        int take, from, to;
        const char* comp;
    };
    for (const Case& c : {Case{1, 0, 600, "0:0-100 1:100-600 2:600-1000 "},
                          {0, 200, 300, "0:0-100 1:100-200 0:200-300 1:300-600 2:600-1000 "},
                          {1, 200, 300, "0:0-100 1:100-600 2:600-1000 "},
                          {0, -50, 5000, "0:0-1000 "},
                          {2, 700, 800, "0:0-700 2:700-800 0:800-1000 "}}) {
        EXPECT_TRUE(t.choose(c.take, c.from, c.to)) << c.comp;
        EXPECT_EQ(show(t), c.comp);
        EXPECT_FALSE(t.choose(c.take, c.from, c.to)) << "once more: " << c.comp;
    }
    EXPECT_FALSE(t.choose(1, 900, 1000) || t.choose(3, 0, 100) || t.choose(-1, 0, 100));
    EXPECT_TRUE(t.dropUnused());
    EXPECT_EQ(show(t), "0:0-700 1:700-800 0:800-1000 ");
    EXPECT_EQ(t.takes.size(), 2u);
    EXPECT_FALSE(t.dropUnused());
}

/// Each choice is a step, whose clips lie where their takes have them; all comes back from the
/// file, and goes along where the part is cut.
TEST(Takes, ChoicesAreSteps) {
    TakesFixture f;
    EXPECT_EQ(f.clips(f.part), "0=192000-287999 ");
    const std::string start = f.write();
    EXPECT_FALSE(compTake(f.seq, f.part, 2, 960, 4000)) << "it plays that";
    f.comp(0, 1920, 2880);
    EXPECT_EQ(f.comp(), "2:0-960 0:960-1920 2:1920-3840 ");
    // 1.4 * 5 * 44.1 = 309 frames lie under the next
    EXPECT_EQ(f.clips(f.part), "0=192000-216308 960=24000-48308 1920=240000-287999 ");
    EXPECT_EQ(f.host.undoText(), CStr("Comp"));
    const std::string edited = f.write();
    f.part->setSelected(true);
    deleteUnusedTakes(f.seq);
    f.host.settle();
    EXPECT_EQ(f.host.undoText(), CStr("Delete unused takes"));
    EXPECT_EQ(takesOf(f.part)->takes.size(), 2u);
    EXPECT_EQ(f.clips(f.part), "0=192000-216308 960=24000-48308 1920=240000-287999 ");
    f.undo();
    f.part->setSelected(false);
    EXPECT_EQ(f.write(), edited);
    f.undo();
    EXPECT_EQ(f.write(), start);
    f.redo();
    EXPECT_EQ(f.write(), edited);
    f.step([&](CUndo* undo) { f.seq->splitPart(f.on, f.part, 1440, 0, splitApart, undo); });
    auto* right = f.on->parts.items(1);
    EXPECT_EQ(show(*takesOf(right)), "2:-1440--480 0:-480-480 2:480-2400 ");
    EXPECT_TRUE(compTake(f.seq, right, 1, 2400, 2880));
    f.host.settle();
    EXPECT_EQ(f.clips(right), "0=132000-144308 480=240000-287999 ");
    const std::string whole = f.write();
    f.read(whole);
    EXPECT_EQ(f.write(), whole);
    f.seq->tracks.getFirst()->locked = 1;
    auto* back = f.prog()->tracks.getFirst();
    EXPECT_FALSE(compTake(f.seq, back->parts.items(1), 0, 2400, 2880));
}

/// The comp is heard frame by frame, and from take to take without a hole.
TEST(Takes, AreHeardOneInTheOther) {
    TakesFixture f;
    f.comp(0, 1920, 2880);
    f.host.loop = f.prog()->loop = 0;
    f.host.setPos(960.0);
    f.host.start();
    f.device.forget();
    f.device.run(110);
    const std::vector<float>& x = f.device.left;
    const auto at = [&](int tick) { return x[size_t(tick * TakesFixture::framesPerTick)]; };
    const double unit = double(at(500)) / 0.3;
    ASSERT_GT(unit, 0.1);
    EXPECT_NEAR(double(at(1440)), 0.1 * unit, 1e-3);
    EXPECT_NEAR(double(at(2500)), 0.3 * unit, 1e-3);
    for (size_t i = 300; i < size_t(TakesFixture::bar - 20) * TakesFixture::framesPerTick; i++) {
        ASSERT_LT(std::fabs(x[i] - x[i - 1]), 0.3 * unit * 0.28) << i; // a fade's own steps
        ASSERT_GT(double(x[i]), 0.097 * unit) << i;
        ASSERT_LT(double(x[i]), 0.32 * unit) << i;
    }
}

/// Sound that is recorded in a loop: each pass is a take of its own frames, the part plays the last
/// whole one, and all is one step.
TEST(Takes, ComeFromLoops) {
    struct Way {
        int from, left, right, blocks, pos, length;
        const char *takes, *comp; ///< of each take "tick+ticks=first block-block behind"
    };
    for (const Way& way :
         {Way{0, 0, 960, 250, 0, 960, "0+960=0-96 0+960=96-192 0+580=192-250 ", "1:0-960 "},
          {960, 480, 1920, 250, 480, 1440, "0+960=0-96 -480+1440=96-240 -480+100=240-250 ",
           "1:-480-960 "},
          {0, 480, 960, 210, 0, 960, "0+960=0-96 480+480=96-144 480+480=144-192 480+180=192-210 ",
           "0:0-480 2:480-960 "},
          {0, 0, 960, 97, 0, 960, "0+960=0-96 ", "0:0-960 "}}) {
        SCOPED_TRACE(way.comp);
        TakeFixture f;
        f.readsDisk = true;
        CSongTrack* t = f.ready(trackAudio);
        f.loop(way.left, way.right);
        f.host.recLatency = 20;
        const std::string before = dump(f.seq);
        f.begin(way.from);
        f.play(way.blocks);
        f.end();
        ASSERT_EQ(t->parts.getCount(), 1);
        CPart* part = f.partOf(t);
        const Takes* takes = takesOf(part);
        ASSERT_NE(takes, nullptr);
        EXPECT_EQ(part->pos, way.pos);
        EXPECT_EQ(part->length, way.length);
        EXPECT_EQ(show(*takes), way.comp);
        std::ostringstream found;
        for (const Takes::Take& k : takes->takes) {
            found << k.at << '+' << k.ticks << '=' << (k.start - 20) / f.block << '-'
                  << (k.end + 1) / f.block << ' ';
            EXPECT_EQ(k.start % f.block, 20);
        }
        EXPECT_EQ(found.str(), way.takes);
        f.expectOneStep(before);
        EXPECT_EQ(takesOf(f.partOf(t)), takes);
    }
}

/// Notes and hits that are played in a loop: each pass is a take, as is what the part had, and it
/// plays the last whole one. Choosing another leaves notes beside the stretch alone, and the file
/// keeps all of it.
TEST(Takes, HoldNotesOfLoops) {
    struct Way {
        int kind, had; ///< a note at 480 of a part that is there, -1 no part
        const char *played, *plays, *takes, *chosen; ///< `chosen`: take 0 up to 480
    };
    // A pass of 960 ticks has 96 blocks; the fourth is cut off.
    for (const Way& way :
         {Way{trackMIDI, -1, "12+60 24-60 108+61 120-61 240+62 285-62 300+63 310-63",
              "0-960 480:62+450", "120:60 120:61 480:62 120:63 ", "0-960 120:60+120 480:62+450"},
          {trackMIDI, 50, "12+60 24-60 240+62 252-62", "0-960 480:62+120", "480:50 120:60 480:62 ",
           "0-960 480:62+120"},
          {trackDrum, -1, "12+36 108+38 240+40", "0-960 480:4*100", "120:0 120:2 480:4 ",
           "0-960 120:0*100 480:4*100"}}) {
        SCOPED_TRACE(way.played);
        TakeFixture f;
        CSongTrack* t = f.ready(way.kind);
        if (way.kind == trackDrum) f.seq->addStandardKit(t->track);
        if (way.had >= 0) {
            CPart* part = midiPart(0, 960);
            part->addEvent(480, note(way.had));
            part->setSelected(true);
            t->addPart(part, nullptr);
        }
        f.loop(0, 960);
        f.seq->recorder.loopNoteTakes = true;
        const std::string before = dump(f.seq);
        f.begin(0);
        f.play(320, script(way.played));
        f.end();
        CPart* part = f.partOf(t);
        ASSERT_TRUE(part && takesOf(part));
        EXPECT_EQ(text(part), way.plays);
        std::ostringstream found;
        for (const Takes::Take& take : takesOf(part)->takes) {
            const auto* first = static_cast<const CMIDIEvent*>(take.notes->list);
            found << take.at + first->delta << ':'
                  << (way.kind == trackDrum
                          ? static_cast<const CDrumEvent*>(take.notes->list)->sound
                          : asByte1(first->data))
                  << ' ';
        }
        EXPECT_EQ(found.str(), way.takes);
        f.expectOneStep(before);
        ASSERT_TRUE(compTake(f.seq, part, 0, 0, 480));
        f.host.settle();
        EXPECT_EQ(text(part), way.chosen);
        EXPECT_EQ(f.host.undoText(), "Comp");
        f.undo();
        EXPECT_EQ(text(part), way.plays);
    }
}

/// Takes of notes and hits come back from the file, and parts without any keep their bytes.
TEST(Takes, OfNotesAreStored) {
    for (const bool drums : {false, true}) {
        SongFileFixture f;
        enterSequencer();
        CSongTrack* on = f.track(drums ? trackDrum : trackMIDI);
        CPart* part = drums ? static_cast<CPart*>(new CDrumPart) : new CMIDIPart;
        on->addPart(part, nullptr);
        const std::string plain = f.write();
        EXPECT_EQ(plain.find("take"), std::string::npos);
        part->takes = new Takes;
        for (const int key : {61, 62}) {
            CBaseEvent* event =
                drums ? static_cast<CBaseEvent*>(drumHit(asData(midiNoteOn, key, 90))) : note(key);
            event->delta = key;
            part->takes.load()->takes.push_back(
                {0, 960, 0, 0, std::make_shared<TakeNotes>(part->type, event)});
        }
        part->takes.load()->chooseLast();
        const std::string whole = f.write();
        EXPECT_GT(whole.size(), plain.size());
        f.read(whole);
        EXPECT_EQ(f.write(), whole);
        auto* back = f.prog()->tracks.getFirst();
        auto* read = back->parts.getFirst();
        ASSERT_TRUE(takesOf(read));
        ASSERT_TRUE(takesOf(read)->takes[0].notes);
        EXPECT_EQ(takesOf(read)->takes[0].notes->list->delta, 61);
        EXPECT_TRUE(compTake(f.seq, read, 0, 0, 960));
        f.host.settle();
        EXPECT_EQ(read->getEvents()->delta, 61);
    }
}

/// Nothing was played: nothing is to be undone.
TEST(Takes, OfSilenceAreNoStep) {
    for (const int kind : {trackMIDI, trackDrum}) {
        TakeFixture f;
        CSongTrack* t = f.ready(kind);
        const int steps = f.host.undoIndex;
        f.begin(0);
        f.play(20);
        f.end();
        EXPECT_EQ(f.host.undoIndex, steps);
        EXPECT_TRUE(t->parts.empty());
    }
}

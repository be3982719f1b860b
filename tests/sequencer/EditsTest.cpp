#include "EditsFixture.h"
#include "base/TempFolder.h"
#include "engine/CSnap.h"
#include "sequencer/edit/BarEdits.h"
#include "sequencer/edit/PartActions.h"
#include "sequencer/edit/PartClipboard.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartMerge.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/edit/Ripple.h"
#include "sequencer/song/PartOrder.h"

#include <optional>
#include <random>

namespace {

void removeParts(CSeq* seq) {
    deleteParts(seq);
}

void splitAtCursor(CSeq* seq) {
    seq->splitAtCursorClicked();
}

const EditCase cases[] = {
    {"split all that span", [](Edits& e) { e.at(1920); }, splitAtCursor, "Split",
     halfA + "| 1920:1920 ~0 " + ghost(3840) + ghost(7680)},
    {"split the selected ghost",
     [](Edits& e) {
         e.at(8640);
         e.select(e.midi, "ac");
     },
     splitAtCursor, "Split", noteA + ghost(3840) + "| 7680:960 100=64/240 | 8640:960 "},
    {"split the notes of the part that is edited",
     [](Edits& e) {
         e.at(1920);
         e.openTrack(e.midi);
         e.select(e.midi, "a");
     },
     splitAtCursor, "Split",
     "| 0:3840 0=60/240 1910=62/10 1920=62/950 ~0 ~1920 " + ghost(3840) + ghost(7680)},
    {"insert", [](Edits& e) { e.locators(1920, 2880); }, insertBars, "Insert bars",
     halfA + "| 2880:1920 ~0 " + ghost(4800) + ghost(8640), "960@100 3840@140 5760@90 M0:4800"},
    {"remove the end of one and the start of another", [](Edits& e) { e.locators(1920, 4800); },
     removeBars, "Remove bars", halfA + "| 1920:960 " + ghost(4800), "960@100 1920@90 M0:1920"},
    {"remove from the middle", [](Edits& e) { e.locators(960, 1920); }, removeBars, "Remove bars",
     "| 0:960 0=60/240 ~0 | 960:1920 ~0 " + ghost(2880) + ghost(6720),
     "960@100 1920@140 3840@90 M0:2880"},
    {"remove a part, and keep the tempo behind it", [](Edits& e) { e.locators(3840, 5760); },
     removeBars, "Remove bars", noteA + ghost(5760), "960@100 2880@140 3840@90 M0:3840"},
    {"remove a tempo before another", [](Edits& e) { e.locators(0, 2880); }, removeBars,
     "Remove bars", "| 0:960 " + ghost(960) + ghost(4800), "0@140 1920@90 M0:960"},
    {"glue", [](Edits& e) { e.select(e.midi, "ab"); }, glueParts, "Glue",
     "| 0:5760 0=60/240 1910=62/960 3940=64/240 ~0 ~1920 " + ghost(7680)},
    {"quantize a master once", [](Edits& e) { e.select(e.midi, "abc"); }, quantizeParts, "Quantize",
     "| 0:3840 0=60/240 1920=62/960 ~0 ~1920 | 3840:1920 ghost 0=64/240 | 7680:1920 ghost "
     "0=64/240 ",
     "", 2},
    {"delete", [](Edits& e) { e.select(e.midi, "ac"); }, removeParts, "Delete", ghost(3840)},
    {"duplicate", [](Edits& e) { e.select(e.midi, "b"); }, duplicateParts, "Duplicate",
     noteA + ghost(3840) + ghost(5760) + ghost(7680)},
    {"cut", [](Edits& e) { e.select(e.midi, "bc"); }, cutParts, "Cut", noteA},
    {"paste on the track it came from",
     [](Edits& e) {
         e.select(e.midi, "ab");
         copyParts(e.seq);
         e.at(9600);
     },
     pasteParts, "Paste",
     noteA + ghost(3840) + ghost(7680) + "| 9600:3840 0=60/240 1910=62/960 ~0 ~1920 " +
         ghost(13440)},
    {"paste into the part that is edited",
     [](Edits& e) {
         e.part(e.midi, 0)->getEvents()->next->flags = eventSelected;
         e.select(e.midi, "a");
         copyParts(e.seq);
         e.part(e.midi, 0)->getEvents()->next->flags = 0;
         e.openTrack(e.midi);
         e.at(480);
     },
     pasteParts, "Paste",
     "| 0:3840 0=60/240 480=62/960 1910=62/960 ~0 ~1920 " + ghost(3840) + ghost(7680)},
    {"un-ghost", [](Edits& e) { e.select(e.midi, "ac"); }, unghostParts, "Un-ghost",
     noteA + ghost(3840) + "| 7680:1920 100=64/240 "},
    {"mute", [](Edits& e) { e.select(e.midi, "ab"); }, toggleMutes, "Mute part",
     "| 0:3840 mute 0=60/240 1910=62/960 ~0 ~1920 | 3840:1920 ghost mute 100=64/240 " +
         ghost(7680)},
};

} // namespace

/// Every edit does what it tells, and the way back and forth leads to equal files.
TEST(Edits, AreStepsOfTheHistory) {
    for (const EditCase& c : cases) checkEdit(c);
}

/// Whole songs, on many tracks and on one: the step leaves the parts in order, and the way back and
/// forth leads to equal files.
TEST(Edits, OfManyPartsLeadBackAndForth) {
    const std::pair<const char*, void (*)(CSeq*)> acts[] = {{"quantize", quantizeParts},
                                                            {"duplicate", duplicateParts},
                                                            {"glue", glueParts},
                                                            {"delete", removeParts},
                                                            {"split", splitAtCursor},
                                                            {"mute", toggleMutes},
                                                            {"insert", insertBars},
                                                            {"remove", removeBars},
                                                            {"paste", [](CSeq* seq) {
                                                                 copyParts(seq);
                                                                 pasteParts(seq);
                                                             }}};
    constexpr int parts = 120;
    for (const int tracks : {20, 1})
        for (const auto& [name, act] : acts) {
            SCOPED_TRACE(name);
            Edits e;
            for (int t = 0; t < tracks; t++) {
                CSongTrack* on = e.track(trackMIDI);
                for (int n = 0; n < parts / tracks; n++) {
                    CPart* made = midiPart(n / 2 * 480, 1920); // two at a place
                    for (int i = 0; i < 5; i++) made->addEvent(i * 100 + 7, note(n % 100 + i));
                    on->addPart(made, nullptr);
                }
            }
            const std::string start = e.bytes();
            e.seq->selectAll();
            e.at(3000);
            e.locators(1000, 3840);
            const auto carriedOut = [&e] { // by the graph alone
                e.device.run();
                e.seq->eachSongTrack(
                    [](CSongTrack* t) { EXPECT_TRUE(inOrder(t->parts, earlier, nullptr)); });
                e.host.settle();
            };
            act(e.seq);
            carriedOut();
            e.leaveView();
            e.device.run();
            const std::string edited = e.bytes();
            EXPECT_NE(edited, start);
            e.host.undoClicked();
            carriedOut();
            EXPECT_TRUE(e.bytes() == start) << "undone";
            e.host.redoClicked();
            carriedOut();
            EXPECT_TRUE(e.bytes() == edited) << "redone";
        }
}

/// Where a clip is cut follows from the frames that have passed by then.
TEST(Edits, CutClipsByTheirFrames) {
    struct Clip {
        const char* name;
        int mode, reverse, semitones, ticks, at;
        int frame; ///< in the range, -1: refused
        int length;
    };
    const int last = clipFrames - 1;
    const Clip clips[] = {
        {"plain", 0, 0, 0, 960, 960, 960 * framesPerTick, 3840},
        {"an octave up", 0, 0, 12, 960, 960, 960 * framesPerTick * 2, 1920},
        {"backward", 0, 1, 0, 960, 960, 960 * framesPerTick, 3840},
        {"resampled", 1, 0, 0, 1920, 480, clipFrames / 4, 1920},
        {"stretched backward", 2, 1, 0, 1920, 480, clipFrames / 4, 1920},
        {"at its end", 0, 0, 0, 960, 3840, -1, 3840},
    };
    for (const Clip& c : clips) {
        SCOPED_TRACE(c.name);
        Edits e;
        deleteAll<CPart>(e.prog()->tempos);
        CAudioEvent* event = clip(e.sample);
        event->mode = (unsigned char)c.mode;
        event->reverse = (unsigned char)c.reverse;
        event->semitones = c.semitones;
        event->ticks = c.ticks;
        event->fadeInMs = event->fadeOutMs = 7.0f;
        CPart* part = e.addAudio(480, {{0, event}});
        part->length = c.length;
        part->id = "take";
        part->colour = 0x123456;
        ASSERT_EQ(e.seq->getTicks(part), c.length);
        bool cut = false;
        e.step([&](CUndo* u) { cut = e.seq->splitPart(e.audio, part, c.at, 0, splitApart, u); });
        ASSERT_EQ(cut, c.frame >= 0);
        EXPECT_EQ(e.audio->parts.getCount(), cut ? 2 : 1);
        if (!cut) continue;
        const auto* left = static_cast<CAudioEvent*>(e.part(e.audio, 0)->getEvents());
        const auto* right = static_cast<CAudioEvent*>(e.part(e.audio, 1)->getEvents());
        const int mirrored = last - c.frame;
        EXPECT_EQ(std::tuple(left->start, left->end, right->start, right->end),
                  c.reverse ? std::tuple(mirrored, last, 0, mirrored)
                            : std::tuple(0, c.frame - 1, c.frame, last));
        EXPECT_TRUE(left->ticks == c.at && right->ticks == c.length - c.at);
        EXPECT_TRUE(left->fadeInMs == 7.0f && right->fadeOutMs == 7.0f);
        EXPECT_TRUE(left->fadeOutMs == 0.0f && right->fadeInMs == 0.0f);
        const CPart* second = e.part(e.audio, 1);
        EXPECT_TRUE(second->pos == 480 + c.at && second->colour == 0x123456 &&
                    second->id == "take");
    }
}

/// A part of several clips, drums, and a time that is cut out of a clip.
TEST(Edits, CutEveryKindOfPart) {
    Edits e;
    deleteAll<CPart>(e.prog()->tempos);
    e.addAudio(0, {{0, clip(e.sample, 0, 960 * framesPerTick - 1)}, {960, clip(e.sample)}});
    auto* hits = new CDrumPart;
    for (int tick : {0, 1920}) {
        CDrumEvent* hit = createDrumEvent();
        hit->sound = tick / 960;
        hits->addEvent(tick, hit);
    }
    e.drums->addPart(hits, nullptr);
    e.at(1920);
    e.seq->splitAtCursorClicked();
    e.host.settle();
    EXPECT_EQ(e.show(e.drums), "| 0:1920 0=0/240 | 1920:1920 0=2/240 ");
    EXPECT_EQ(e.show(e.audio), "| 0:1920 0=0-23999 960=0-23999 | 1920:1920 0=24000-95999 ");
    e.select(e.audio, "ab");
    glueParts(e.seq);
    e.host.settle();
    EXPECT_EQ(e.show(e.audio), "| 0:3840 0=0-23999 960=0-23999 1920=24000-95999 ");
    e.undo();
    e.undo();
    e.addAudio(4800, {{0, clip(e.sample)}});
    e.locators(5760, 6720);
    removeBars(e.seq);
    e.host.settle();
    EXPECT_EQ(e.show(e.audio), "| 0:3840 0=0-23999 960=0-95999 | 4800:960 0=0-23999 "
                               "| 5760:1920 0=48000-95999 ");
    e.addAudio(10080, {{0, clip(e.sample)}});
    e.addAudio(9600, {{0, clip(e.sample)}});
    e.select(e.audio, "de");
    e.seq->crossfadeClicked(); // over 3360 ticks, 1750 ms at 120 beats a minute
    e.host.settle();
    EXPECT_EQ(static_cast<CAudioEvent*>(e.part(e.audio, 3)->getEvents())->fadeOutMs, 1750.0f);
    EXPECT_EQ(static_cast<CAudioEvent*>(e.part(e.audio, 4)->getEvents())->fadeInMs, 1750.0f);
    const int steps = e.host.undoIndex;
    e.seq->crossfadeClicked();
    EXPECT_EQ(e.host.undoIndex, steps) << "a step that changes nothing";
}

/// Frames are inserted into a new file; the sample before stays what it was.
TEST(Edits, PasteFramesIntoAClip) {
    const TempFolder folder;
    Edits e;
    deleteAll<CPart>(e.prog()->tempos);
    e.host.tempAudioFolder = folder.file("");
    auto* values = reinterpret_cast<short*>(e.sample->data);
    for (int i = 0; i < clipFrames; i++) values[i] = short(i % 30000);
    CPart* part = e.addAudio(0, {{0, clip(e.sample)}});
    e.addAudio(9600, {{0, clip(e.sample, 100, 149)}});
    const std::string start = e.bytes();
    e.select(e.audio, "b");
    copyParts(e.seq);
    e.select(e.audio, "a");
    e.openTrack(e.audio);
    e.at(960);
    pasteParts(e.seq);
    e.host.settle();
    const auto* event = static_cast<CAudioEvent*>(part->getEvents());
    ASSERT_NE(event->sample, e.sample);
    EXPECT_EQ(event->end, clipFrames - 1 + 50);
    ASSERT_EQ(int(event->sample->frames), clipFrames + 50);
    std::vector<float> before(clipFrames), made(clipFrames + 50);
    e.sample->readFrames(0, clipFrames, before.data());
    event->sample->readFrames(0, clipFrames + 50, made.data());
    for (int i = 0; i < clipFrames + 50; i++) {
        const int from = i < 24000 ? i : i < 24050 ? i - 24000 + 100 : i - 50;
        ASSERT_EQ(made[size_t(i)], before[size_t(from)]) << i;
    }
    e.undo();
    e.leaveView();
    EXPECT_EQ(e.bytes(), start);
}

/// A copied ghost outlives its master.
TEST(Edits, KeepTheClipboardWhenTheHistoryForgets) {
    Edits e;
    e.step([&](CUndo* u) {
        CPart* copy = e.seq->makeGhost(e.part(e.midi, 0), u);
        copy->pos = 11520;
        e.midi->addPart(copy, u);
    });
    e.select(e.midi, "d");
    copyParts(e.seq);
    e.undo();
    e.select(e.midi, "b");
    deleteParts(e.seq); // the master dies with the redo tail
    e.host.settle();
    e.at(15360);
    pasteParts(e.seq);
    e.host.settle();
    EXPECT_EQ(e.show(e.midi), noteA + ghost(7680) + "| 15360:3840 0=60/240 1910=62/960 ~0 ~1920 ");
}

/// A sample that was undone dies when a part that plays it is pasted.
TEST(Edits, PasteNoSampleThatTheHistoryForgets) {
    Edits e;
    e.step([&](CUndo* u) {
        auto* taken = new CSample;
        taken->setFormat(48000, 16, 1);
        taken->takeData(static_cast<unsigned char*>(std::calloc(100, 2)), 100);
        u->asAdd(taken, &e.host.samples);
        auto* part = new CAudioPart;
        part->addEvent(0, clip(taken, 0, 99));
        e.audio->addPart(part, u);
    });
    e.select(e.audio, "a");
    copyParts(e.seq);
    e.undo();
    pasteParts(e.seq);
    e.host.settle();
    EXPECT_EQ(static_cast<CAudioEvent*>(e.part(e.audio, 0)->getEvents())->sample, nullptr);
}

/// Whatever is edited while blocks run, nothing forbidden happens there, and the way back leads to
/// the song that was.
TEST(Edits, HappenWhileTheSongPlays) {
    Edits e;
    e.host.setFrames(128);
    for (int pos : {0, 1920}) e.addAudio(pos, {{0, clip(e.sample)}, {960, clip(e.sample)}});
    const std::string start = e.bytes();
    std::mt19937 random{3};
    const auto pick = [&](int n) { return int(random() % unsigned(n)); };
    rtReset();
    std::optional<BlockThread> audio(std::in_place, [&e] {
        e.device.run();
        e.device.forget();
    });
    e.host.start();
    for (int i = 0; i < 400; i++) {
        const EditCase& c = cases[pick(int(std::size(cases)))];
        e.locators(pick(8) * 480, 480 + pick(16) * 480);
        e.at(pick(12) * 480);
        for (auto* t : {e.midi, e.audio})
            for (auto* p : t->parts) p->setSelected(pick(3) == 0);
        if (e.midi->parts.getCount() + e.audio->parts.getCount() > 60) deleteParts(e.seq);
        if (pick(4) == 0)
            e.host.undoClicked();
        else
            c.run(e.seq);
        e.host.idle();
        ASSERT_TRUE(audio->next());
    }
    e.host.settle();
    while (e.host.undoIndex >= 0) e.undo();
    e.host.stop();
    e.leaveView();
    for (int i = 0; i < 2; i++) ASSERT_TRUE(audio->next());
    audio.reset();
    EXPECT_EQ(e.bytes(), start);
    EXPECT_EQ(rtViolations(), 0);
}

/// Whatever else a step tells of itself, the parts that it brings stand in order.
TEST(PartChange, LeavesPartsInOrder) {
    Edits e;
    const auto placed = [&e] {
        std::vector<int> at;
        for (auto* part : e.midi->parts) at.push_back(part->pos);
        return at;
    };
    const std::function<void(CUndo*)> edits[] = {
        [&e](CUndo* u) { e.seq->splitPart(e.midi, e.part(e.midi, 0), 1920, 0, splitApart, u); },
        [&e](CUndo* u) { e.midi->addPart(midiPart(1000), u); },
        [&e](CUndo* u) { recordMove(u, e.part(e.midi, 0), 20000); },
    };
    for (const auto& edit : edits) {
        CUndo* undo = e.host.undoStart("Test", e.seq);
        edit(undo);
        e.host.undoEnd(undo, true);
        const std::vector<int> now = placed();
        EXPECT_TRUE(std::ranges::is_sorted(now)) << testing::PrintToString(now);
        e.undo();
    }
}

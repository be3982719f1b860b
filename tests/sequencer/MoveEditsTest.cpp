#include "sequencer/edit/MoveEdits.h"
#include "EditsFixture.h"
#include "base/Numbers.h"

namespace {

std::function<void(Edits&)> selecting(const char* which) {
    return [which](Edits& e) { e.select(e.midi, which); };
}

std::function<void(CSeq*)> moving(int ticks, int rows) {
    return [=](CSeq* seq) { moveParts(seq, ticks, rows); };
}

std::function<void(CSeq*)> resizing(int delta, bool relative) {
    return [=](CSeq* seq) { resizeParts(seq, delta, relative); };
}

std::function<void(CSeq*)> resizingStart(int delta) {
    return [=](CSeq* seq) { resizePartsStart(seq, delta); };
}

/// Two parts at the same place that last as long, of which the first is selected.
void twins(Edits& e) {
    for (int number : {70, 71}) {
        CPart* part = midiPart(11520, 960);
        part->addEvent(0, note(number));
        e.midi->addPart(part, nullptr);
    }
    e.select(e.midi, "d");
}

const std::string fixedParts = noteA + ghost(3840) + ghost(7680);

const EditCase cases[] = {
    {"move", selecting("ab"), moving(960, 0), "Move",
     "| 960:3840 0=60/240 1910=62/960 ~0 ~1920 " + ghost(4800) + ghost(7680), "", 2},
    {"not before the song", selecting("bc"), moving(-9999, 0), "Move",
     noteA + ghost(0) + ghost(3840)},
    {"one of twins", twins, moving(960, 0), "Move",
     fixedParts + "| 11520:960 0=71/240 | 12480:960 0=70/240 "},
    {"to another track",
     [](Edits& e) {
         e.track(trackMIDI);
         e.select(e.midi, "b");
     },
     moving(480, 3), "Move", noteA + ghost(7680)},
    {"copy", selecting("ab"), [](CSeq* seq) { copyParts(seq, 11520, 0, false); }, "Copy",
     fixedParts + "| 11520:3840 0=60/240 1910=62/960 ~0 ~1920 " + ghost(15360)},
    {"copy as ghosts", selecting("a"), [](CSeq* seq) { copyParts(seq, 11520, 0, true); }, "Copy",
     "| 0:3840 ghost 0=60/240 1910=62/960 ~0 ~1920 " + ghost(3840) + ghost(7680) +
         "| 11520:3840 ghost 0=60/240 1910=62/960 ~0 ~1920 "},
    {"end, and none shorter than a tick", selecting("ab"), resizing(-1920, true), "Resize",
     halfA + ghost(3840) + ghost(7680), "", 1},
    {"length", selecting("ab"), resizing(480, false), "Resize",
     "| 0:480 0=60/240 1910=62/960 ~0 ~1920 | 3840:480 ghost 100=64/240 " + ghost(7680)},
    {"the longer of twins goes first", twins, resizing(-1, true), "Resize",
     fixedParts + "| 11520:960 0=71/240 | 11520:959 0=70/240 "},
    {"start", selecting("ac"), resizingStart(960), "Resize",
     "| 960:2880 -960=60/240 950=62/960 ~-960 ~960 " + ghost(3840) +
         "| 8640:960 ghost -860=64/240 "},
    {"start at the song's", selecting("c"), resizingStart(-9999), "Resize",
     "| 0:9600 ghost 7780=64/240 " + noteA + ghost(3840)},
    {"insert on the grid", [](Edits& e) { e.locators(0, 480); },
     [](CSeq* seq) { insertPart(seq, seq->getProg()->tracks.items(2), 700); }, "Insert part",
     "| 480:3840 ", "", 1, &Edits::drums},
    {"insert into the loop", [](Edits& e) { e.locators(500, 1501); },
     [](CSeq* seq) { insertPart(seq, seq->getProg()->tracks.items(1), 1500); }, "Insert part",
     "| 500:1001 ", "", 1, &Edits::audio},
};

/// Ticks of a clip that lasts from 1920 to 3840, in the middle of its sample.
struct ClipCase {
    const char* name;
    int mode, reverse;
    std::function<void(CSeq*)> run;
    int pos, length, start, end, ticks; ///< afterwards
};

} // namespace

TEST(MoveEdits, AreStepsOfTheHistory) {
    for (const EditCase& c : cases) checkEdit(c);
}

/// What has no effect leaves no step, and the selection is what was edited.
TEST(MoveEdits, SelectWhatTheyMade) {
    Edits e;
    e.select(e.midi, "b");
    moveParts(e.seq, 0, 1); // onto an audio track
    moveParts(e.seq, 0, 0);
    EXPECT_EQ(insertPart(e.seq, e.track(trackFolder), 0), nullptr);
    e.track(trackMIDI)->track->locked = 1;
    moveParts(e.seq, 480, 4); // onto that
    copyParts(e.seq, 480, 4, true);
    EXPECT_TRUE(e.host.undoList.empty());
    copyParts(e.seq, 960, 0, false);
    e.host.settle();
    EXPECT_TRUE(!e.part(e.midi, 1)->selected() && e.part(e.midi, 2)->selected());
    const CPart* made = insertPart(e.seq, e.midi, 9600);
    e.host.settle();
    EXPECT_TRUE(made->selected() && made->id == e.midi->track->id);
    EXPECT_EQ(e.prog()->getFirstSelectedPart(), made);
    e.select(e.midi, "bc");
    const MoveRange move = moveRange(e.seq);
    EXPECT_EQ(std::tuple(move.minTicks, move.minTracks, move.maxTracks), std::tuple(-3840, 0, 4));
    const ResizeRange start = resizeRange(e.seq, true), end = resizeRange(e.seq, false);
    EXPECT_EQ(std::tuple(start.least, start.greatest, end.least), std::tuple(-3840, 1919, -1919));
}

/// A clip at its own speed changes its range, one that follows the tempo its speed; the way back is
/// exact.
TEST(MoveEdits, ResizeClips) {
    constexpr int at = 1920, first = 24000, last = 71999, over = clipFrames - 1;
    const int forth = 480 * framesPerTick;
    const ClipCase clips[] = {
        {"end", 0, 0, resizing(480, true), at, 2400, first, last + forth, 1920},
        {"end past the sample", 0, 0, resizing(5000, true), at, 2880, first, over, 1920},
        {"end backward", 0, 1, resizing(480, true), at, 2400, first - forth, last, 1920},
        {"shorter", 0, 0, resizing(-480, true), at, 1440, first, last - forth, 1920},
        {"length", 0, 0, resizing(480, false), at, 480, first, first + forth - 1, 1920},
        {"start", 0, 0, resizingStart(480), at + 480, 1440, first + forth, last, 1920},
        {"start before the sample", 0, 0, resizingStart(-1900), at - 960, 2880, 0, last, 1920},
        {"start backward", 0, 1, resizingStart(-480), at - 480, 2400, first, last + forth, 1920},
        {"resampled", 1, 0, resizing(480, true), at, 2400, first, last, 2400},
        {"stretched to a length", 2, 0, resizing(480, false), at, 480, first, last, 480},
        {"stretched at its start", 2, 0, resizingStart(-480), at - 480, 2400, first, last, 2400},
    };
    for (const ClipCase& c : clips) {
        SCOPED_TRACE(c.name);
        Edits e;
        deleteAll<CPart>(e.prog()->tempos);
        CAudioEvent* event = clip(e.sample, first, last);
        event->ticks = 1920;
        event->mode = (unsigned char)c.mode;
        event->reverse = (unsigned char)c.reverse;
        CPart* part = e.addAudio(at, {{0, event}});
        part->length = 1920;
        CPart* linked = nullptr;
        e.step([&](CUndo* u) {
            linked = e.seq->makeGhost(part, u);
            linked->pos = 9600;
            e.audio->addPart(linked, u);
        });
        const std::string start = e.bytes();
        e.select(e.audio, "ab"); // of the same clip: edited once
        const ResizeRange range = resizeRange(e.seq, false);
        EXPECT_EQ(range.greatest, c.mode ? maxTicks - 1920 : 960);
        c.run(e.seq);
        e.host.settle();
        const auto* edited = static_cast<CAudioEvent*>(part->getEvents());
        EXPECT_EQ(std::tuple(int(part->pos), e.seq->getTicks(part)), std::tuple(c.pos, c.length));
        EXPECT_EQ(std::tuple(linked->pos - 9600, e.seq->getTicks(linked)),
                  std::tuple(c.pos - at, c.length));
        EXPECT_EQ(std::tuple(edited->start, edited->end, edited->ticks),
                  std::tuple(c.start, c.end, c.ticks));
        const std::string after = e.bytes();
        e.undo();
        EXPECT_TRUE(e.bytes() == start);
        e.redo();
        EXPECT_TRUE(e.bytes() == after);
    }
}

#include "EditsFixture.h"
#include "base/FullDisk.h"
#include "base/Random.h"
#include "base/TempFolder.h"
#include "engine/CSnap.h"
#include "sequencer/Flatten.h"
#include "sequencer/MidiProcess.h"
#include "sequencer/Slicing.h"

#include <algorithm>
#include <filesystem>

namespace {

constexpr int full = 44100; ///< rate at which a tick has 22.96875 frames at 120 beats a minute

/// A part of 960 ticks at 11520 on an instrument track and one on a drum track, both selected.
void lengths(Edits& e) {
    CPart* part = midiPart(11520, 960);
    part->addEvent(0, note(60, 100));
    part->addEvent(0, note(60, 130));
    part->addEvent(500, note(64, 700));
    CMIDIEvent* wheel = createMIDIEvent();
    wheel->data = asData(midiController, 7, 64);
    part->addEvent(700, wheel);
    e.midi->addPart(part, nullptr);
    auto* hits = new CDrumPart;
    hits->length = 960;
    hits->addEvent(100, createDrumEvent());
    e.drums->addPart(hits, nullptr);
    e.seq->unselectParts();
    part->setSelected(true);
    hits->setSelected(true);
}

void lengthsOfOne(Edits& e) {
    lengths(e);
    e.part(e.midi, 3)->getEvents()->next->flags = eventSelected; // the longer of the doubles
}

std::function<void(CSeq*)> process(int mode) {
    return [mode](CSeq* seq) { EXPECT_EQ(processMIDI(seq, mode), ""); };
}

/// The part of `lengths` behind those that stay.
EditCase midiCase(const char* name, int mode, const char* events,
                  std::function<void(Edits&)> prepare = lengths) {
    return {name, std::move(prepare), process(mode), midiProcessText(mode),
            noteA + ghost(3840) + ghost(7680) + "| 11520:960 " + events};
}

const EditCase midiCases[] = {
    midiCase("whole steps", 0, "0=60/240 0=60/240 500=64/720 700=b0:7/64 "),
    midiCase("legato", 1, "0=60/500 0=60/500 500=64/460 700=b0:7/64 "),
    midiCase("slice", 2, "0=60/240 0=60/240 500=64/240 700=b0:7/64 740=64/240 980=64/240 "),
    midiCase("fixed", 3, "0=60/240 0=60/240 500=64/240 700=b0:7/64 "),
    midiCase("reverse", 4, "-240=64/700 260=b0:7/64 830=60/130 860=60/100 "),
    midiCase("doubles", 5, "0=60/130 500=64/700 700=b0:7/64 "),
    midiCase("half", 6, "0=60/200 0=60/260 1000=64/1400 1400=b0:7/64 "),
    midiCase("double", 7, "0=60/50 0=60/65 250=64/350 350=b0:7/64 "),
    midiCase("selected alone", 3, "0=60/100 0=60/240 500=64/700 700=b0:7/64 ", lengthsOfOne),
    midiCase("selected legato", 1, "0=60/100 0=60/500 500=64/700 700=b0:7/64 ", lengthsOfOne),
    {"drums", lengths, process(midiReverse), "Reverse", "| 0:960 620=0/240 ", "", 0, &Edits::drums},
    {"drums twice as fast", lengths, process(midiDoubleTempo), "Double tempo", "| 0:960 50=0/120 ",
     "", 0, &Edits::drums},
};

std::function<void(Edits&)> audioPart(int last, int mode = 0, int reverse = 0) {
    return [=](Edits& e) {
        deleteAll<CPart>(e.prog()->tempos);
        e.seq->snap->index = 5; // 960
        CAudioEvent* event = clip(e.sample, 0, last);
        event->mode = (unsigned char)mode;
        event->reverse = (unsigned char)reverse;
        event->ticks = 1920;
        event->fadeInMs = event->fadeOutMs = 9.0f;
        CPart* part = e.addAudio(480, {{0, event}});
        part->length = 1920;
        for (const int tick : {0, 960}) part->addEventParam(tick, createEnvEvent(nullptr, 0.5f), 0);
        e.select(e.audio, "a");
    };
}

void beatslice(CSeq* seq) {
    EXPECT_EQ(beatsliceParts(seq), "");
}

const EditCase slices[] = {
    {"own speed", audioPart(59999), beatslice, "Beatslice",
     "| 480:960 0=0-23999 ~0 ~960 | 1440:960 0=24000-47999 ~0 | 2400:480 0=48000-59999 ", "", 4,
     &Edits::audio},
    {"backward", audioPart(47999, 0, 1), beatslice, "Beatslice",
     "| 480:960 0=24000-47999 ~0 ~960 | 1440:960 0=0-23999 ~0 ", "", 0, &Edits::audio},
    {"stretched", audioPart(clipFrames - 1, 2), beatslice, "Beatslice",
     "| 480:960 0=0-47999 ~0 ~960 | 1440:960 0=48000-95999 ~0 ", "", 0, &Edits::audio},
    {"one", audioPart(11999), beatslice, "Beatslice", "| 480:480 0=0-11999 ~0 ~960 ", "", 0,
     &Edits::audio},
};

/// Samples of a constant value in a part of several clips; the file of what they are flattened to.
struct FlattenFixture : Edits {
    const TempFolder folder;

    FlattenFixture() {
        deleteAll<CPart>(prog()->tempos);
        host.tempAudioFolder = folder.file("");
    }
    CSample* constant(double value, int rate = full) {
        return addSample(
            rate, [value](int) { return value; }, rate);
    }
    bool folderEmpty() const { return std::filesystem::is_empty(folder.path.asChar()); }
};

} // namespace

TEST(Process, MidiIsAStepOfTheHistory) {
    for (const EditCase& c : midiCases) checkEdit(c);
}

TEST(Process, SlicesAreAStepOfTheHistory) {
    for (const EditCase& c : slices) checkEdit(c);
}

/// Places are exchanged, and keys keep their lengths; too many pieces are refused.
TEST(Process, ShuffleAndRefuse) {
    Edits e;
    CPart* part = midiPart(11520, 9600);
    for (int i = 0; i < 64; i++) part->addEvent(i * 100, note(i, 10 + i));
    e.midi->addPart(part, nullptr);
    e.select(e.midi, "d");
    const Ticks before = notesOf(part);
    seedRand(7);
    EXPECT_EQ(processMIDI(e.seq, midiRandom), "");
    e.host.settle();
    Ticks after = notesOf(part);
    EXPECT_NE(after, before);
    EXPECT_TRUE(std::is_sorted(after.begin(), after.end(),
                               [](const auto& a, const auto& b) { return a.first < b.first; }));
    for (CBaseEvent* n = part->getEvents(); n; n = n->next)
        EXPECT_EQ(static_cast<CMIDIEvent*>(n)->length,
                  10 + asByte1(static_cast<CMIDIEvent*>(n)->data));
    for (size_t i = 0; i < after.size(); i++) EXPECT_EQ(after[i].first, before[i].first);
    e.undo();
    EXPECT_EQ(notesOf(part), before);
    static_cast<CMIDIEvent*>(part->getEvents())->length = 1 << 30;
    const int steps = e.host.undoIndex;
    EXPECT_EQ(processMIDI(e.seq, midiSlice), tooManyPieces);
    EXPECT_EQ(e.host.undoIndex, steps);
}

/// Cuts lie right before the sound sets in, never less than 4096 frames apart.
TEST(Process, AutosliceAtOnsets) {
    for (const int reverse : {0, 1}) {
        Edits e;
        deleteAll<CPart>(e.prog()->tempos);
        auto* values = reinterpret_cast<short*>(e.sample->data);
        for (const int onset : {20000, 23000, 50000})
            std::fill_n(values + onset, 1000, short(29000));
        CAudioEvent* event = clip(e.sample);
        event->reverse = (unsigned char)reverse;
        e.addAudio(0, {{0, event}});
        e.select(e.audio, "a");
        const std::string start = e.bytes();
        EXPECT_EQ(autosliceParts(e.seq), "");
        e.host.settle();
        EXPECT_EQ(e.show(e.audio),
                  reverse
                      ? "| 0:1840 0=49999-95999 | 1840:1200 0=19999-49998 | 3040:799 0=0-19998 "
                      : "| 0:799 0=0-19998 | 799:1200 0=19999-49998 | 1999:1840 0=49999-95999 ");
        e.undo();
        EXPECT_TRUE(e.bytes() == start);
    }
}

/// What a part of several clips sounds like is what the file has, at whatever rate the device runs.
TEST(Process, FlattenClips) {
    for (const double rate : {44100.0, 48000.0}) {
        FlattenFixture e;
        e.host.setRate(rate);
        CAudioEvent* slow = clip(e.constant(0.25, 22050), 0, 11024); // half a second, as 960 ticks
        CAudioEvent* faded = clip(e.constant(0.5), 0, 22049);
        faded->fadeInMs = 250.0f; // its first half: 11025 frames
        CAudioEvent* hidden = clip(e.constant(0.9), 0, 22049);
        CPart* part = e.addAudio(960, {{0, hidden}, {960, slow}, {1920, faded}});
        part->offset = -960;
        part->length = 2880;
        e.select(e.audio, "a");
        const std::string start = e.bytes();
        {
            const FullDisk disk(5000);
            EXPECT_EQ(flattenParts(e.seq), "Could not write file");
        }
        EXPECT_TRUE(e.bytes() == start && e.folderEmpty());
        EXPECT_EQ(flattenParts(e.seq), "");
        e.host.settle();
        CPart* made = e.part(e.audio, 0);
        const auto* event = static_cast<CAudioEvent*>(made->getEvents());
        ASSERT_TRUE(made != part && event && event->sample && !event->next);
        EXPECT_TRUE(made->selected() && made->pos == 960 && e.seq->getTicks(made) == 2880);
        const CSample* file = event->sample;
        EXPECT_EQ(std::tuple(file->rate, file->bits, file->chs, int(file->frames), event->end),
                  std::tuple(44100.0f, 16, 1, 66150, 66149));
        std::vector<float> sound(66150);
        file->readFrames(0, 66150, sound.data());
        const auto dying = [](double from, int frames) {
            return frames < 4096 ? from * std::pow(0.999, frames) : 0.0;
        };
        const std::pair<int, double> expected[] = {
            {1000, 0.25}, // `hidden` begins before the part
            {22000, 0.25},        {22050 + 5513, 0.5 * std::pow(5513 / 11025.0, 2)},
            {22050 + 12000, 0.5}, {44100 + 1000, dying(0.5, 1001)},
            {60000, 0.0}};
        for (const auto& [frame, value] : expected)
            EXPECT_NEAR(sound[size_t(frame)], value, 0.002) << frame;
        e.undo();
        EXPECT_TRUE(e.bytes() == start);
    }
}

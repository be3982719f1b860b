#include "EditsFixture.h"
#include "audiofiles/CAudioProcessor.h"
#include "base/Deadline.h"
#include "base/FullDisk.h"
#include "base/Random.h"
#include "base/TempFolder.h"
#include "engine/CSnap.h"
#include "sequencer/edit/AudioProcess.h"
#include "sequencer/edit/Flatten.h"
#include "sequencer/edit/MidiProcess.h"
#include "sequencer/edit/PartClipboard.h"
#include "sequencer/edit/ProcessMenus.h"
#include "sequencer/edit/Remix.h"
#include "sequencer/edit/Slicing.h"
#include "sequencer/take/Takes.h"

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

/// Every process writes a new file of its range; a full disk leaves all as it was.
TEST(Process, AudioIntoNewFiles) {
    struct Audio {
        const char* name;
        int mode, clipMode, from, to; ///< ticks of the part that are selected
        float values[3];              ///< of the frames below, in what the clip plays
        int frames, length;
    };
    constexpr int frames[] = {0, 12000, 36000}; // of 48000, in 1920 ticks
    const Audio audio[] = {
        {"Normalize", processNormalize, 0, 0, 0, {0.0f, 0.25f, 0.75f}, 48000, 1920},
        {"Delete", processDelete, 0, 480, 960, {0.0f, 0.0f, 0.375f}, 48000, 1920},
        {"Trim", processTrim, 0, 480, 960, {0.0f, 0.125f, 0.0f}, 48000, 1920},
        {"Fade Out", processFadeOut, 0, 0, 0, {0.0f, 0.09375f, 0.09375f}, 48000, 1920},
        {"Reverse", processReverse, 0, 0, 0, {0.5f, 0.375f, 0.125f}, 48000, 1920},
        {"Cut", processCut, 0, 0, 960, {0.25f, 0.375f, 0.0f}, 24000, 960},
        {"Cut", processCut, 1, 480, 960, {0.0f, 0.25f, 0.0f}, 36000, 1440},
    };
    for (const Audio& a : audio) {
        SCOPED_TRACE(testing::Message() << a.name << " in mode " << a.clipMode);
        FlattenFixture e;
        CSample* ramp = e.addSample(
            50000, [](int i) { return std::max(0, i - 2000) / 96000.0; }, 48000);
        CAudioEvent* event = clip(ramp, 2000, 49999);
        event->mode = (unsigned char)a.clipMode;
        event->ticks = 1920;
        CPart* part = e.addAudio(960, {{0, event}});
        part->length = 1920;
        auto* takes = new Takes;
        takes->takes = {{0, 1920, 2000, 49999}};
        takes->comp = {{0, 0, 1920}};
        static_cast<CAudioPart*>(part)->takes = takes;
        e.select(e.audio, "a");
        const std::string start = e.bytes();
        const PartRange range{a.to ? part : nullptr, a.from, a.to};
        {
            const FullDisk disk(5000);
            EXPECT_EQ(processAudio(e.seq, a.mode, range), "Could not write file");
        }
        EXPECT_TRUE(e.bytes() == start && e.folderEmpty() && e.seq->clipboard.parts.empty());
        copyPartRange(e.seq, range);
        const auto* copy = e.seq->clipboard.parts.getFirst();
        EXPECT_EQ(copy->length, a.to ? a.to - a.from : 1920);
        EXPECT_EQ(processAudio(e.seq, a.mode, range), "");
        e.host.settle();
        EXPECT_STREQ(e.host.undoText().asChar(), a.name);
        const auto* now = static_cast<CAudioEvent*>(part->getEvents());
        ASSERT_NE(now->sample, ramp);
        EXPECT_EQ(std::tuple(now->start, now->end - now->start + 1, e.seq->getTicks(part)),
                  std::tuple(2000, a.frames, a.length));
        EXPECT_EQ(takesOf(part)->takes[0].end, now->end); // in the file that is there now
        for (int i = 0; i < 3; i++) {
            float value = 0.0f;
            if (frames[i] < a.frames) now->sample->readFrames(now->start + frames[i], 1, &value);
            EXPECT_NEAR(value, a.values[i], 0.001f) << frames[i];
        }
        if (a.mode == processCut) {
            auto* copied = e.seq->clipboard.parts.getFirst();
            ASSERT_NE(copied, nullptr);
            const auto* gone = static_cast<CAudioEvent*>(copied->getEvents());
            EXPECT_EQ(
                std::tuple(gone->sample, gone->end - gone->start + 1, e.seq->getTicks(copied)),
                std::tuple(ramp, 48000 - a.frames, 1920 - a.length));
        }
        const std::string edited = e.bytes();
        e.undo();
        EXPECT_TRUE(e.bytes() == start);
        e.redo();
        EXPECT_TRUE(e.bytes() == edited);
    }
}

/// The clip plays what another program has made of its frames; a refusal leaves nothing behind.
TEST(Process, EditFramesOutside) {
    FlattenFixture e;
    CPart* part = e.addAudio(0, {{0, clip(e.sample, 1000, 1999)}});
    const std::string start = e.bytes();
    const CStr editor = e.folder.write("edit it", "#!/bin/sh\nhead -c 244 \"$1\" > \"$1.new\"\n"
                                                  "mv \"$1.new\" \"$1\"\ntouch \"$1.done\"\n");
    std::filesystem::permissions(editor.asChar(), std::filesystem::perms::all);
    const auto files = [&e] {
        return std::distance(std::filesystem::directory_iterator(e.folder.path.asChar()), {});
    };
    const CStr mark = e.folder.file("clip.wav.done");
    const auto done = [&mark] { return std::filesystem::exists(mark.asChar()); };
    EXPECT_EQ(openExternal(e.seq, part, e.folder.file("none"), [] { return true; }).sub(0, 15),
              "Could not start");
    EXPECT_EQ(openExternal(e.seq, part, editor, [&] { return comes(done) && false; }), "");
    EXPECT_TRUE(e.bytes() == start && e.host.undoList.empty());
    std::filesystem::remove(mark.asChar());
    EXPECT_EQ(files(), 1);
    EXPECT_EQ(openExternal(e.seq, part, editor, [&] { return comes(done); }), "");
    e.host.settle();
    const auto* now = static_cast<CAudioEvent*>(part->getEvents());
    EXPECT_EQ(std::tuple(now->start, now->end), std::tuple(0, 99)); // 44 bytes of header, 200 left
    e.undo();
    EXPECT_TRUE(e.bytes() == start);
}

/// What the menus offer follows from the selection.
TEST(Process, MenusFollowTheSelection) {
    const std::pair<CPartSummary, std::vector<int>> menus[] = {
        {{.selected = 1, .audio = 1, .monoEvents = 1}, {0, 7, 5, 6, 3, 4, 100, 101}},
        {{.selected = 1, .audio = 1, .stereoEvents = 1}, {0, 9, 7, 5, 6, 3, 4, 100, 101}},
        {{.selected = 1, .audio = 1, .monoEvents = 1, .selEnd = 9},
         {0, 1, 8, 2, -1, 9, 7, 5, 6, 100, 101}},
        {{.selected = 2, .audio = 2, .monoEvents = 1}, {0, 7, 5, 6, 3, 4, 102}},
        {{.selected = 2, .audio = 2, .multiclip = 1}, {10}},
        {{.selected = 1, .midi = 1}, {}},
    };
    for (const auto& [selection, expected] : menus) {
        std::vector<int> modes;
        for (const ProcessEntry& entry : audioProcessMenu(selection, true))
            modes.push_back(entry.mode);
        EXPECT_EQ(modes, expected);
    }
    EXPECT_EQ(midiProcessMenu({.midi = 1, .drum = 1}).size(), 9u);
    EXPECT_TRUE(midiProcessMenu({.audio = 1, .midi = 1}).empty());
    EXPECT_TRUE(drumProcessMenu({.midi = 1, .drum = 1}).empty());
    EXPECT_EQ(drumProcessMenu({.drum = 1}).size(), 4u);
}

/// The sections that were played, one behind the other, with what lies in them.
TEST(Process, RemixIsASong) {
    Edits e;
    e.addAudio(0, {{0, clip(e.sample)}});
    e.prog()->tempos.getFirst()->ramp = 1; // 100 to 140, 960 to 2880
    e.seq->tempo.changed();
    std::vector<CMarkerPart*> markers;
    for (const auto& [pos, length] : {std::pair{1920, 1920}, {3840, 960}}) {
        markers.push_back(new CMarkerPart);
        markers.back()->pos = pos;
        markers.back()->length = length;
        e.prog()->addMarker(markers.back(), nullptr);
    }
    EXPECT_NE(remix(e.seq, e.prog()), "");
    for (const int i : {1, 0, 1}) e.prog()->session.add(markers[size_t(i)]);
    const std::string start = e.bytes();
    CSeqProg* source = e.prog();
    EXPECT_EQ(remix(e.seq, source), "");
    e.host.settle();
    ASSERT_NE(e.prog(), source);
    EXPECT_EQ(e.prog()->id, "Remix 1");
    const auto at = [&e](int row) { return e.show(e.prog()->tracks.items(row)); };
    const std::string section = ":960 ghost 100=64/240 ";
    EXPECT_EQ(at(0),
              "| 0" + section + "| 960:1920 -1920=60/240 -10=62/960 ~-1920 ~0 | 2880" + section);
    EXPECT_EQ(e.part(e.prog()->tracks.items(1), 1)->pos, 960);
    EXPECT_EQ(e.showPoints(), "0@140 960@120 1920@140 ");
    const std::string edited = e.bytes();
    e.undo();
    EXPECT_TRUE(e.prog() == source && e.bytes() == start);
    e.redo();
    EXPECT_TRUE(e.bytes() == edited);
}

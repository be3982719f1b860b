#include "ClipFixture.h"
#include "engine/CSend.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "instruments/CSynthProg.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SoundSet.h"
#include "sequencer/song/CSubTrack.h"
#include "support/Places.h"
#include "support/Rows.h"

namespace {

/// A file of one track, a quarter of which has 960 ticks.
std::string fileOf(std::string track) {
    track.append({0, -1, 0x2F, 0});
    return std::string("MThd\0\0\0\6\0\0\0\1\3\300MTrk\0\0\0", 21) + char(track.size()) + track;
}

std::string note(int channel) {
    return {0, char(0x90 + channel), 40, 100, char(0x87), 0x40, char(0x80 + channel), 40, 0};
}

/// Two notes of a quarter each, the channels of which are told.
std::string midiFile(int firstChannel, int secondChannel) {
    return fileOf(note(firstChannel) + note(secondChannel));
}

std::string controllers(std::initializer_list<std::pair<int, int>> values) {
    std::string text;
    for (const auto& [number, value] : values)
        text.append({0, char(0xB0), char(number), char(value)});
    return text;
}

struct ImportFixture : ClipFixture {
    MidiSongResult import(const std::string& content, int factory = -1) {
        return openMidiSong(seq, put("a.mid", content), factory);
    }
    /// The tracks from one on: name, and what the sampler that it feeds is called.
    std::string tracks(int from) {
        std::string text;
        for (int i = from; i < seq->tracks.getCount(); i++) {
            auto* track = seq->tracks.items(i);
            text += std::string(track->id.asChar()) + ":";
            for (auto* comp : host->comps)
                if (getMIDICable(comp, track->outPort(), nullptr)) text += comp->id.asChar();
            text += " ";
        }
        return text;
    }

    CSampler* sampler() { return static_cast<CSampler*>(host->firstOfType(compSampler)); }

    int samplers() {
        int count = 0;
        for (auto* comp : host->comps) count += comp->type == compSampler;
        return count;
    }
};

} // namespace

/// Whatever is in the song already, what is imported is heard; one step takes it back whole.
TEST(SongSounds, EveryImportIsHeard) {
    const std::string piano = "instrument-1:" + std::string(factoryName(0)) + " ";
    for (const bool begun : {false, true})
        for (const auto& [first, second, tracks] : Rows<int, int, std::string>{
                 {0, 0, piano}, {9, 9, "instrument-1:Drums "}, {0, 9, piano + "Drums:Drums "}}) {
            SCOPED_TRACE(tracks + (begun ? " in a song" : ""));
            ImportFixture f;
            if (begun) f.addNotes(f.track(trackMIDI))->pos = 0;
            if (begun) f.seq->tracks.items(0)->id = "Mine";
            f.host->loop = f.seq->getProg()->loop = 1;
            EXPECT_EQ(f.import(midiFile(first, second)), MidiSongResult::good);
            EXPECT_EQ(f.tracks(begun), tracks);
            EXPECT_TRUE(f.sounds());
            // A song that only begins with it does not repeat its first bar for ever.
            EXPECT_EQ(f.seq->getLoop(), begun);
            const int made = f.samplers();
            f.undo();
            EXPECT_EQ(f.samplers(), 0);
            EXPECT_EQ(f.seq->tracks.getCount(), int(begun));
            f.redo();
            EXPECT_EQ(f.samplers(), made);
            EXPECT_TRUE(f.sounds());
        }
}

/// A bank is judged by any file: all of its tracks play the program, drums too.
TEST(SongSounds, OneProgramPlaysAllTracks) {
    ImportFixture f;
    EXPECT_EQ(f.import(midiFile(0, 9), 4), MidiSongResult::good);
    EXPECT_EQ(f.tracks(0), "instrument-1:Up-right bass Drums:Up-right bass ");
    EXPECT_TRUE(f.sounds());
}

/// Volume times expression, pan, sends and the range of the bend come to the strip; what changes
/// behind the first note to lanes, which keep a value until the next one.
TEST(SongSounds, FilesMixThemselves) {
    ImportFixture f;
    f.import(fileOf(controllers({{7, 64},
                                 {11, 127},
                                 {10, 1},
                                 {91, 127},
                                 {93, 0},
                                 {74, 20},
                                 {101, 0},
                                 {100, 0},
                                 {6, 7}}) +
                    note(0) + controllers({{11, 0}, {10, 127}}) + note(0)));
    CSampler* s = f.sampler();
    const COutputChannel* strip = s->output();
    EXPECT_FLOAT_EQ(strip->vol, 0.9f * 64 / 127) << "with room for the hall";
    EXPECT_FLOAT_EQ(strip->pan, -1.0f);
    ASSERT_EQ(f.host->sends.getCount(), 1) << "no chorus was asked for";
    EXPECT_GT(strip->sendLevels[0]->level, 0.3f);
    f.sampler()->getProg()->eachSound([](const CSound* sound) {
        EXPECT_EQ(int(sound->bendRange), 7);
        EXPECT_EQ(int(sound->ccMap[74]), targetNone) << "relative to a sound of the writer's";
    });
    auto* track = f.seq->tracks.items(0);
    auto* part = f.seq->getProg()->songTrackOf(track)->parts.getFirst();
    for (const auto& [param, value] : {std::pair(0, 0.0f), {1, 1.0f}}) {
        const CSubTrack* lane = track->findLane(f.sampler()->output(), param);
        ASSERT_NE(lane, nullptr);
        const CEnvEvent* first = part->getParam(lane->slot);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(first->delta, 960);
        EXPECT_FLOAT_EQ(first->value, value);
    }
    f.undo();
    EXPECT_EQ(f.host->sends.getCount(), 0);
    f.redo();
    EXPECT_GT(f.sampler()->output()->sendLevels[0]->level, 0.3f);
}

/// The set beside the program holds each number once, and an import takes what the file asks for.
TEST(SongSounds, FilesAskForTheirPrograms) {
    ImportFixture f;
    const CStr folder = builtFile("bin/sounds").c_str();
    const std::vector<SetProgram> set = listSoundSet(folder);
    ASSERT_EQ(set.size(), 128u);
    for (size_t i = 0; i < set.size(); i++) EXPECT_EQ(set[i].number, int(i));
    const std::string asksForViolin = {0, char(0xC0), 40};
    openMidiSong(f.seq, f.put("a.mid", fileOf(asksForViolin + note(0))), -1, folder);
    EXPECT_EQ(f.tracks(0), "instrument-1:Violin ");
    CSynthProg* prog = f.sampler()->getProg();
    EXPECT_EQ(prog->family, "Strings");
    EXPECT_EQ(int(prog->layer.load()->sounds.getFirst()->bendRange), 2);
    EXPECT_TRUE(f.sounds());
}

/// Every key of the kit sounds, by a clip of the built-in kit where there is one.
TEST(SongSounds, KitHasAllItsKeys) {
    ImportFixture f;
    f.import(midiFile(9, 9));
    int clips = 0;
    std::set<int> keys;
    f.sampler()->getProg()->eachSound([&](const CSound* s) {
        clips += s->type == typeWavSound;
        for (int key = s->lowKey; key <= s->hiKey; key++) keys.insert(key);
    });
    EXPECT_GE(clips, 5);
    for (int key = 35; key <= 81; key++) EXPECT_TRUE(keys.contains(key)) << key;
}

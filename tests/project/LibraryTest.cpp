#include "data/presets/Library.h"
#include "ClipFixture.h"
#include "base/Paths.h"
#include "data/presets/ArpPresets.h"
#include "data/presets/Clips.h"
#include "data/presets/Line.h"
#include "data/presets/TrackPresets.h"
#include "effects/CEffect.h"
#include "engine/Cables.h"
#include "project/BringIn.h"
#include "project/PresetFiles.h"
#include "project/TrackPreset.h"
#include "tools/soundtable/MusicProbe.h"
#include "tools/soundtable/PresetProbe.h"

#include <fstream>

namespace {

/// A folder with all presets and clips, written once.
const TempFolder& library() {
    static const TempFolder folder;
    static const bool written = [] {
        ClipFixture f;
        return presets::writeLibrary(f.host, folder.file("presets"), folder.file("clips"));
    }();
    EXPECT_TRUE(written);
    return folder;
}

std::vector<std::string> filesOf(const char* folder, const char* ending) {
    std::vector<std::string> all;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(library().file(folder).asChar()))
        if (entry.path().extension() == ending) all.push_back(entry.path().string());
    std::ranges::sort(all);
    return all;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// In its first four seconds.
bool isHeard(ClipFixture& f) {
    while (f.host->makeStretcher()) {
    }
    const std::vector<float> all = f.play(int(4.0 * double(f.host->rate)) / f.host->frames);
    return std::ranges::any_of(all, [](float v) { return std::fabs(v) > 0.01f; });
}

} // namespace

/// Each clip and each track that has notes to play sounds at once in an empty song.
TEST(Library, ClipsAndTracksSound) {
    const auto clips = filesOf("clips", ".qvc"), tracks = filesOf("presets", ".qvp");
    EXPECT_GE(clips.size(), 24u);
    EXPECT_GE(tracks.size(), 16u);
    for (const std::string& path : clips) {
        SCOPED_TRACE(path);
        ClipFixture f;
        ASSERT_TRUE(bringIn(f.seq, {{path.c_str(), {}}}, "Drop"));
        EXPECT_TRUE(isHeard(f));
    }
    for (const std::string& path : tracks) {
        SCOPED_TRACE(path);
        ClipFixture f;
        const std::string before = f.save();
        ASSERT_TRUE(bringIn(f.seq, {{path.c_str(), {}}}, "Add"));
        f.expectStep(before);
        CSongTrack* made = f.seq->getProg()->tracks.first();
        // Written again it is the same.
        const CStr again = f.files.file("again.qvp");
        ASSERT_TRUE(saveTrack(made->track, again));
        EXPECT_TRUE(f.files.read("again.qvp") == readFile(path));
        if (made->track->kind != trackMIDI) continue;
        CPart* notes = f.addNotes(made);
        for (CBaseEvent* e = notes->getEvents(); e; e = e->next)
            static_cast<CMIDIEvent*>(e)->length = barTicks;
        notes->pos = 0;
        EXPECT_TRUE(isHeard(f));
    }
}

TEST(Library, DamagedTracksNeverHurt) {
    const std::string path = filesOf("presets", ".qvp").front();
    const std::string bytes = readFile(path).substr(0, 1500);
    ClipFixture f;
    const std::string before = f.save();
    int round = 0;
    eachDamage(bytes, [&](const std::string& damaged) {
        if (round++ % 7) return;
        if (!bringIn(f.seq, {{f.put("a.qvp", damaged), {}}}, "Add")) return;
        f.runAlone();
        f.undo();
        f.host->undoClear();
    });
    EXPECT_TRUE(f.save() == before);
    EXPECT_EQ(trackPresetKind(f.put("empty.qvp", "")), 0);
}

namespace {

/// What two presets are to be apart at least, so that a list is worth its length.
void expectApart(const std::vector<soundtable::Figures>& bank) {
    for (const soundtable::Pair& pair : soundtable::pairsOf(bank))
        EXPECT_FALSE(pair.tooNear())
            << pair.first->name << ", " << pair.second->name << ": " << pair.apart << " dB";
}

} // namespace

/// Nothing is missing of what chains call for, none is silent, clips, is far louder than what goes
/// in, or like another.
TEST(Library, EffectsAreWhatTheySay) {
    ClipFixture f;
    ASSERT_EQ(f.host->rate, soundtable::probeRate);
    const auto all = presets::rackPresets();
    EXPECT_GE(all.size(), 60u);
    const double dry = soundtable::loudnessOf(soundtable::probeOf(false));
    std::vector<soundtable::Figures> bank;
    for (const presets::RackPreset& preset : all) {
        CEffect rack(f.host);
        EXPECT_EQ(presets::fillRack(&rack, preset), "") << preset.name;
        bank.push_back(soundtable::measureRack(f.host, preset));
        bank.back().family = preset.use;
        EXPECT_LT(bank.back().chordLufs, dry + 12) << preset.name;
        EXPECT_GT(bank.back().chordLufs, dry - 24) << preset.name;
        EXPECT_LT(bank.back().chordPeak, 0.5) << preset.name;
    }
    expectApart(bank);
}

/// Arpeggios by their notes in time, clips and tracks as they play.
TEST(Library, WhatPlaysIsFarApart) {
    ClipFixture f;
    std::vector<soundtable::Figures> arpeggios, tracks, clips;
    for (const auto& p : presets::arpPresets())
        arpeggios.push_back(soundtable::measureArpeggio(f.host, p));
    for (const auto& p : presets::trackPresets())
        tracks.push_back(soundtable::measureTrack(f.host, p));
    for (const auto& c : presets::drumClips()) clips.push_back(soundtable::measureClip(c));
    for (const auto& c : presets::noteClips()) clips.push_back(soundtable::measureClip(f.host, c));
    for (const auto& l : presets::soundLoops()) clips.push_back(soundtable::measureClip(l));
    EXPECT_GE(arpeggios.size(), 24u);
    for (const auto* bank : {&arpeggios, &tracks, &clips}) expectApart(*bank);
}

TEST(Library, KitsAreFarApartAndBeginAlike) {
    std::vector<soundtable::Figures> bank;
    for (const presets::Kit& kit : presets::kits()) {
        bank.push_back(soundtable::measureKit(kit));
        bank.back().family = kit.name;
        ASSERT_GE(kit.voices.size(), 8u) << kit.name;
        EXPECT_TRUE(kit.voices[3].place.group &&
                    kit.voices[3].place.group == kit.voices[4].place.group)
            << kit.name;
        for (const presets::DrumVoice& voice : kit.voices)
            for (const float v : presets::synthesize(voice))
                ASSERT_LE(std::fabs(v), 0.86f) << voice.name;
    }
    EXPECT_GE(bank.size(), 8u);
    expectApart(bank);
}

#include "project/BringIn.h"
#include "ClipFixture.h"
#include "base/FullDisk.h"
#include "effects/CEffect.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "instruments/CArp.h"
#include "instruments/FactoryPrograms.h"
#include "project/PresetFiles.h"
#include "sequencer/song/TrackInstrument.h"
#include "support/Rows.h"

#include <algorithm>

namespace {

constexpr const char* font = "/usr/share/sounds/sf2/TimGM6mb.sf2";

struct BringFixture : ClipFixture {
    /// Each track with its kind, parts, drums, inserts, and the programs of the samplers it plays.
    std::string song() {
        std::string text;
        const auto put = [&text](const char* what, int count) {
            if (count > 0) text += std::string(" ") + what + std::to_string(count);
        };
        for (auto* t : seq->getProg()->tracks) {
            CTrack* track = t->track;
            text += std::to_string(track->kind);
            for (auto* part : t->parts) put("at", part->pos + 1);
            put("drums", track->drumLayer() ? track->drumLayer()->sounds.getCount() : 0);
            put("inserts", track->output() ? track->output()->inserts.getCount() : 0);
            for (auto* comp : host->comps)
                if (track->outPort() && getMIDICable(comp, track->outPort(), nullptr))
                    put("programs", comp->progs.getCount());
            text += ";";
        }
        return text;
    }
    bool bring(const CStr& path, CSongTrack* onto, int tick = 0) {
        return bringIn(seq, {{path, {onto, tick}}}, "Drop");
    }
};

/// A file of each kind, made in a song of its own.
std::string content(const std::string& name) {
    ClipFixture f;
    const CStr path = f.files.file(name.c_str());
    if (name == "a.qvc") return f.clipOf(f.add(partAudio));
    if (name == "a.wav") {
        writeWav(path, 44100);
    } else if (name == "a.qvs") {
        auto* sampler = f.device.add(new CSampler(f.host));
        EXPECT_TRUE(saveProgram(sampler, path));
    } else if (name == "a.qvd") {
        CSongTrack* drums = f.track(trackDrum);
        f.addHits(drums);
        EXPECT_TRUE(saveKit(drums->track, path));
    } else if (name == "a.qve") {
        auto* rack = f.device.add(new CEffect(f.host));
        EXPECT_TRUE(saveProgram(rack, path));
    } else {
        EXPECT_TRUE(saveProgram(f.device.add(new CArp(f.host)), path));
    }
    return f.files.read(name.c_str());
}

} // namespace

TEST(BringIn, EachKindFindsItsPlace) {
    const std::string presets = std::to_string(factoryCount),
                      more = std::to_string(factoryCount + 1);
    for (const auto& [file, kind, song] : Rows<std::string, int, std::string>{
             {"a.wav", 0, "3 at961;"},
             {"a.wav", trackAudio, "3 at961;"},
             {"a.wav", trackMIDI, "2 programs" + presets + ";3 at961;"},
             {"a.qvc", trackAudio, "3 at961;"},
             {"a.qvs", 0, "2 programs1;"},
             {"a.qvs", trackMIDI, "2 programs" + more + ";"},
             {"a.qvs", trackDrum, "5;2 programs1;"},
             {"a.qvd", 0, "5 drums2;"},
             {"a.qvd", trackDrum, "5 drums2;"},
             {"a.qve", trackAudio, "3 inserts1;"}}) {
        SCOPED_TRACE(file + " on " + std::to_string(kind));
        BringFixture f;
        CSongTrack* onto = kind ? f.track(kind) : nullptr;
        if (kind == trackMIDI) addTrackInstrument(f.seq, onto->track, nullptr);
        const std::string before = f.song();
        ASSERT_TRUE(f.bring(f.put(file.c_str(), content(file)), onto, 960));
        EXPECT_EQ(f.song(), song);
        f.undo();
        EXPECT_EQ(f.song(), before);
        f.redo();
        EXPECT_EQ(f.song(), song);
    }
}

TEST(BringIn, SoundFontsBecomePrograms) {
    BringFixture f;
    ASSERT_TRUE(f.bring(font, nullptr));
    auto* made = static_cast<CSampler*>(f.host->firstOfType(compSampler));
    ASSERT_NE(made, nullptr);
    const int presets = made->progs.getCount();
    EXPECT_GT(presets, 100);
    CSongTrack* player = f.seq->getProg()->tracks.first();
    EXPECT_EQ(player->track->id, "TimGM6mb");
    f.addNotes(player);
    EXPECT_TRUE(f.sounds());
    ASSERT_TRUE(f.bring(font, player));
    EXPECT_EQ(made->progs.getCount(), 2 * presets);
    EXPECT_EQ(made->curProg, presets);
    f.undo();
    EXPECT_EQ(made->progs.getCount(), presets);
    EXPECT_EQ(made->curProg, 0);
}

TEST(BringIn, ArpeggiosPlayAtOnce) {
    BringFixture f;
    CSongTrack* player = f.track(trackMIDI);
    EXPECT_FALSE(player->track->arp->enabled);
    EXPECT_TRUE(f.bring(f.put("a.qva", content("a.qva")), player));
    EXPECT_TRUE(player->track->arp->enabled);
}

/// Neither a locked track nor a song that is full takes what needs a track; nothing comes in then,
/// not even a sample.
TEST(BringIn, NeedsATrackThatTakesIt) {
    for (const auto& [file, kind] : Rows<std::string, int>{
             {"a.wav", trackAudio}, {"a.qvc", trackAudio}, {"a.qvd", trackDrum}, {"a.qvs", 0}})
        for (const bool full : {false, true}) {
            if (!full && !kind) continue;
            SCOPED_TRACE(file + (full ? " into a full song" : " on a locked track"));
            const std::string bytes = content(file);
            BringFixture f;
            CSongTrack* onto = full ? nullptr : f.track(kind);
            if (onto) onto->track->locked = 1;
            while (full && f.seq->hasTrackRoom(trackDrum)) f.track(trackDrum);
            const std::string before = f.song();
            const int samples = f.host->samples.getCount();
            shown.clear();
            EXPECT_FALSE(f.bring(f.put(file.c_str(), bytes), onto));
            const std::string why = full ? "Too many tracks" : "The track is locked: ";
            ASSERT_EQ(shown.size(), 1u);
            EXPECT_NE(shown[0].find(why), std::string::npos) << shown[0];
            EXPECT_EQ(f.song(), before);
            EXPECT_EQ(f.host->samples.getCount(), samples);
            EXPECT_TRUE(f.host->undoText().empty());
        }
}

/// Files that come together are one step, new tracks lie below the one they were meant for, in its
/// folder, and what was wrong with one of them keeps all others out.
TEST(BringIn, FilesComeTogether) {
    const std::string waveBytes = content("a.wav"), kitBytes = content("a.qvd");
    BringFixture f;
    f.host->projectFile = f.files.file("song.qv");
    f.files.write("song.qv", "");
    for (const int kind : {trackFolder, trackMIDI, trackAudio}) f.track(kind);
    const auto row = [&](int i) { return f.seq->getProg()->tracks.items(i); };
    row(1)->track->folder = row(0)->track;
    const CStr wave = f.put("a.wav", waveBytes), kit = f.put("k.qvd", kitBytes);
    const CStr midi = f.put("m.mid", std::string("MThd\0\0\0\6\0\0\0\1\3\300MTrk\0\0\0\15"
                                                 "\0\x90\x28\x64\x87\x40\x80\x28\0\0\xff\x2f\0",
                                                 35));
    const CStr four = f.files.file("four.wav");
    CSample sides;
    sides.setFormat(44100, 16, 4);
    sides.create(four);
    sides.writeBytes(4410, std::vector<unsigned char>(4410 * 8).data());
    sides.writeHeader();
    sides.close();
    const std::string before = f.song();
    const auto come = [&](const CStr& last) {
        return bringIn(f.seq,
                       {{wave, {row(2), 960}},
                        {four, {row(1), 1920}},
                        {midi, {row(1), 480}},
                        {kit, {row(1), 0, 1}},
                        {last, {row(1), 3840}}},
                       "Drop all");
    };
    for (const char* bad : {"bad.wav", "bad.mid", "bad.qvc", "bad.qvd"}) {
        shown.clear();
        EXPECT_FALSE(come(f.put(bad, "junk")));
        EXPECT_EQ(shown.size(), 1u) << bad;
        EXPECT_EQ(f.song(), before);
        EXPECT_TRUE(f.host->samples.empty() && f.host->undoText().empty());
        EXPECT_TRUE(std::filesystem::is_empty(f.files.file("song_audio").asChar())) << bad;
    }
    ASSERT_TRUE(come(wave));
    EXPECT_EQ(f.song(), "1;2 at481 programs1"
                        ";5 drums2;3 at1921 at3841;3 at1921;3 at1921;3 at1921;3 at961;");
    for (int i = 1; i < 7; i++) EXPECT_EQ(row(i)->track->folder.load(), row(0)->track) << i;
    EXPECT_EQ(f.host->undoText(), CStr("Drop all"));
    f.undo();
    EXPECT_EQ(f.song(), before);
}

/// Files that a full disk has no room for come with nothing else either.
TEST(BringIn, AFullDiskLeavesTheSong) {
    BringFixture f;
    f.host->projectFile = f.files.file("song.qv");
    f.files.write("song.qv", "");
    const CStr small = f.files.file("small.wav"), large = f.files.file("large.wav");
    writeWav(small, 100);
    writeWav(large, 44100);
    const FullDisk disk(1 << 15);
    shown.clear();
    EXPECT_FALSE(bringIn(f.seq, {{small, {}}, {large, {}}}, "Drop"));
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_NE(shown[0].find("There is no room"), std::string::npos) << shown[0];
    EXPECT_EQ(f.song(), "");
    EXPECT_TRUE(f.host->samples.empty() && f.host->undoText().empty());
    EXPECT_TRUE(std::filesystem::is_empty(f.files.file("song_audio").asChar()));
}

/// What is no such file, or for no such track, is told and leaves nothing.
TEST(BringIn, RefusesWithoutATrace) {
    for (const char* name :
         {"a.wav", "a.mp3", "a.mid", "a.qvc", "a.sf2", "a.qvs", "a.qvd", "a.qve", "a.qva", "a.txt"})
        for (const int kind : {0, int(trackMIDI), int(trackDrum), int(trackAudio)}) {
            SCOPED_TRACE(std::string(name) + " on " + std::to_string(kind));
            BringFixture f;
            CSongTrack* onto = kind ? f.track(kind) : nullptr;
            const std::string before = f.song();
            shown.clear();
            EXPECT_FALSE(f.bring(f.put(name, "no such file"), onto));
            EXPECT_EQ(shown.empty(), songFileOf(name) == SongFile::none);
            EXPECT_EQ(f.song(), before);
            EXPECT_TRUE(f.host->undoText().empty());
        }
}

#include "ClipFixture.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "instruments/FactoryPrograms.h"
#include "support/Rows.h"

namespace {

/// Two notes of a quarter each, the channels of which are told, in a file of one track.
std::string midiFile(int firstChannel, int secondChannel) {
    const auto note = [](int channel) {
        return std::string{0,    char(0x90 + channel), 40, 100, char(0x87),
                           0x40, char(0x80 + channel), 40, 0};
    };
    std::string track = note(firstChannel);
    track.append(note(secondChannel)).append({0, -1, 0x2F, 0});
    return std::string("MThd\0\0\0\6\0\0\0\1\3\300MTrk\0\0\0", 21) + char(track.size()) + track;
}

struct ImportFixture : ClipFixture {
    MidiSongResult import(const std::string& content, int factory = -1) {
        return openMidiSong(seq, put("a.mid", content), factory);
    }
    /// The tracks from one on: name, and what the sampler that it feeds is called.
    std::string tracks(int from) {
        std::string text;
        for (int i = from; i < seq->tracks.getCount(); i++) {
            auto* track = static_cast<CTrack*>(seq->tracks.items(i));
            text += std::string(track->id.asChar()) + ":";
            for (auto* comp : each<CComp>(host->comps))
                if (getMIDICable(comp, track->outPort(), nullptr)) text += comp->id.asChar();
            text += " ";
        }
        return text;
    }

    int samplers() {
        int count = 0;
        for (auto* comp : each<CComp>(host->comps)) count += comp->type == compSampler;
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
            if (begun) static_cast<CTrack*>(f.seq->tracks.items(0))->id = "Mine";
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

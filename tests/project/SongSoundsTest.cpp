#include "ClipFixture.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "instruments/FactoryPrograms.h"

#include <algorithm>

namespace {

/// Two notes of a quarter each, the channels of which are told, in a file of one track.
std::string midiFile(int firstChannel, int secondChannel) {
    const auto note = [](int channel) {
        return std::string{0,    char(0x90 + channel), 40, 100, char(0x87),
                           0x40, char(0x80 + channel), 40, 0};
    };
    const std::string track =
        note(firstChannel) + note(secondChannel) + std::string{0, -1, 0x2F, 0};
    return std::string("MThd\0\0\0\6\0\0\0\1\3\300MTrk\0\0\0", 21) + char(track.size()) + track;
}

struct ImportFixture : ClipFixture {
    MidiSongResult import(const std::string& content) {
        return openMidiSong(seq, put("a.mid", content));
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
    bool sounds() {
        const std::vector<float> all = play(40);
        return std::ranges::any_of(all, [](float value) { return std::abs(value) > 0.01f; });
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
    struct Case {
        const char* name;
        int first, second;
        std::string tracks;
    };
    const std::string first = factoryName(0);
    const Case cases[] = {{"one channel", 0, 0, "instrument-1:" + first + " "},
                          {"drums alone", 9, 9, "instrument-1:Drums "},
                          {"both", 0, 9, "instrument-1:" + first + " Drums:Drums "}};
    for (bool begun : {false, true})
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(c.name) + (begun ? " in a song" : ""));
            ImportFixture f;
            if (begun) f.addNotes(f.track(trackMIDI))->pos = 0;
            if (begun) static_cast<CTrack*>(f.seq->tracks.items(0))->id = "Mine";
            f.host->loop = f.seq->getProg()->loop = 1;
            EXPECT_EQ(f.import(midiFile(c.first, c.second)), MidiSongResult::good);
            EXPECT_EQ(f.tracks(begun), c.tracks);
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

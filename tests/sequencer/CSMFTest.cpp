#include "sequencer/midi/CSMF.h"

#include "SongFixture.h"
#include "base/TempFolder.h"
#include "sequencer/midi/MidiExport.h"
#include "sequencer/midi/MidiImport.h"

#include <algorithm>
#include <sstream>

namespace {

using Lines = std::vector<std::string>;

struct MidiFixture : SongFixture {
    TempFolder folder;

    MidiImport import(const CStr& path) {
        MidiImport result = MidiImport::good;
        step([&](CUndo* undo) { result = openMIDIFile(seq, nullptr, path, undo, 0); });
        return result;
    }
    /// What an independent reader makes of the song's file, which it has to take without a word.
    Lines exported(MidiRange range = MidiRange::song) {
        EXPECT_EQ(exportMIDIFile(seq, folder.file("out.mid"), range), MidiExport::good);
        const std::string at = folder.path.asChar();
        const std::string command = "midicsv " + at + "/out.mid >" + at + "/csv 2>" + at + "/err";
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(folder.read("err"), "");
        std::istringstream text(folder.read("csv"));
        Lines all;
        for (std::string line; std::getline(text, line);) all.push_back(line);
        return all;
    }
};

} // namespace

/// Real songs come back from our file as they were, and another program has nothing against it.
TEST(CSMF, KeepsRealSongs) {
    int songs = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator("/usr/share/games/openttd/baseset/openmsx")) {
        if (entry.path().extension() != ".mid") continue;
        songs++;
        SCOPED_TRACE(entry.path());
        MidiFixture first, second;
        ASSERT_EQ(first.import(entry.path().c_str()), MidiImport::good);
        Lines ours = first.exported();
        ASSERT_GT(ours.size(), 100u);
        ASSERT_EQ(second.import(first.folder.file("out.mid")), MidiImport::good);
        Lines again = second.exported();
        for (Lines* lines : {&ours, &again})
            std::ranges::sort(*lines); // at a tick any order will do
        EXPECT_EQ(again, ours);
    }
    EXPECT_GE(songs, 30);
}

/// What is written of parts, ranges, drums, points and of messages that share a tick.
TEST(CSMF, WritesWhatTheSongPlays) {
    MidiFixture f;
    CSongTrack* keys = f.track(trackMIDI);
    keys->track->id = "Keys";
    keys->track->channel = 4;
    CPart* part = midiPart(960, 1920);
    part->offset = -480;
    const auto add = [&](int tick, int data, int length = 0) {
        CMIDIEvent* event = note(0, length);
        event->data = data;
        part->addEvent(tick, event);
    };
    add(0, 0x640090 | 40 << 8, 100); // before the part
    add(480, asData(0xB4, 0, 1));    // bank, program and note of one tick keep their order
    add(480, asData(0xC4, 7, 0));
    add(480, 0x640090 | 60 << 8, 480);
    add(960, 0x640090 | 60 << 8, 0);     // again, where the first one ends
    add(2300, 0x640090 | 62 << 8, 9000); // longer than the part
    add(2400, 0x640090 | 63 << 8, 10);   // behind it
    CMIDIEvent* silent = note(61, 100);
    silent->style.muted = 1;
    part->addEvent(700, silent);
    keys->addPart(part, nullptr);
    CSongTrack* drums = f.track(trackDrum);
    drums->track->id = "Kit";
    drums->track->channel = 9;
    auto* beat = new CDrumPart;
    beat->pos = 3000000; // a number of four bytes
    CDrumEvent* hit = createDrumEvent();
    hit->sound = 2;
    hit->length = 240;
    hit->velocity = 0.5f;
    beat->addEvent(0, hit);
    drums->addPart(beat, nullptr);
    f.host.tempo = 99.9f;
    f.tempoAt(0, 120.0f);
    f.tempoAt(960, 90.5f);
    f.tempoAt(5000, 200.0f);
    f.tempoAt(4000000, 100.0f); // behind the song
    for (const auto& [tick, den] : {std::pair{0, 8}, {1920, 3}}) {
        auto* point = new CTimesigPart;
        point->pos = tick;
        point->setTimesig(7, den);
        f.prog()->addTimesig(point, nullptr);
    }
    const auto exported = [&f](MidiRange range = MidiRange::song) {
        Lines all = f.exported(range);
        std::erase_if(all, [](const std::string& line) {
            return line.find("_track") != line.npos || line.find("End_of_file") != line.npos;
        });
        return all;
    };
    Lines whole = {"0, 0, Header, 1, 4, 960",
                   "1, 0, Tempo, 500000",
                   "1, 960, Tempo, 666666",
                   "1, 5000, Tempo, 300000",
                   "2, 0, Time_signature, 7, 3, 24, 8",
                   "2, 1920, Time_signature, 7, 2, 24, 8",
                   "3, 0, Channel_prefix, 4",
                   "3, 0, Title_t, \"Keys\"",
                   "3, 960, Control_c, 4, 0, 1",
                   "3, 960, Program_c, 4, 7",
                   "3, 960, Note_on_c, 4, 60, 100",
                   "3, 1440, Note_on_c, 4, 60, 0",
                   "3, 1440, Note_on_c, 4, 60, 100",
                   "3, 1441, Note_on_c, 4, 60, 0",
                   "3, 2780, Note_on_c, 4, 62, 100",
                   "3, 2880, Note_on_c, 4, 62, 0",
                   "4, 0, Channel_prefix, 9",
                   "4, 0, Title_t, \"Kit\"",
                   "4, 3000000, Note_on_c, 9, 38, 64",
                   "4, 3000240, Note_on_c, 9, 38, 0"};
    EXPECT_EQ(exported(), whole);

    keys->setSoloed(true);
    whole[0] = "0, 0, Header, 1, 3, 960";
    whole.resize(whole.size() - 4);
    EXPECT_EQ(exported(), whole);
    drums->setMuted(true);
    keys->setSoloed(false);
    EXPECT_EQ(exported(), whole);

    EXPECT_EQ(f.seq->getLoop(), 1); // and all was written
    f.seq->setLoopSection(1000, 1500);
    const Lines between = {"0, 0, Header, 1, 3, 960",           "1, 0, Tempo, 666666",
                           "2, 0, Time_signature, 7, 3, 24, 8", "3, 0, Channel_prefix, 4",
                           "3, 0, Title_t, \"Keys\"",           "3, 440, Note_on_c, 4, 60, 100",
                           "3, 441, Note_on_c, 4, 60, 0"};
    EXPECT_EQ(exported(MidiRange::loop), between);
}

/// Without points the host's tempo and the song's signature stand in the file. A file that cannot
/// be made or kept leaves what was there.
TEST(CSMF, FailsWithoutATrace) {
    MidiFixture f;
    f.host.tempo = 119.9f;
    f.track(trackMIDI)->track->channel = -1;
    const Lines lines = f.exported();
    for (const char* line : {"1, 0, Tempo, 504201", "2, 0, Time_signature, 4, 2, 24, 8"})
        EXPECT_EQ(std::ranges::count(lines, line), 1) << line;
    EXPECT_EQ(exportMIDIFile(f.seq, f.folder.file("none/out.mid")), MidiExport::notCreated);
    const CStr full = f.folder.file("full.mid");
    std::filesystem::create_symlink("/dev/full", full.asChar());
    EXPECT_EQ(exportMIDIFile(f.seq, full), MidiExport::noRoom);
    EXPECT_TRUE(std::filesystem::is_symlink(full.asChar()));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(f.folder.path.asChar()), {}), 4);
}

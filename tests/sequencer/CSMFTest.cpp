#include "sequencer/CSMF.h"

#include "SongFixture.h"
#include "base/TempFolder.h"
#include "engine/MidiBytes.h"
#include "sequencer/MidiExport.h"
#include "sequencer/MidiImport.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

namespace {

/// Track, tick, message, length of a note, else 0.
using Played = std::tuple<int, int, int, int>;

/// Of notes of one key that overlap, a file cannot tell which one ends: the earlier one does.
std::vector<Played> firstEndsFirst(std::vector<Played> list) {
    std::sort(list.begin(), list.end());
    std::map<std::tuple<int, int, int>, std::vector<int>> ends;
    const auto keyOf = [](const Played& p) {
        return std::tuple(std::get<0>(p), chByte(std::get<2>(p)), asByte1(std::get<2>(p)));
    };
    for (const Played& p : list)
        if (std::get<3>(p) > 0) ends[keyOf(p)].push_back(std::get<1>(p) + std::get<3>(p));
    for (auto& [key, ticks] : ends) std::sort(ticks.rbegin(), ticks.rend());
    for (Played& p : list) {
        if (std::get<3>(p) == 0) continue;
        std::vector<int>& ticks = ends[keyOf(p)];
        std::get<3>(p) = ticks.back() - std::get<1>(p);
        ticks.pop_back();
    }
    std::sort(list.begin(), list.end());
    return list;
}

struct MidiFixture : SongFixture {
    TempFolder folder;

    MidiFixture() { seq->setLoop(0); }
    MidiImport import(const CStr& path) {
        MidiImport result = MidiImport::good;
        step([&](CUndo* undo) { result = openMIDIFile(seq, nullptr, path, undo, 0); });
        return result;
    }
    /// What the song plays, apart from what its tracks are called.
    std::vector<Played> played() {
        std::vector<Played> list;
        int index = 0;
        for (auto* t : each<CSongTrack>(prog()->tracks)) {
            for (auto* part : each<CPart>(t->parts)) {
                int tick = part->pos + part->offset;
                for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
                    const auto* m = static_cast<CMIDIEvent*>(e);
                    const bool note = noteOn(m->data);
                    list.emplace_back(index, tick += e->delta,
                                      note ? t->track->setCh(m->data) : m->data,
                                      note ? std::max(1, m->length) : 0);
                }
            }
            index++;
        }
        return firstEndsFirst(std::move(list));
    }
    std::string namesAndPoints() {
        std::ostringstream text;
        for (auto* t : each<CSongTrack>(prog()->tracks))
            text << t->track->id.asChar() << " " << t->track->channel << "\n";
        for (auto* p : each<CTempoPart>(prog()->tempos))
            text << p->pos << " " << p->getTempo() << "\n";
        // What is in force without points has to stand in the file.
        if (prog()->tempos.empty()) text << "0 " << host.tempo << "\n";
        if (prog()->timesigs.empty()) text << "0 4/4\n";
        for (auto* p : each<CTimesigPart>(prog()->timesigs))
            text << p->pos << " " << p->getNum() << "/" << p->getDen() << "\n";
        return text.str();
    }
    /// The lines that the independent reader makes of a file, which it has to take without a word.
    std::vector<std::string> lines(const char* name) const {
        std::vector<std::string> all = linesOf(folder.file(name).asChar());
        EXPECT_EQ(folder.read("out.csv.err"), "") << name;
        return all;
    }
    std::vector<std::string> linesOf(const std::string& path) const {
        const std::string csv = folder.file("out.csv").asChar(), err = csv + ".err";
        const std::string command = "midicsv " + path + " >" + csv + " 2>" + err;
        EXPECT_EQ(std::system(command.c_str()), 0) << "is midicsv there?";
        std::istringstream text(folder.read("out.csv"));
        std::vector<std::string> all;
        for (std::string line; std::getline(text, line);) all.push_back(line);
        return all;
    }
};

std::vector<std::string> fields(const std::string& line) {
    std::vector<std::string> list;
    std::istringstream text(line);
    for (std::string field; std::getline(text, field, ',');)
        list.push_back(field.substr(std::min(field.size(), field.find_first_not_of(' '))));
    return list;
}

/// The channel messages of such lines, in the form of `played`.
std::vector<Played> playedIn(const std::vector<std::string>& lines) {
    constexpr int pointTracks = 3; // tempos and signatures come first, and the reader counts from 1
    std::vector<Played> list;
    std::map<std::tuple<int, int, int>, std::deque<size_t>> pending;
    const std::map<std::string, int> kinds = {{"Note_on_c", midiNoteOn},
                                              {"Control_c", midiController},
                                              {"Program_c", midiProgram},
                                              {"Pitch_bend_c", midiPitchBend},
                                              {"Channel_aftertouch_c", midiPressure}};
    for (const std::string& line : lines) {
        const std::vector<std::string> f = fields(line);
        const auto kind = f.size() > 2 ? kinds.find(f[2]) : kinds.end();
        if (kind == kinds.end()) continue;
        const int track = std::stoi(f[0]) - pointTracks, tick = std::stoi(f[1]);
        const int channel = std::stoi(f[3]), first = std::stoi(f[4]);
        const int second = f.size() > 5 ? std::stoi(f[5]) : 0;
        int data = asData(kind->second + channel, first, second);
        if (kind->second == midiPitchBend)
            data = asData(midiPitchBend + channel, first & 127, first >> 7);
        auto& open = pending[{track, channel, first}];
        if (kind->second == midiNoteOn && second == 0) {
            if (open.empty()) {
                ADD_FAILURE() << line << ": ends what did not begin";
                continue;
            }
            std::get<3>(list[open.front()]) = tick - std::get<1>(list[open.front()]);
            open.pop_front();
            continue;
        }
        if (kind->second == midiNoteOn) open.push_back(list.size());
        list.emplace_back(track, tick, data, 0);
    }
    return firstEndsFirst(std::move(list));
}

/// The notes that begin in such lines, as channel, key and velocity, whenever that is.
std::multiset<std::string> notesIn(const std::vector<std::string>& lines) {
    std::multiset<std::string> notes;
    for (const std::string& line : lines) {
        const std::vector<std::string> f = fields(line);
        if (f.size() > 5 && f[2] == "Note_on_c" && f[5] != "0")
            notes.insert(f[3] + " " + f[4] + " " + f[5]);
    }
    return notes;
}

} // namespace

/// Real songs come back from our file as they were, and another program reads the same in it.
TEST(CSMF, KeepsRealSongs) {
    int songs = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator("/usr/share/games/openttd/baseset/openmsx")) {
        if (entry.path().extension() != ".mid") continue;
        songs++;
        SCOPED_TRACE(entry.path());
        MidiFixture first;
        ASSERT_EQ(first.import(entry.path().c_str()), MidiImport::good);
        const std::vector<Played> wanted = first.played();
        ASSERT_GT(wanted.size(), 100u);
        ASSERT_EQ(exportMIDIFile(first.seq, first.folder.file("out.mid")), MidiExport::good);
        EXPECT_EQ(playedIn(first.lines("out.mid")), wanted);
        EXPECT_EQ(notesIn(first.lines("out.mid")), notesIn(first.linesOf(entry.path())))
            << "on the channels of the file";
        const std::string points = first.namesAndPoints();

        MidiFixture second;
        ASSERT_EQ(second.import(first.folder.file("out.mid")), MidiImport::good);
        EXPECT_EQ(second.played(), wanted);
        EXPECT_EQ(second.namesAndPoints(), points);
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
        CMIDIEvent* event = createMIDIEvent();
        event->data = data;
        event->length = length;
        part->addEvent(tick, event);
    };
    add(0, 0x640090 | 40 << 8, 100); // before the part
    add(480, asData(0xB4, 0, 1));    // bank, program and note of one tick keep their order
    add(480, asData(0xC4, 7, 0));
    add(480, 0x640090 | 60 << 8, 480);
    add(960, 0x640090 | 60 << 8, 0);     // again, where the first one ends
    add(2300, 0x640090 | 62 << 8, 9000); // longer than the part
    add(2400, 0x640090 | 63 << 8, 10);   // behind it
    keys->addPart(part, nullptr);
    CSongTrack* drums = f.track(trackDrum);
    drums->track->id = "Kit";
    drums->track->channel = 9;
    auto* beat = new CDrumPart;
    CDrumEvent* hit = createDrumEvent();
    hit->sound = 2;
    hit->length = 240;
    hit->velocity = 0.5f;
    beat->addEvent(0, hit);
    drums->addPart(beat, nullptr);
    f.host.tempo = 99.9f;
    for (const auto& [tick, bpm] : {std::pair{0, 120.0f}, {960, 90.5f}, {5000, 200.0f}}) {
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        f.prog()->addTempo(point, nullptr);
    }
    for (const auto& [tick, den] : {std::pair{0, 8}, {1920, 3}}) {
        auto* point = new CTimesigPart;
        point->pos = tick;
        point->setTimesig(7, den);
        f.prog()->addTimesig(point, nullptr);
    }
    using Lines = std::vector<std::string>;
    const auto exported = [&] {
        EXPECT_EQ(exportMIDIFile(f.seq, f.folder.file("out.mid")), MidiExport::good);
        Lines all = f.lines("out.mid");
        all.erase(std::remove_if(all.begin(), all.end(),
                                 [](const std::string& line) {
                                     return line.find("_track") != std::string::npos ||
                                            line.find("End_of_file") != std::string::npos;
                                 }),
                  all.end());
        return all;
    };
    const Lines kit = {"4, 0, Channel_prefix, 9", "4, 0, Title_t, \"Kit\"",
                       "4, 0, Note_on_c, 9, 38, 64", "4, 240, Note_on_c, 9, 38, 0"};
    Lines whole = {"0, 0, Header, 1, 4, 960",
                   "1, 0, Tempo, 500000",
                   "1, 960, Tempo, 666666",
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
                   "3, 2880, Note_on_c, 4, 62, 0"};
    Lines withKit = whole;
    withKit.insert(withKit.end(), kit.begin(), kit.end());
    EXPECT_EQ(exported(), withKit);

    drums->setMuted(true);
    whole[0] = "0, 0, Header, 1, 3, 960";
    EXPECT_EQ(exported(), whole);
    drums->setMuted(false);
    keys->setSoloed(true);
    EXPECT_EQ(exported(), whole);

    f.seq->setLoop(1);
    f.seq->setLoopSection(1000, 1500);
    keys->setSoloed(false);
    const Lines between = {"0, 0, Header, 1, 4, 960",
                           "1, 0, Tempo, 666666",
                           "2, 0, Time_signature, 7, 3, 24, 8",
                           "3, 0, Channel_prefix, 4",
                           "3, 0, Title_t, \"Keys\"",
                           "3, 440, Note_on_c, 4, 60, 100",
                           "3, 441, Note_on_c, 4, 60, 0",
                           "4, 0, Channel_prefix, 9",
                           "4, 0, Title_t, \"Kit\""};
    EXPECT_EQ(exported(), between);
}

/// Without points the host's tempo and the song's signature stand in the file. A file that cannot
/// be made or kept leaves what was there.
TEST(CSMF, FailsWithoutATrace) {
    MidiFixture f;
    f.host.tempo = 119.9f;
    f.track(trackMIDI)->track->channel = -1;
    const CStr path = f.folder.file("out.mid");
    ASSERT_EQ(exportMIDIFile(f.seq, path), MidiExport::good);
    const std::vector<std::string> lines = f.lines("out.mid");
    for (const char* line : {"1, 0, Tempo, 504201", "2, 0, Time_signature, 4, 2, 24, 8"})
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
    EXPECT_EQ(exportMIDIFile(f.seq, f.folder.file("none/out.mid")), MidiExport::notCreated);
    const CStr full = f.folder.file("full.mid");
    std::filesystem::create_symlink("/dev/full", full.asChar());
    EXPECT_EQ(exportMIDIFile(f.seq, full), MidiExport::noRoom);
    EXPECT_TRUE(std::filesystem::is_symlink(full.asChar()));
    std::filesystem::remove(full.asChar());
    std::filesystem::create_symlink("out.mid", full.asChar());
    f.host.tempo = 60.0f;
    EXPECT_EQ(exportMIDIFile(f.seq, full), MidiExport::good);
    EXPECT_TRUE(std::filesystem::is_symlink(full.asChar()));
    EXPECT_NE(f.lines("out.mid"), lines);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(f.folder.path.asChar()), {}), 4);
}

/// Numbers of one to four bytes, and messages that take one byte of data.
TEST(CSMF, WritesNumbersOfEveryLength) {
    MidiFixture f;
    const CStr path = f.folder.file("raw.mid");
    CSMF file(path);
    file.writeStartOfTrack();
    int tick = 0;
    std::vector<std::string> wanted;
    for (int delta : {0, 127, 128, 16383, 16384, 2097151, 2097152, (1 << 28) - 1}) {
        tick += delta;
        file.writeEvent(asData(midiPressure + 3, 5, 0), tick);
        wanted.push_back("1, " + std::to_string(tick) + ", Channel_aftertouch_c, 3, 5");
    }
    file.writeEndOfTrack();
    ASSERT_TRUE(file.close());
    const std::vector<std::string> lines = f.lines("raw.mid");
    ASSERT_EQ(lines.size(), wanted.size() + 4);
    for (size_t i = 0; i < wanted.size(); i++) EXPECT_EQ(lines[i + 2], wanted[i]);
}

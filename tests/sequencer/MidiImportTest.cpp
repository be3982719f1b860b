#include "sequencer/MidiImport.h"

#include "SongFixture.h"
#include "base/Messages.h"
#include "engine/MidiBytes.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <random>
#include <unistd.h>

namespace {

std::string bigEndian(unsigned value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; i--) text.push_back(char(value >> (8 * i)));
    return text;
}

std::string varLen(unsigned value) {
    std::string text(1, char(value & 0x7F));
    while (value >>= 7) text.insert(text.begin(), char(0x80 | (value & 0x7F)));
    return text;
}

std::string bytes(std::initializer_list<int> list) {
    std::string text;
    for (int value : list) text.push_back(char(value));
    return text;
}

/// An event after its delta.
std::string at(unsigned delta, std::initializer_list<int> list) {
    return varLen(delta) + bytes(list);
}

const std::string endOfTrack = at(0, {0xFF, 0x2F, 0});

std::string named(const std::string& name) {
    return at(0, {0xFF, 3, int(name.size())}) + name;
}

std::string noteOf(int channel, int key = 60, unsigned delta = 0, unsigned length = 480) {
    return at(delta, {midiNoteOn + channel, key, 100}) +
           at(length, {midiNoteOff + channel, key, 0});
}

std::string chunk(const std::string& id, const std::string& content) {
    return id + bigEndian(unsigned(content.size()), 4) + content;
}

std::string header(int format, int tracks, int division) {
    return chunk("MThd", bigEndian(unsigned(format), 2) + bigEndian(unsigned(tracks), 2) +
                             bigEndian(unsigned(division), 2));
}

std::string file(int format, int division, const std::vector<std::string>& tracks) {
    std::string text = header(format, int(tracks.size()), division);
    for (const std::string& track : tracks) text += chunk("MTrk", track + endOfTrack);
    return text;
}

struct ImportFixture : SongFixture {
    ImportFixture() {
        messages.clear();
        messageHooks().showMsg = [](CWin*, const CStr&, const CStr& text, int flags) {
            messages.emplace_back(text.asChar());
            return answerOfEscape(flags);
        };
    }
    ~ImportFixture() {
        messageHooks() = MessageHooks();
        std::filesystem::remove(path);
    }
    ImportFixture(const ImportFixture&) = delete;
    ImportFixture& operator=(const ImportFixture&) = delete;

    MidiImport import(const std::string& content, CSongTrack* target = nullptr, int position = 0) {
        MidiImport result = MidiImport::good;
        step([&](CUndo* undo) { result = read(content, undo, target, position); });
        return result;
    }
    /// Records the import only.
    MidiImport read(const std::string& content, CUndo* undo, CSongTrack* target = nullptr,
                    int position = 0) {
        std::filesystem::remove(path); // truncating it would wait for the disk
        std::ofstream(path, std::ios::binary) << content;
        return openMIDIFile(seq, target, path.c_str(), undo, position);
    }
    /// The song as text: tracks with their channels, parts with position and length, events with
    /// tick, message and length, points.
    std::string song() {
        std::string text;
        for (auto* t : each<CSongTrack>(prog()->tracks)) {
            text += "track " + std::to_string(t->track->channel) + ": ";
            for (auto* part : each<CPart>(t->parts)) text += content(part);
        }
        for (auto* p : each<CTempoPart>(prog()->tempos))
            text +=
                "tempo " + std::to_string(p->pos) + "=" + std::to_string(int(p->getTempo())) + " ";
        for (auto* p : each<CTimesigPart>(prog()->timesigs))
            text += "time " + std::to_string(p->pos) + "=" + std::to_string(p->getNum()) + "/" +
                    std::to_string(p->getDen()) + " ";
        return text;
    }

    static inline std::vector<std::string> messages;

private:
    static std::string content(CPart* part) {
        std::string text = std::to_string(part->pos) + "+" + std::to_string(part->length) + "(";
        int tick = 0;
        for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
            const auto* m = static_cast<CMIDIEvent*>(e);
            text += std::to_string(tick += e->delta) + " " + std::to_string(m->data & 0xFF) + "." +
                    std::to_string(asByte1(m->data)) + "." + std::to_string(asByte2(m->data));
            if (noteOn(m->data)) text += "~" + std::to_string(m->length);
            if (e->next) text += ", ";
        }
        return text + ") ";
    }
    const std::string path = std::filesystem::temp_directory_path() /
                             ("sondrava-import-" + std::to_string(getpid()) + ".mid");
};

/// One of everything, on three tracks.
std::string goodFile() {
    return file(1, 480,
                {named("Song") + at(0, {0xFF, 0x51, 3, 0x07, 0xA1, 0x20}) +
                     at(0, {0xFF, 0x58, 4, 3, 2, 24, 8}),
                 named("Bass") + at(0, {0xC1, 33}) + noteOf(1) + at(9, {0xF0, 3, 1, 2, 0xF7}) +
                     at(0, {0xB1, 7, 90}) + noteOf(1, 62, 100) + at(1, {0xF7, 1, 1}) +
                     at(0, {0xE1, 0, 64}),
                 at(0, {0xFF, 0x20, 1, 9}) + named("Drums") + noteOf(9, 36) + at(3, {0xD9, 12})});
}

} // namespace

/// What each event of a track becomes.
TEST(MidiImport, EventsLandAsTheFileTellsThem) {
    struct Case {
        const char* name;
        std::string track;
        const char* song;
    };
    const std::string on = at(0, {0x90, 60, 100});
    const Case cases[] = {
        {"note", noteOf(0), "0+3840(0 144.60.100~480) "},
        {"velocity 0 ends", on + at(480, {0x90, 60, 0}), "0+3840(0 144.60.100~480) "},
        {"running status", on + at(480, {60, 0}), "0+3840(0 144.60.100~480) "},
        {"across a meta event", on + at(100, {0xFF, 1, 1, 'x'}) + at(50, {60, 0}),
         "0+3840(0 144.60.100~150) "},
        {"across a system event", on + at(100, {0xF0, 2, 1, 0xF7}) + at(50, {60, 0}),
         "0+3840(0 144.60.100~150) "},
        {"first note of a key ends first",
         on + at(100, {60, 99}) + at(100, {60, 0}) + at(200, {60, 0}),
         "0+3840(0 144.60.100~200, 100 144.60.99~300) "},
        {"no end, and ends of others",
         on + at(50, {0x81, 60, 0}) + at(0, {0x80, 61, 0}) + at(0, {0x80, 61, 0}),
         "0+3840(0 144.60.100~-1) "},
        {"one data byte", at(0, {0xC3, 5}) + at(1, {6}) + at(1, {0xD3, 7}) + at(1, {0xE3, 8, 9}),
         "0+3840(0 195.5.0, 1 195.6.0, 2 211.7.0, 3 227.8.9) "},
        {"data of seven bits", at(0, {0xB0, 0x87, 0xE4}), "0+3840(0 176.7.100) "},
        {"F1 to F7 carry their delta",
         at(100, {0xF7, 2, 1, 2}) + at(20, {0xF1, 0}) + at(3, {0xC0, 1}), "0+3840(123 192.1.0) "},
        {"carried into a meta event too",
         on + at(100, {0xF3, 0}) + at(1, {0xFF, 1, 0}) + at(0, {0x80, 60, 0}),
         "0+3840(0 144.60.100~101) "},
        {"at the end of the bar", noteOf(0, 60, 0, 3840), "0+3840(0 144.60.100~3840) "},
        {"length in quarters", noteOf(0, 60, 1, 3840), "0+4800(1 144.60.100~3840) "},
        {"a number ends after four bytes", bytes({0x81, 0x80, 0x80, 0x80, 0x90, 60, 100}),
         "0+2097600(2097152 144.60.100~-1) "},
    };
    for (const Case& c : cases) {
        for (int format : {0, 1, 2}) {
            ImportFixture f;
            EXPECT_EQ(f.import(file(format, 960, {c.track})), MidiImport::good) << c.name;
            EXPECT_EQ(f.song(), std::string("track 0: ") + c.song)
                << c.name << ", format " << format;
            EXPECT_TRUE(f.messages.empty()) << c.name;
        }
    }
}

/// Ticks of 960 a quarter from any division, by integer arithmetic on each delta.
TEST(MidiImport, DivisionScalesEveryDelta) {
    struct Case {
        int division;
        long delta, ticks;
    };
    for (const Case& c : {Case{960, 7, 7}, Case{480, 7, 14}, Case{96, 7, 70}, Case{7, 3, 411},
                          Case{1920, 7, 3}, Case{0, 7, 7}, Case{0xE728, 7, 7}, Case{1, 7, 6720}}) {
        ImportFixture f;
        const auto delta = unsigned(c.delta);
        f.import(file(1, c.division, {at(delta, {0x90, 60, 100}) + at(delta, {60, 0})}));
        CPart* part = f.seq->getFirstSelectedPart(partMIDI, nullptr);
        ASSERT_TRUE(part) << c.division;
        const auto* event = static_cast<CMIDIEvent*>(part->getEvents());
        EXPECT_EQ(event->delta, c.ticks) << c.division;
        EXPECT_EQ(event->length, c.ticks) << c.division;
    }
}

/// Ticks stop at 2^30, however far the deltas reach.
TEST(MidiImport, TicksStayInRange) {
    ImportFixture f;
    std::string track;
    for (int i = 0; i < 9; i++) track += at(0x0FFFFFFF, {0xC0, i});
    EXPECT_EQ(f.import(file(1, 1, {track}), nullptr, 1 << 30), MidiImport::good);
    CPart* part = f.seq->getFirstSelectedPart(partMIDI, nullptr);
    ASSERT_TRUE(part);
    EXPECT_EQ(part->length, 1 << 30);
    EXPECT_EQ(part->getEvents()->delta, 1 << 30);
}

TEST(MidiImport, PointsOfTempoAndTime) {
    const auto tempo = [](unsigned delta, int value) {
        return at(delta, {0xFF, 0x51, 3, value >> 16, value >> 8 & 0xFF, value & 0xFF});
    };
    const auto time = [](unsigned delta, int num, int power) {
        return at(delta, {0xFF, 0x58, 4, num, power, 24, 8});
    };
    struct Case {
        const char* name;
        std::string track;
        const char* song;
    };
    const Case cases[] = {
        {"rounded", tempo(0, 499000) + tempo(10, 461000), "tempo 0=120 tempo 10=130 "},
        {"clamped", tempo(0, 1) + tempo(5, 0xFFFFFF), "tempo 0=250 tempo 5=10 "},
        {"0 is ignored", tempo(5, 0), ""},
        {"one of equals at a tick", tempo(5, 500000) + tempo(0, 500000) + tempo(0, 600000),
         "tempo 5=120 tempo 5=100 "},
        {"equals at other ticks stay", tempo(5, 500000) + tempo(1, 500000),
         "tempo 5=120 tempo 6=120 "},
        {"time", time(0, 6, 3) + time(960, 7, 0) + time(1, 4, 7),
         "time 0=6/8 time 960=7/1 time 961=4/128 "},
        {"power beyond 7, and 0", time(0, 5, 8) + time(1, 0, 255), "time 0=5/4 time 1=4/4 "},
        {"one of equal times", time(3, 3, 2) + time(0, 3, 2), "time 3=3/4 "},
        {"too short to hold one", at(0, {0xFF, 0x51, 1, 7}) + at(0, {0xFF, 0x58, 0}), ""},
        {"longer than needed", at(0, {0xFF, 0x51, 5, 7, 0xA1, 0x20, 9, 9}) + time(1, 3, 2),
         "tempo 0=120 time 1=3/4 "},
    };
    for (const Case& c : cases) {
        ImportFixture f;
        EXPECT_EQ(f.import(file(1, 960, {c.track})), MidiImport::good) << c.name;
        EXPECT_EQ(f.song(), c.song) << c.name;
    }
}

/// Which chunks make tracks, what these are called, and which channel they get.
TEST(MidiImport, ChunksBecomeTracks) {
    struct Case {
        const char* name;
        std::vector<std::string> tracks;
        const char* song;
    };
    const std::string event = "0+3840(0 144.60.100~480) ", third = "0+3840(0 146.60.100~480) ";
    const Case cases[] = {
        {"neither name nor events", {at(0, {0xFF, 1, 1, 'x'}), ""}, ""},
        {"a name alone", {named("A")}, "A 0"},
        {"the name goes to the next chunk", {named("A"), noteOf(0)}, "A 0"},
        {"its own name wins", {named("A"), named("B") + noteOf(0)}, "B 0"},
        {"one track keeps its channel", {named("A") + noteOf(2)}, "A 0"},
        {"several take that of all events",
         {named("A") + noteOf(2), named("B") + noteOf(2) + noteOf(3), named("C") + noteOf(0)},
         "A 2, B -1, C 0"},
        {"or what the file tells",
         {named("A") + noteOf(2), at(0, {0xFF, 0x20, 1, 5}) + named("B") + noteOf(2) + noteOf(3)},
         "A 2, B 5"},
        {"prefix", {named("A") + at(0, {0xFF, 0x20, 1, 9}) + noteOf(2)}, "A 9"},
        {"prefix out of range", {named("A") + at(0, {0xFF, 0x20, 1, 16}) + noteOf(2)}, "A 0"},
        {"name behind the notes", {noteOf(0) + named("A")}, "A 0"},
    };
    for (const Case& c : cases) {
        ImportFixture f;
        EXPECT_EQ(f.import(file(1, 960, c.tracks)), MidiImport::good) << c.name;
        std::string text;
        for (auto* t : each<CTrack>(f.seq->tracks))
            text += (text.empty() ? "" : ", ") + std::string(t->id.asChar()) + " " +
                    std::to_string(t->channel);
        EXPECT_EQ(text, c.song) << c.name;
    }
}

/// Content goes to an empty target first and begins at the position; a target in use is left alone.
TEST(MidiImport, TargetAndPosition) {
    for (bool used : {false, true}) {
        ImportFixture f;
        CSongTrack* target = f.track(trackMIDI);
        if (used) target->addPart(midiPart(0), nullptr);
        const std::string first = at(7, {0xFF, 0x51, 3, 7, 0xA1, 0x20}) + noteOf(0);
        EXPECT_EQ(f.import(file(1, 960, {first, noteOf(1)}), target, 1000), MidiImport::good);
        EXPECT_EQ(f.seq->tracks.getCount(), used ? 3 : 2);
        EXPECT_EQ(target->parts.getCount(), 1);
        CPart* part = f.seq->getFirstSelectedPart(partMIDI, nullptr);
        ASSERT_TRUE(part);
        EXPECT_EQ(part->pos, 1000);
        EXPECT_EQ(part->getEvents()->delta, 7);
        EXPECT_EQ(static_cast<CPart*>(f.prog()->tempos.first())->pos, 1007);
    }
}

TEST(MidiImport, OneStepOfUndo) {
    ImportFixture f;
    const std::string before = dump(f.seq);
    EXPECT_EQ(f.import(goodFile()), MidiImport::good);
    const std::string text = f.song(), whole = dump(f.seq);
    EXPECT_EQ(text, "track 1: 0+3840(0 193.33.0, 0 145.60.100~960, 978 177.7.90, "
                    "1178 145.62.100~960, 2140 225.0.64) "
                    "track 9: 0+3840(0 153.36.100~960, 966 217.12.0) "
                    "tempo 0=120 time 0=3/4 ");
    for (int round = 0; round < 2; round++) {
        f.undo();
        EXPECT_EQ(dump(f.seq), before);
        EXPECT_EQ(f.song(), "");
        f.redo();
        EXPECT_EQ(dump(f.seq), whole);
        EXPECT_EQ(f.song(), text);
    }
}

/// What a damaged file says, and what of it is kept.
TEST(MidiImport, DamageIsToldAndTheRestKept) {
    const std::string good = noteOf(0);
    const char* const kept = "track 0: 0+3840(0 144.60.100~480) ";
    const auto endless = std::string(64, char(0xFF));
    struct Case {
        const char* name;
        std::string content;
        MidiImport result;
        const char *message, *song;
    };
    const Case cases[] = {
        {"empty", "", MidiImport::notMidi, "Not a MIDI file ", ""},
        {"text", "Dear all, this is text", MidiImport::notMidi, "Not a MIDI file Dear", ""},
        {"half a header", "MThd", MidiImport::truncated, nullptr, ""},
        {"no tracks", header(1, 0, 960), MidiImport::good, nullptr, ""},
        {"told 65,535", header(1, 65535, 960) + chunk("MTrk", good + endOfTrack),
         MidiImport::truncated, nullptr, kept},
        {"track past the end", header(1, 1, 960) + "MTrk" + bigEndian(0xFFFFFFFF, 4) + good,
         MidiImport::truncated, nullptr, kept},
        {"no end of track", header(1, 1, 960) + chunk("MTrk", good), MidiImport::truncated, nullptr,
         kept},
        {"event cut by its chunk",
         header(1, 2, 960) + chunk("MTrk", at(0, {0x90, 60})) + chunk("MTrk", good + endOfTrack),
         MidiImport::truncated, nullptr, kept},
        {"unknown chunks",
         header(1, 1, 960) + chunk("XFIH", "abc") + chunk("MTrk", good + endOfTrack) +
             chunk("tail", ""),
         MidiImport::good, nullptr, kept},
        {"bad status", file(1, 960, {good + at(0, {0xF8}), good}), MidiImport::broken,
         "Invalid file format (3)", kept},
        {"no status yet", file(1, 960, {at(0, {60, 100})}), MidiImport::broken,
         "Invalid file format (3)", ""},
        {"no status kept of F0", file(1, 960, {at(0, {0xF0, 1, 0}) + at(0, {60, 100})}),
         MidiImport::broken, "Invalid file format (3)", ""},
        {"system event past the end", file(1, 960, {good + at(0, {0xF0, 0xFF, 0xFF, 0xFF, 0x7F})}),
         MidiImport::truncated, nullptr, kept},
        {"name past the end", file(1, 960, {good + at(0, {0xFF, 3, 0xFF, 0xFF, 0xFF, 0x7F})}),
         MidiImport::truncated, nullptr, kept},
        {"endless numbers", header(1, 1, 960) + chunk("MTrk", good + endless),
         MidiImport::truncated, nullptr, kept},
    };
    for (const Case& c : cases) {
        ImportFixture f;
        EXPECT_EQ(f.import(c.content), c.result) << c.name;
        const bool silent = f.messages.empty();
        EXPECT_EQ(silent ? "" : f.messages.front(), c.message ? c.message : "") << c.name;
        EXPECT_EQ(f.song(), c.song) << c.name;
    }
    ImportFixture f;
    EXPECT_EQ(openMIDIFile(f.seq, nullptr, "/nowhere/at/all.mid", nullptr, 0),
              MidiImport::unreadable);
}

/// Tracks beyond 512 join the last one, and none of their notes is lost, however many there are.
TEST(MidiImport, ManyTracksStayBounded) {
    constexpr int chunks = 20000;
    ImportFixture f;
    EXPECT_EQ(f.import(file(1, 960, std::vector<std::string>(chunks, noteOf(3)))),
              MidiImport::good);
    EXPECT_EQ(f.seq->tracks.getCount(), 512);
    int events = 0;
    for (auto* t : each<CSongTrack>(f.prog()->tracks)) {
        EXPECT_EQ(t->track->channel, 3);
        for (auto* part : each<CPart>(t->parts)) events += int(notesOf(part).size());
    }
    EXPECT_EQ(events, chunks);
}

/// A file that ends early is never taken for whole, and is imported up to there.
TEST(MidiImport, EveryTruncationIsNoticed) {
    const std::string whole = goodFile();
    ImportFixture f;
    for (size_t size = 0; size < whole.size(); size++) {
        EXPECT_NE(f.import(whole.substr(0, size)), MidiImport::good) << size;
        if (f.seq->tracks.getCount() > 0 || !f.prog()->tempos.empty()) f.undo();
        EXPECT_EQ(f.song(), "") << size;
    }
    EXPECT_EQ(f.import(whole), MidiImport::good);
}

namespace {

bool within(int value, int low, int high) {
    return value >= low && value <= high;
}

void expectPlayable(CPart* part) {
    EXPECT_TRUE(within(part->length, 1, 1 << 30));
    EXPECT_TRUE(within(part->pos, 0, 1 << 30));
    int64_t tick = 0;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
        const auto* m = static_cast<CMIDIEvent*>(e);
        EXPECT_GE(m->delta, 0);
        EXPECT_LE(tick += m->delta, 1 << 30);
        EXPECT_TRUE(within(m->data & 0xFF, 0x80, 0xEF));
        EXPECT_EQ(m->data & ~0x7F7FFF, 0);
        EXPECT_TRUE(within(m->length, -1, 1 << 30));
    }
    const auto* tempo = dynamic_cast<CTempoPart*>(part);
    EXPECT_TRUE(!tempo || (tempo->getTempo() >= 10.0f && tempo->getTempo() <= 250.0f));
    const auto* time = dynamic_cast<CTimesigPart*>(part);
    EXPECT_TRUE(!time || (within(time->getNum(), 1, 255) && within(time->getDen(), 1, 128)));
}

} // namespace

/// Whatever a file says, what it adds is within what playback can take.
TEST(MidiImport, FlippedBytesGiveNothingOutOfRange) {
    const std::string whole = goodFile();
    std::mt19937 random(1);
    ImportFixture f;
    const std::string before = dump(f.seq);
    for (int round = 0; round < 5000 && !HasFailure(); round++) {
        SCOPED_TRACE(round);
        std::string content = whole;
        for (unsigned i = 0; i <= random() % 3; i++)
            content[random() % content.size()] = char(random());
        CUndo recorded("Test", f.seq, undoSongChanged);
        f.read(content, &recorded);
        for (auto* item : each<CUndoItem>(recorded.items)) {
            if (auto* part = dynamic_cast<CPart*>(item->object)) expectPlayable(part);
            const auto* track = dynamic_cast<CTrack*>(item->object);
            EXPECT_TRUE(!track || within(track->channel, -1, 15));
        }
    }
    EXPECT_EQ(dump(f.seq), before) << "what was not carried out";
}

#include "sequencer/midi/MidiImport.h"
#include "sequencer/midi/MidiLength.h"

#include "SongFixture.h"
#include "base/Numbers.h"
#include "base/TempFolder.h"

#include <initializer_list>
#include <random>
#include <sstream>

namespace {

std::string bigEndian(unsigned value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; i--) text.push_back(char(value >> (8 * i)));
    return text;
}

/// An event after its delta.
std::string at(unsigned delta, std::initializer_list<int> bytes) {
    std::string text(1, char(delta & 0x7F));
    while (delta >>= 7) text.insert(text.begin(), char(0x80 | (delta & 0x7F)));
    for (int value : bytes) text.push_back(char(value));
    return text;
}

const std::string endOfTrack = at(0, {0xFF, 0x2F, 0});

std::string named(const std::string& name) {
    return at(0, {0xFF, 3, int(name.size())}) + name;
}

std::string noteOf(int channel, int key = 60, unsigned delta = 0, unsigned length = 480) {
    return at(delta, {midiNoteOn + channel, key, 100}) +
           at(length, {midiNoteOff + channel, key, 0});
}

std::string tempoOf(unsigned delta, int value) {
    return at(delta, {0xFF, 0x51, 3, value >> 16, value >> 8 & 0xFF, value & 0xFF});
}

std::string timeOf(unsigned delta, int num, int power) {
    return at(delta, {0xFF, 0x58, 4, num, power, 24, 8});
}

std::string chunk(const std::string& id, const std::string& content) {
    return id + bigEndian(unsigned(content.size()), 4) + content;
}

std::string header(int format, int tracks, int division) {
    return chunk("MThd", bigEndian(unsigned(format), 2) + bigEndian(unsigned(tracks), 2) +
                             bigEndian(unsigned(division), 2));
}

using Tracks = std::vector<std::string>;

std::string file(int format, int division, const Tracks& tracks) {
    std::string text = header(format, int(tracks.size()), division);
    for (const std::string& track : tracks) text += chunk("MTrk", track + endOfTrack);
    return text;
}

struct ImportFixture : SongFixture, Told {
    MidiTracks how = MidiTracks::asTold;

    MidiImport import(const std::string& content, CSongTrack* target = nullptr, int position = 0) {
        std::filesystem::remove(folder.file("a.mid").asChar()); // truncating waits for the disk
        folder.write("a.mid", content);
        MidiImport result = MidiImport::good;
        step([&](CUndo* undo) {
            result = openMIDIFile(seq, target, folder.file("a.mid"), undo, position, {how});
        });
        return result;
    }
    /// The song as text: tracks with name and channel, parts with position and length, events with
    /// tick, message and length, points.
    std::string song() {
        std::ostringstream text;
        for (auto* t : prog()->tracks) {
            text << t->track->id.asChar() << " " << t->track->channel;
            for (auto* part : t->parts) write(text, part);
            text << "; ";
        }
        for (auto* p : prog()->tempos) text << "tempo " << p->pos << "=" << p->getTempo() << " ";
        for (auto* p : prog()->timesigs)
            text << "time " << p->pos << "=" << p->getNum() << "/" << p->getDen() << " ";
        return text.str();
    }

    int longest() {
        int ticks = 0;
        for (auto* t : prog()->tracks)
            for (auto* part : t->parts) ticks = std::max(ticks, part->length.load());
        return ticks;
    }
    int told() { return midiLength(folder.file("a.mid")); }

private:
    static void write(std::ostream& text, CPart* part) {
        text << " " << part->pos << "+" << part->length << ":";
        int tick = 0;
        for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
            const auto* m = static_cast<CMIDIEvent*>(e);
            text << " " << (tick += e->delta) << "." << (m->data & 0xFF) << "." << asByte1(m->data)
                 << "." << asByte2(m->data);
            if (noteOn(m->data)) text << "~" << m->length;
        }
    }
    const TempFolder folder;
};

/// One of everything, on three tracks.
std::string goodFile() {
    return file(1, 480,
                {named("Song") + tempoOf(0, 500000) + timeOf(0, 3, 2),
                 named("Bass") + at(0, {0xC1, 33}) + noteOf(1) + at(9, {0xF0, 3, 1, 2, 0xF7}) +
                     at(0, {0xB1, 7, 90}) + noteOf(1, 62, 100) + at(1, {0xF7, 1, 1}) +
                     at(0, {0xE1, 0, 64}),
                 at(0, {0xFF, 0x20, 1, 9}) + named("Drums") + noteOf(9, 36) + at(3, {0xD9, 12})});
}

struct Case {
    std::string content, song;
    MidiImport result = MidiImport::good;
    std::string message = "";
};

void expectImports(std::initializer_list<Case> cases, MidiTracks how = MidiTracks::asTold) {
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases.begin());
        ImportFixture f;
        f.how = how;
        EXPECT_EQ(f.import(c.content), c.result);
        EXPECT_EQ(f.song(), c.song);
        EXPECT_TRUE(c.result != MidiImport::good || f.told() == f.longest()) << f.told();
        EXPECT_EQ(f.messages.empty() ? "" : f.messages.front(), c.message);
    }
}

std::string one(const std::string& track) {
    return file(1, 960, {track});
}

} // namespace

TEST(MidiImport, EventsLandAsTheFileTellsThem) {
    const std::string on = at(0, {0x90, 60, 100}), part = "instrument-1 0 0+3840: ";
    expectImports({
        // velocity 0 ends; a status runs on, also across meta and system events
        {one(on + at(480, {0x90, 60, 0})), part + "0.144.60.100~480; "},
        {one(on + at(100, {0xFF, 1, 1, 'x'}) + at(50, {60, 0})), part + "0.144.60.100~150; "},
        {one(on + at(100, {0xF0, 2, 1, 0xF7}) + at(50, {60, 0})), part + "0.144.60.100~150; "},
        // the first note of a key ends first; one has no end, and there are ends of others
        {one(on + at(100, {60, 99}) + at(100, {60, 0}) + at(200, {60, 0})),
         part + "0.144.60.100~200 100.144.60.99~300; "},
        {one(on + at(50, {0x81, 60, 0}) + at(0, {0x80, 61, 0}) + at(0, {0x80, 61, 0})),
         part + "0.144.60.100~-1; "},
        // one data byte, and data of seven bits
        {one(at(0, {0xC3, 5}) + at(1, {6}) + at(1, {0xD3, 7}) + at(1, {0xE3, 0x88, 0xE4})),
         part + "0.195.5.0 1.195.6.0 2.211.7.0 3.227.8.100; "},
        // F1 to F7 carry their delta, into a meta event too
        {one(at(100, {0xF7, 2, 1, 2}) + at(20, {0xF1, 0}) + at(3, {0xC0, 1})),
         part + "123.192.1.0; "},
        {one(on + at(100, {0xF3, 0}) + at(1, {0xFF, 1, 0}) + at(0, {0x80, 60, 0})),
         part + "0.144.60.100~101; "},
        // a part ends with a quarter, a number after four bytes
        {one(noteOf(0, 60, 0, 3840)), part + "0.144.60.100~3840; "},
        {one(noteOf(0, 60, 1, 3840)), "instrument-1 0 0+4800: 1.144.60.100~3840; "},
        {one("\x81\x80\x80\x80" + on.substr(1)),
         "instrument-1 0 0+2097600: 2097152.144.60.100~-1; "},
    });
}

/// Ticks of 960 a quarter from any division, by integer arithmetic on each delta; they stop at
/// 2^30.
TEST(MidiImport, DivisionScalesEveryDelta) {
    const auto song = [](int division, unsigned delta) {
        return file(1, division, {at(delta, {0x90, 60, 1}) + at(delta, {60, 0})});
    };
    expectImports({{song(480, 7), "instrument-1 0 0+3840: 14.144.60.1~14; "},
                   {song(7, 3), "instrument-1 0 0+3840: 411.144.60.1~411; "},
                   {song(1920, 7), "instrument-1 0 0+3840: 3.144.60.1~3; "},
                   {song(0, 7), "instrument-1 0 0+3840: 7.144.60.1~7; "},
                   {song(0xE728, 7), "instrument-1 0 0+3840: 7.144.60.1~7; "},
                   {song(1, 0x0FFFFFFF), "instrument-1 0 0+1073741824: 1073741824.144.60.1~0; "}});
}

TEST(MidiImport, PointsOfTempoAndTime) {
    expectImports({
        // rounded, clamped, 0 ignored, one of equals at a tick
        {one(tempoOf(0, 499000) + tempoOf(10, 461000)), "tempo 0=120 tempo 10=130 "},
        {one(tempoOf(0, 1) + tempoOf(5, 0xFFFFFF)), "tempo 0=250 tempo 5=10 "},
        {one(tempoOf(5, 0)), ""},
        {one(tempoOf(5, 500000) + tempoOf(0, 500000) + tempoOf(0, 600000) + tempoOf(1, 600000)),
         "tempo 5=120 tempo 5=100 tempo 6=100 "},
        // a power beyond 7, a numerator of 0, one of equals at a tick
        {one(timeOf(0, 4, 7) + timeOf(9, 5, 8) + timeOf(1, 0, 255) + timeOf(0, 4, 2)),
         "time 0=4/128 time 9=5/4 time 10=4/4 "},
        // too short to hold one, longer than needed
        {one(at(0, {0xFF, 0x51, 1, 7}) + at(0, {0xFF, 0x58, 0}) +
             at(0, {0xFF, 0x51, 5, 7, 0xA1, 0x20, 9, 9}) + timeOf(1, 3, 2)),
         "tempo 0=120 time 1=3/4 "},
    });
}

/// Which chunks make tracks, what these are called, and which channel they get.
TEST(MidiImport, ChunksBecomeTracks) {
    const auto song = [](const Tracks& tracks) { return file(1, 960, tracks); };
    const auto prefix = [](int channel) { return at(0, {0xFF, 0x20, 1, channel}); };
    const std::string first = " 0+3840: 0.144.60.100~480; ", third = " 0+3840: 0.146.60.100~480; ";
    expectImports({
        // neither name nor events; a name alone, which goes to the next chunk, unless that has one
        {song({at(0, {0xFF, 1, 1, 'x'}), ""}), ""},
        {one(named("A")), "A 0; "},
        {song({named("A"), noteOf(0)}), "A 0" + first},
        {song({named("A"), noteOf(0) + named("B")}), "B 0" + first},
        // one track keeps its channel, several take that of all events, or what the file tells
        {one(named("A") + noteOf(2)), "A 0" + third},
        {song({named("A") + noteOf(2), named("B") + noteOf(2) + noteOf(0, 60, 480)}),
         "A 2" + third + "B -1 0+3840: 0.146.60.100~480 960.144.60.100~480; "},
        {song({named("A") + noteOf(2), prefix(5) + named("B") + noteOf(2)}),
         "A 2" + third + "B 2" + third},
        {song({named("A") + noteOf(0), prefix(5) + named("B") + noteOf(2) + noteOf(0, 60, 480)}),
         "A 0" + first + "B 5 0+3840: 0.146.60.100~480 960.144.60.100~480; "},
        {one(named("A") + prefix(9) + noteOf(2)), "A 9" + third},
        {one(named("A") + prefix(16) + noteOf(2)), "A 0" + third},
        {goodFile(), "Bass 1 0+3840: 0.193.33.0 0.145.60.100~960 978.177.7.90 1178.145.62.100~960 "
                     "2140.225.0.64; Drums 9 0+3840: 0.153.36.100~960 966.217.12.0; "
                     "tempo 0=120 time 0=3/4 "},
    });
}

/// By channel, events of several become a track for each, in one chunk as in many; a single track
/// takes its channel too, and one that the file gives its own keeps all.
TEST(MidiImport, ChannelsBecomeTracks) {
    const std::string mixed = noteOf(9, 36) + noteOf(0) + at(0, {0xB3, 7, 90}) + noteOf(0, 62);
    const std::string first = " 0 0+3840: 480.144.60.100~480 960.144.62.100~480; ";
    const std::string fourth = " 3 0+3840: 960.179.7.90; ";
    const std::string drums = "Drums 9 0+3840: 0.153.36.100~480; ";
    expectImports(
        {{file(0, 960, {mixed}), "instrument-1" + first + "instrument-2" + fourth + drums},
         {file(0, 960, {named("A") + mixed}), "A 1" + first + "A 4" + fourth + drums},
         {file(1, 960, {named("A") + mixed, noteOf(5)}),
          "A 1" + first + "A 4" + fourth + drums + "instrument-1 5 0+3840: 0.149.60.100~480; "},
         {one(named("A") + noteOf(9, 36)), "A 9 0+3840: 0.153.36.100~480; "},
         {one(at(0, {0xFF, 0x20, 1, 2}) + named("A") + noteOf(9, 36) + noteOf(0)),
          "A 2 0+3840: 0.153.36.100~480 480.144.60.100~480; "}},
        MidiTracks::byChannel);
}

/// Content goes to an empty target first and begins at the position; a target in use is left alone.
TEST(MidiImport, TargetAndPosition) {
    for (bool used : {false, true}) {
        ImportFixture f;
        CSongTrack* target = f.track(trackMIDI);
        if (used) target->addPart(midiPart(0), nullptr);
        f.import(file(1, 960, {tempoOf(7, 500000) + noteOf(0), noteOf(1)}), target, 1000);
        EXPECT_EQ(f.song(),
                  std::string(used ? "instrument-1 0 0+3840:; instrument-2 0" : "instrument-1 0") +
                      " 1000+3840: 7.144.60.100~480; " + (used ? "instrument-3" : "instrument-2") +
                      " 1 1000+3840: 0.145.60.100~480; tempo 1007=120 ");
    }
}

/// What would lie beyond the last tick comes to lie on it.
TEST(MidiImport, EndsAtTheLastTick) {
    ImportFixture f;
    f.import(file(1, 1, {tempoOf(0x0FFFFFFF, 500000) + timeOf(0, 3, 2)}), nullptr, maxTicks);
    const std::string last = std::to_string(maxTicks);
    EXPECT_EQ(f.song(), "tempo " + last + "=120 time " + last + "=3/4 ");
}

/// What a damaged file says, and what of it is kept.
TEST(MidiImport, DamageIsToldAndTheRestKept) {
    const std::string good = noteOf(0), kept = "instrument-1 0 0+3840: 0.144.60.100~480; ";
    const std::string head = header(1, 1, 960), whole = chunk("MTrk", good + endOfTrack);
    const std::string invalid = "Import: Invalid file format (3)";
    const auto cut = MidiImport::truncated, broken = MidiImport::broken;
    expectImports({
        {"Dear all", "", MidiImport::notMidi, "Import: Not a MIDI file Dear"},
        {"MThd", "", cut},
        {header(1, 0, 960), ""},
        {header(1, 65535, 960) + whole, kept, cut},
        {head + "MTrk" + bigEndian(~0u, 4) + good, kept, cut},
        {head + chunk("MTrk", good), kept, cut},
        {header(1, 2, 960) + chunk("MTrk", at(0, {0x90, 60})) + whole, kept, cut},
        {head + chunk("XFIH", "abc") + whole + chunk("tail", ""), kept},
        // a bad status, none yet, none kept of F0
        {one(good + at(0, {0xF8}) + good), kept, broken, invalid},
        {one(at(0, {60, 100})), "", broken, invalid},
        {one(at(0, {0xF0, 1, 0, 0, 60, 100})), "", broken, invalid},
        // a system event and a name that reach past the end
        {one(good + at(0, {0xF0, 0xFF, 0xFF, 0xFF, 0x7F})), kept, cut},
        {one(good + at(0, {0xFF, 3, 0xFF, 0xFF, 0xFF, 0x7F})), kept, cut},
    });
    ImportFixture f;
    EXPECT_EQ(openMIDIFile(f.seq, nullptr, "/nowhere", nullptr, 0), MidiImport::unreadable);
}

/// Tracks beyond 255 join the last one, which is told, and none of their notes is lost, however
/// many there are.
TEST(MidiImport, ManyTracksStayBounded) {
    constexpr size_t chunks = 20000;
    ImportFixture f;
    EXPECT_EQ(f.import(file(1, 960, Tracks(chunks, noteOf(3)))), MidiImport::good);
    EXPECT_EQ(f.messages, std::vector<std::string>{"Error: Too many tracks"});
    EXPECT_EQ(f.seq->tracks.getCount(), 255);
    size_t events = 0;
    for (auto* t : f.prog()->tracks) {
        EXPECT_EQ(t->track->channel, 3);
        for (auto* part : t->parts) events += notesOf(part).size();
    }
    EXPECT_EQ(events, chunks);
}

/// A file that ends early is never taken for whole. Whatever a file says, its undoing leaves the
/// song as it was, and what it adds is within what playback can take.
TEST(MidiImport, DamagedFilesGiveNothingOutOfRange) {
    const auto ticks = [](int64_t value) { return value >= 0 && value <= 1 << 30; };
    const std::string whole = goodFile();
    std::mt19937 random(1);
    ImportFixture f;
    const std::string before = dump(f.seq);
    for (size_t round = 0; round < 1000 && !testing::Test::HasFailure(); round++) {
        SCOPED_TRACE(round);
        const bool early = round < whole.size();
        std::string content = whole.substr(0, round);
        for (unsigned i = 0; !early && i <= random() % 3; i++)
            content[random() % content.size()] = char(random());
        const int steps = f.host.undoIndex;
        EXPECT_TRUE(f.import(content) != MidiImport::good || !early);
        for (auto* t : f.prog()->tracks)
            for (auto* part : t->parts) {
                EXPECT_TRUE(ticks(part->length - 1) && ticks(part->pos));
                int64_t tick = 0;
                for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
                    const auto* m = static_cast<CMIDIEvent*>(e);
                    EXPECT_TRUE(ticks(m->delta) && ticks(tick += m->delta) && ticks(m->length + 1));
                    EXPECT_TRUE(m->data & 0x80 && (m->data & 0xFF) < 0xF0 && !(m->data & ~0x7F7FFF))
                        << m->data;
                }
            }
        if (f.host.undoIndex > steps) f.undo();
        ASSERT_EQ(dump(f.seq), before);
    }
}

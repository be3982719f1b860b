#include "sequencer/edit/TempoEdits.h"
#include "SongFileFixture.h"
#include "base/TempFolder.h"
#include "engine/ValueDoor.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/midi/MidiExport.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TempoMap.h"

#include <sstream>

namespace {

struct Tempos : SongFileFixture {
    Tempos() {
        enterSequencer();
        host.setRate(48000);
    }
    CTempoPart* point(int i) { return prog()->tempos.items(i); }
    /// From 60 to 240 over two bars, and on.
    void line() {
        tempoAt(3840, 60.0f);
        tempoAt(11520, 240.0f);
        point(0)->ramp = 1;
        seq->tempo.changed();
        host.undoClear();
    }
    /// "960@100/" is a point that begins a line.
    std::string show() {
        std::ostringstream out;
        for (auto* p : prog()->tempos)
            out << p->pos << '@' << std::lround(p->getTempo() * 100) / 100.0 << (p->ramp ? "/" : "")
                << ' ';
        return out.str() + "song " + std::to_string(std::lround(host.songTempo));
    }
    /// At its own speed, for so many seconds.
    CPart* recording(int pos, int seconds) {
        CAudioEvent* clip = createAudioEvent();
        clip->sample = addSample(
            seconds * 48000, [](int) { return 0.0; }, 48000);
        clip->end = seconds * 48000 - 1;
        auto* part = new CAudioPart;
        part->pos = pos;
        part->addEvent(0, clip);
        return track(trackAudio)->addPart(part, nullptr);
    }
};

/// Seconds of so many ticks of that line: 60 / 960 times the integral of 1 / bpm.
double lineSeconds(double ticks) {
    const double end = 60.0 + 180.0 * ticks / 7680.0;
    return 60.0 / 960.0 * ticks * std::log(end / 60.0) / (end - 60.0);
}

struct Case {
    const char* step;
    std::function<void(Tempos&)> edit;
    const char* points;
};

const Case cases[] = {
    {"Add tempo", [](Tempos& t) { addTempoPoint(t.seq, 15360, 90.0f); },
     "3840@60/ 11520@240 15360@90 song 120"},
    {"Add tempo", [](Tempos& t) { addTempoPoint(t.seq, 7680); },
     "3840@60/ 7680@150/ 11520@240 song 120"},
    {"Tempo", [](Tempos& t) { addTempoPoint(t.seq, 11520, 999.0f); },
     "3840@60/ 11520@250 song 120"},
    {"Tempo ramp", [](Tempos& t) { t.host.values->set(rampOf(t.point(0)), 0.0); },
     "3840@60 11520@240 song 120"},
    {"Move tempo", [](Tempos& t) { movePoint(t.seq, t.point(0), 19200); },
     "11520@240 19200@60/ song 120"},
    {"Move tempo", [](Tempos& t) { movePoint(t.seq, t.point(0), -7); }, "0@60/ 11520@240 song 120"},
    {"Delete tempo", [](Tempos& t) { deletePoint(t.seq, t.point(0)); }, "11520@240 song 120"},
    {"Fit bars", [](Tempos& t) { EXPECT_TRUE(fitBars(t.seq, t.recording(7680, 4), 3)); },
     "3840@60/ 7680@180 19200@240 song 120"},
    {"Fit bars", [](Tempos& t) { EXPECT_TRUE(fitBars(t.seq, t.recording(0, 4), 2)); },
     "0@120 7680@150/ 11520@240 song 120"},
    {"Fit bars",
     [](Tempos& t) {
         for (int i : {1, 0}) deletePoint(t.seq, t.point(i));
         t.host.settle();
         t.host.undoClear();
         EXPECT_TRUE(fitBars(t.seq, t.recording(3840, 6), 2));
     },
     "song 80"},
};

} // namespace

/// Each edit is one step, and leads back and forth; what it leaves comes back from the file.
TEST(TempoEdits, AreSteps) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.points);
        Tempos t;
        t.line();
        c.edit(t);
        t.host.settle();
        EXPECT_EQ(t.show(), c.points);
        EXPECT_EQ(t.host.undoList.getCount(), 1);
        EXPECT_EQ(t.host.undoText(), CStr(c.step));
        t.device.run();
        const std::string bytes = t.write();
        t.undo();
        EXPECT_NE(t.show(), c.points);
        t.redo();
        EXPECT_EQ(t.show(), c.points);
        t.device.run();
        t.read(bytes);
        EXPECT_EQ(t.show(), c.points);
        EXPECT_EQ(t.write(), bytes);
    }
}

TEST(TempoEdits, FitNothingElse) {
    Tempos t;
    t.line();
    CPart* far = t.recording(0, 4);
    EXPECT_FALSE(fitBars(t.seq, far, 0));
    EXPECT_FALSE(fitBars(t.seq, far, 50)) << "750 beats a minute";
    EXPECT_FALSE(fitBars(t.seq, t.track(trackMIDI)->addPart(midiPart(0), nullptr), 2));
    EXPECT_TRUE(t.host.undoList.empty());
}

/// A song that plays along a line is where the line is, whatever the blocks, to a frame.
TEST(TempoEdits, LinesArePlayedAsTheyAreCounted) {
    for (const int block : {64, 250, 1024}) {
        Tempos t;
        t.line();
        t.host.setFrames(block);
        t.host.loop = t.prog()->loop = 0;
        t.host.setPos(3840.0);
        t.host.start();
        const double begin = t.seq->ticksToFrames(0, 3840, 48000);
        EXPECT_EQ(begin, 96000.0);
        int64_t frames = 0;
        while (t.prog()->pos < 11000.0) {
            t.device.run();
            frames += block;
            const double ticks = t.prog()->pos - 3840.0;
            ASSERT_NEAR(lineSeconds(ticks) * 48000.0, double(frames), 1.0) << block;
        }
        EXPECT_NEAR(t.host.tempoNow, 60.0 + 180.0 * 7160.0 / 7680.0, 2.0);
        EXPECT_NEAR(t.seq->ticksToFrames(3840, 7160, 48000), lineSeconds(7160.0) * 48000.0, 1e-6);
        const double ticks = t.seq->framesToTicks(3840, lineSeconds(7160.0) * 48000.0, 48000);
        EXPECT_NEAR(ticks, 7160.0, 1.0);
    }
}

/// A MIDI file has a step for each sixteenth of a line, and lasts as long.
TEST(TempoEdits, LinesGoIntoMidiFiles) {
    const TempFolder folder;
    Tempos t;
    t.line();
    t.track(trackMIDI)->addPart(midiPart(0, 19200), nullptr);
    ASSERT_EQ(exportMIDIFile(t.seq, folder.file("line.mid")), MidiExport::good);
    const std::string bytes = folder.read("line.mid"), tempo = "\xFF\x51\x03";
    int steps = 0;
    double seconds = 0.0; // of a quarter, in microseconds, each holds for a fourth
    for (size_t at = bytes.find(tempo); at != bytes.npos; at = bytes.find(tempo, at + 1)) {
        const auto byte = [&](size_t i) {
            return double(static_cast<unsigned char>(bytes[at + i]));
        };
        if (++steps <= 32) seconds += (byte(3) * 65536 + byte(4) * 256 + byte(5)) / 4e6;
    }
    EXPECT_EQ(steps, 7680 / 240 + 1);
    EXPECT_NEAR(seconds, lineSeconds(7680.0), 1e-4);
}

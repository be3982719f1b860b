#include "base/CStream.h"
#include "engine/MidiBytes.h"
#include "engine/MidiComps.h"
#include "engine/SeqStub.h"
#include "support/Rows.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace {

constexpr int on60 = asData(midiNoteOn, 60, 100), off60 = asData(midiNoteOn, 60, 0);
constexpr double framesPerTick = 44100.0 / (960 * 2); // at tempo 120

/// The on-screen keyboard, heard at a MIDI out.
struct Keyboard : TestHost {
    explicit Keyboard(int blockFrames = 1024) : TestHost(blockFrames) {
        add(new SeqStub(host));
        connectMIDI(midiIn, midiOut);
    }
    /// Plays on from a position, with keys held back to the grid.
    void playFrom(double pos, int autoq) const {
        midiIn->setAutoq(autoq);
        host->setPos(pos);
        host->start();
    }
    std::vector<int> sentNow() {
        forget();
        run();
        std::vector<int> all;
        for (const AamEvent& e : sent) all.push_back(e.data);
        return all;
    }
    /// Frame, counted from now, at which a message goes out; -1 if it does not.
    int frameOf(int data, int blocks) {
        for (int b = 0; b < blocks; ++b) {
            sentNow();
            for (const AamEvent& e : sent)
                if (e.data == data) return b * host->frames + e.frame;
        }
        return -1;
    }
};

} // namespace

TEST(CMIDIIn, KeysComeWithTheNextBlock) {
    Keyboard t;
    t.midiIn->playNote(60, true);
    t.midiIn->playNote(62, true);
    t.midiIn->playNote(62, false);
    const int on62 = asData(midiNoteOn, 62, 100), off62 = asData(midiNoteOn, 62, 0);
    EXPECT_EQ(t.sentNow(), (std::vector{on60, off60, on62, off62})) << "a new key ends the old one";
    EXPECT_TRUE(t.sentNow().empty());
    for (int i = 0; i < 600; ++i) t.midiIn->addMidiEvent(asData(midiController, i % 100, i % 128));
    EXPECT_EQ(t.sentNow().size(), 511u) << "the room of a port";
    EXPECT_EQ(asByte1(t.sent[100].data), 0);
}

/// velocity' = (1 - s + s (v - 1) / 126) 126 + 1, s in percent; 100 and what is beyond have none.
TEST(CMIDIIn, Sensitivity) {
    for (const auto& [sens, velocity, sent] : Rows<int, int, int>{{0, 1, 127},
                                                                  {50, 64, 95},
                                                                  {29, 2, 90},
                                                                  {99, 126, 126},
                                                                  {110, 1, 1},
                                                                  {110, 64, 57},
                                                                  {100, 64, 64},
                                                                  {200, 64, 64},
                                                                  {-5, 1, 127}}) {
        Keyboard t;
        t.midiIn->sens = sens;
        t.midiIn->addMidiEvent(asData(midiNoteOn | 3, 60, velocity));
        EXPECT_EQ(t.sentNow(), std::vector{asData(midiNoteOn | 3, 60, sent)}) << sens;
    }
}

/// A key waits for the next line of the grid, even when it stands on one, but not at the very
/// start.
TEST(CMIDIIn, AutoQuantise) {
    const struct {
        int autoq;
        double pos;
        int ticks; ///< that the note waits
    } cases[] = {{16, 1, 239},  {16, 239.5, 0}, {16, 240, 240}, {8, 100, 380},
                 {4, 960, 960}, {16, 0, 0},     {-1, 100, 0},   {3, 100, 0}};
    for (const auto& c : cases) {
        Keyboard t;
        t.playFrom(c.pos, c.autoq);
        t.midiIn->addMidiEvent(on60);
        EXPECT_NEAR(t.frameOf(on60, 40), c.ticks * framesPerTick, 0.5 * framesPerTick + 1)
            << c.autoq << " " << c.pos;
    }
}

/// A key that is let go before its note has begun sounds for 120 ticks.
TEST(CMIDIIn, NoteOffFollowsItsDelayedNote) {
    for (const int wanted : {on60, off60}) {
        Keyboard t(441); // a beat is 50 blocks
        t.playFrom(480, 4);
        const int other = asData(midiNoteOff | 1, 60, 0); // of another channel: not held back
        for (const int data : {on60, other, off60}) t.midiIn->addMidiEvent(data);
        EXPECT_EQ(t.sentNow(), std::vector{other});
        const double later = wanted == off60 ? 120 * framesPerTick : 0;
        EXPECT_NEAR(t.frameOf(wanted, 90) + 441, 11025 + later, 0.5);
    }
}

TEST(CMIDIChs, ChannelsAreLedElsewhere) {
    Keyboard t;
    auto* chs = t.add(new CMIDIChs(t.host));
    t.connectMIDI(t.midiIn, chs);
    t.connectMIDI(chs, t.midiOut);
    delete t.connectMIDI(t.midiIn, t.midiOut); // away
    chs->map[3] = -1;
    chs->map[4] = 9;
    chs->map[5] = 16 + 2; // as a damaged file might say
    for (const int status : {midiNoteOn | 2, midiNoteOn | 3, midiNoteOn | 4, midiNoteOff | 5, 0xF4})
        t.send(status);
    EXPECT_EQ(t.sentNow(), (std::vector{midiNoteOn | 2, midiNoteOn | 9, midiNoteOff | 2, 0xF9}))
        << "a system message is led like the rest";
}

/// Sizes and values that no writer produces: the reader ends at its block and stays in range.
TEST(DeviceComps, DamagedBlocks) {
    struct Item {
        const char* name;
        int size, value;
    };
    const Item items[] = {{"sens", 4, 1 << 30}, {"autoq", 4, 0},     {"device", 1, 0x80},
                          {"sens", -5, 0},      {"zzz", 1 << 30, 0}, {"autoq", 1 << 30, 16},
                          {"autoq", 2, 16}};
    TestHost t;
    for (const Item& item : items) {
        CMemoryStream s;
        s.writeId(item.name, item.size);
        s.writeInt(item.value);
        const int end = s.pos();
        s.writeInt(77);
        s.seek(0, seekStart);
        CMIDIIn in(t.host);
        in.read(&s, end);
        EXPECT_EQ(s.pos(), end) << item.name;
        EXPECT_TRUE(in.sens >= 0 && in.sens <= 127 && in.autoq == -1 && in.device == -1);
    }
}

#include "base/CStream.h"
#include "engine/MidiBytes.h"
#include "engine/MidiComps.h"
#include "engine/SeqStub.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr int on60 = asData(midiNoteOn, 60, 100);
constexpr int off60 = asData(midiNoteOn, 60, 0);

/// The on-screen keyboard, heard at a MIDI out.
struct Keyboard : TestHost {
    explicit Keyboard(int blockFrames = 1024) : TestHost(blockFrames) {
        add(new SeqStub(host));
        connectMIDI(midiIn, midiOut);
    }
    /// Frame, counted from the start of the test, at which a message went out; -1 if it did not.
    int frameOf(int data, int blocks) {
        for (int b = 0; b < blocks; ++b) {
            sent.clear();
            run();
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
    EXPECT_EQ(t.midiIn->lastNote, -1);
    t.run();
    const int expected[] = {on60, off60, asData(midiNoteOn, 62, 100), asData(midiNoteOn, 62, 0)};
    ASSERT_EQ(t.sent.size(), 4u) << "a new key lets the old one go";
    for (int i = 0; i < 4; ++i) EXPECT_EQ(t.sent[size_t(i)].data, expected[i]) << i;
    t.forget();
    t.run();
    EXPECT_TRUE(t.sent.empty());
}

TEST(CMIDIIn, Sensitivity) {
    for (const int sens : {0, 1, 29, 50, 99, 100, 110, 126, 127, 200, -5})
        for (const int velocity : {1, 2, 64, 100, 126, 127}) {
            Keyboard t;
            t.midiIn->sens = sens;
            t.midiIn->addMidiEvent(asData(midiNoteOn | 3, 60, velocity));
            t.run();
            int expected = velocity;
            if (sens < 127 && sens != 100) {
                const double s = sens * 0.01;
                expected = int((1 - s + s * ((velocity - 1) / 126.0)) * 126) + 1;
                expected = std::clamp(expected, 1, 127);
            }
            ASSERT_EQ(t.sent.size(), 1u);
            EXPECT_EQ(t.sent[0].data, asData(midiNoteOn | 3, 60, expected)) << sens;
        }
}

/// A key waits for the next line of the grid, even when it stands on one, but not at the very
/// start.
TEST(CMIDIIn, AutoQuantise) {
    struct Case {
        int autoq;
        double pos;
        int ticks; ///< that the note waits
    };
    const Case cases[] = {{16, 1, 239},  {16, 239.5, 0}, {16, 240, 240},
                          {8, 100, 380}, {4, 1000, 920}, {4, 960, 960},
                          {16, 0, 0},    {-1, 100, 0},   {3, 100, 0}};
    for (const Case& c : cases) {
        Keyboard t;
        t.midiIn->setAutoq(c.autoq);
        t.host->setPos(c.pos);
        t.host->start();
        t.midiIn->addMidiEvent(on60);
        const double framesPerTick = 44100.0 / (960 * 2); // at tempo 120
        const double expected = c.ticks * framesPerTick;
        EXPECT_NEAR(t.frameOf(on60, 40), expected, 0.5 * framesPerTick + 1)
            << c.autoq << " " << c.pos;
    }
}

/// A key that is let go before its note has begun sounds for 120 ticks.
TEST(CMIDIIn, NoteOffFollowsItsDelayedNote) {
    for (const int wanted : {on60, off60}) {
        Keyboard t(256);
        t.midiIn->setAutoq(4);
        t.host->setPos(480);
        t.host->start();
        const int other = asData(midiNoteOff | 1, 60, 0); // of another channel: not held back
        for (const int data : {on60, other, off60}) t.midiIn->addMidiEvent(data);
        t.run();
        ASSERT_EQ(t.sent.size(), 1u);
        EXPECT_EQ(t.sent[0].data, other);
        const double later = wanted == off60 ? 120 * 44100.0 / 1920 : 0;
        EXPECT_NEAR(t.frameOf(wanted, 90) + 256, 11025 + later, 1.0);
    }
}

/// Delayed keys take their place among the device's events by time, and none gets lost on the way.
TEST(CMIDIIn, EventsStayInOrderAndTooManyAreDropped) {
    Keyboard t;
    for (int i = 0; i < 600; ++i) t.midiIn->addMidiEvent(asData(midiController, i % 100, i % 128));
    t.run();
    EXPECT_EQ(t.sent.size(), 511u) << "the room of a port";
    EXPECT_EQ(asByte1(t.sent[100].data), 0);
}

TEST(CMIDIChs, ChannelsAreLedElsewhere) {
    TestHost t;
    auto* chs = t.add(new CMIDIChs(t.host));
    t.connectMIDI(t.midiIn, chs);
    t.connectMIDI(chs, t.midiOut);
    chs->map[3] = -1;
    chs->map[4] = 9;
    chs->map[5] = 16 + 2; // as a damaged file might say
    for (const int status : {midiNoteOn | 2, midiNoteOn | 3, midiNoteOn | 4, midiNoteOn | 5, 0xF4})
        t.send(asData(status, 1, 2));
    t.run();
    std::vector<int> out;
    for (const AamEvent& e : t.sent) {
        out.push_back(e.data & 0xFF);
        EXPECT_EQ(e.data >> 8, asData(0, 1, 2) >> 8);
    }
    EXPECT_EQ(out, (std::vector{midiNoteOn | 2, midiNoteOn | 9, midiNoteOn | 2, 0xF9}))
        << "a system message is led like the rest";
}

TEST(CKeyboard, IsASourceOfItsOwn) {
    TestHost t;
    auto* keys = t.add(new CKeyboard(t.host));
    t.connectMIDI(keys, t.midiOut);
    keys->addMidiEvent(on60);
    t.run(2);
    ASSERT_EQ(t.sent.size(), 1u);
    EXPECT_EQ(t.sent[0].data, on60);
}

// What files hold

TEST(DeviceComps, ReadBackWhatTheyWrite) {
    TestHost t;
    const auto copy = [](CComp& from, CComp& to) {
        CMemoryStream s;
        from.write(&s);
        const int end = s.pos();
        s.seek(0, seekStart);
        to.read(&s, end);
        EXPECT_EQ(s.pos(), end);
    };
    CMIDIIn in(t.host), in2(t.host);
    in.device = 3;
    in.setAutoq(8);
    in.sens = 40;
    copy(in, in2);
    EXPECT_TRUE(in2.device == 3 && in2.autoq == 8 && in2.sens == 40);
    CMIDIOut out(t.host), out2(t.host);
    out.device = -1;
    out2.device = 5;
    copy(out, out2);
    EXPECT_EQ(out2.device, -1);
    CAudioOut audio(t.host), audio2(t.host);
    audio.channelUsed[7] = audio.channelUsed[31] = 1;
    audio.setDevs();
    copy(audio, audio2);
    audio2.setDevs();
    EXPECT_TRUE(audio2.chs == 2 && audio2.dev0 == 7 && audio2.dev1 == 31);
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

#include "engine/MidiClock.h"
#include "engine/DeviceMidi.h"
#include "support/TestHost.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr int beat = 0xF8, start = 0xFA, goOn = 0xFB, stop = 0xFC, position = 0xF2;
constexpr double rate = 44100.0;

struct Sent {
    int64_t frame;
    int data;
    bool operator==(const Sent&) const = default;
};

void PrintTo(const Sent& s, std::ostream* out) {
    *out << std::hex << s.data << std::dec << " at " << s.frame;
}

/// What goes out in blocks of so many frames, up to a frame.
std::vector<Sent> sentUntil(TestHost& device, int64_t until, int block) {
    std::vector<Sent> all;
    for (int64_t at = 0; at < until; at += block) {
        device.forget();
        device.runBlock(block);
        for (const AamEvent& e : device.sent) all.push_back({at + e.frame, e.data});
    }
    return all;
}

} // namespace

/// 24 beats to a quarter note, each at the first frame that is not before it, in blocks of any
/// size; others begin at a sixteenth, and are placed anew when the song jumps.
TEST(MidiClockOut, TellsWhereTheSongIs) {
    const double framesOfTick = rate * 60.0 / 120.0 / 960.0;
    const auto frameOf = [&](double ticks) {
        return int64_t(std::ceil(ticks * framesOfTick - 1e-6));
    };
    for (const int block : {64, 333, 1024}) {
        TestHost device;
        device.host->deviceMidi->clockOut.device = anyClockDevice;
        device.run(1, block);
        EXPECT_TRUE(device.sent.empty());
        device.host->setPos(100.0);
        device.host->start();
        const int64_t until = block * (2 * 44100 / block);
        std::vector<Sent> expected = {{frameOf(240 - 100), position | 1 << 8},
                                      {frameOf(240 - 100), goOn}};
        for (int i = 6; frameOf(i * 40 - 100) < until; i++)
            expected.push_back({frameOf(i * 40 - 100), beat});
        EXPECT_EQ(sentUntil(device, until, block), expected) << block;
        device.host->setPos(0.0);
        const auto jumped = sentUntil(device, block, block);
        ASSERT_GE(jumped.size(), 3u);
        EXPECT_TRUE(jumped[0] == Sent({0, stop}) && jumped[1] == Sent({0, start}) &&
                    jumped[2] == Sent({0, beat}));
        device.host->stop();
        EXPECT_EQ(sentUntil(device, block, block), std::vector<Sent>({{0, stop}}));
        device.host->deviceMidi->clockOut.device = noClockDevice;
        device.host->start();
        EXPECT_TRUE(sentUntil(device, 44100, block).empty());
    }
}

/// A minute of a clock whose beats come up to a millisecond early or late: the song begins at the
/// frame of the first beat behind the start, is never a millisecond off from the tenth second on,
/// and ends at the frame of the stop.
TEST(MidiClockIn, KeepsTheSongWithAnotherMachine) {
    constexpr int block = 256, begins = 1000;
    constexpr double bpm = 97.3, framesOfBeat = rate * 60.0 / bpm / 24.0;
    TestHost device(block, rate);
    CQV* host = device.host;
    host->sync = 1;
    host->setLoop(0);
    host->deviceMidi->clockIn.device = 1;
    unsigned random = 1;
    int64_t at = 0, next = begins, beats = 0;
    double worst = 0.0;
    const auto run = [&] {
        for (; next < at + block; beats++) {
            device.send(beat, 1, int(next - at));
            random = random * 1664525u + 1013904223u;
            const double jitter = (double(random >> 8) / double(1 << 24) - 0.5) * rate * 0.002;
            next = begins + std::llround(double(beats + 1) * framesOfBeat + jitter);
        }
        device.send(start, 0, 3); // of a device that is not followed
        device.runBlock(block);
        at += block;
    };
    device.send(start, 1, 0);
    while (at + block < begins) run();
    EXPECT_FALSE(host->playing);
    run();
    ASSERT_TRUE(host->playing);
    EXPECT_NEAR(host->pos / (960.0 * 120.0 / 60.0 / rate), double(at - begins), 1e-3) << "frames";
    while (at < int64_t(60 * rate)) {
        run();
        const double wanted = double(at - begins) * 960.0 * bpm / 60.0 / rate;
        const double ms = (host->pos - wanted) / (960.0 * bpm / 60.0) * 1000.0;
        if (at > int64_t(10 * rate)) worst = std::max(worst, std::fabs(ms));
    }
    EXPECT_LT(worst, 1.0) << "milliseconds";
    EXPECT_NEAR(host->tempo, bpm, 1.0);
    const double before = host->pos, ticksOfFrame = host->framesToTicks(1.0);
    device.send(stop, 1, 100);
    device.runBlock(block);
    EXPECT_FALSE(host->playing);
    EXPECT_NEAR((host->pos - before) / ticksOfFrame, 100.0, 1e-3);
    device.send(position | 2 << 8 | 1 << 16, 1, 0);
    device.send(goOn, 1, 1);
    device.runBlock(block);
    EXPECT_EQ(host->pos, 130 * 240.0);
    EXPECT_FALSE(host->playing) << "no beat has come yet";
}

/// What comes from the port of a control surface waits for it, and reaches nothing else; clocks go
/// to neither.
TEST(DeviceMidi, KeepsTheControlSurfaceApart) {
    TestHost device;
    DeviceMidi& midi = *device.host->deviceMidi;
    midi.controlIn = 2;
    midi.copies = true;
    device.connectMIDI(device.midiIn, device.midiOut);
    device.send(0x403C90, 2, 5);
    device.send(0x403D90, 1, 6);
    device.send(beat, 1, 7);
    device.runBlock(64);
    ASSERT_EQ(device.sent.size(), 1u);
    EXPECT_EQ(device.sent[0].data, 0x403D90);
    AamEvent event{};
    ASSERT_TRUE(midi.control.pop(event));
    EXPECT_TRUE(event.data == 0x403C90 && event.device == 2);
    int copied = 0;
    EXPECT_TRUE(!midi.control.pop(event) && midi.copied.pop(copied) && copied == 0x403D90);
    EXPECT_FALSE(midi.copied.pop(copied));
}

/// A day of time code, in all that it counts: each frame has a moment of its own, with the numbers
/// that a drop leaves out, and is told by its pieces and by one message.
TEST(TimeCode, CountsFrames) {
    const auto text = [](const TimeCode& c) {
        char room[32];
        std::snprintf(room, sizeof room, "%02d:%02d:%02d:%02d", c.hours, c.minutes, c.seconds,
                      c.frames);
        return std::string(room);
    };
    struct Row {
        CodeRate rate;
        int64_t frame;
        const char* text;
    };
    for (const Row& r : {Row{CodeRate::fps24, 24 * 3661 + 23, "01:01:01:23"},
                         {CodeRate::fps25, 25 * 59, "00:00:59:00"},
                         {CodeRate::drop30, 1799, "00:00:59:29"},
                         {CodeRate::drop30, 1800, "00:01:00:02"},
                         {CodeRate::drop30, 17981, "00:09:59:29"},
                         {CodeRate::drop30, 17982, "00:10:00:00"},
                         {CodeRate::drop30, 107892, "01:00:00:00"},
                         {CodeRate::fps30, 30 * 86400 + 1, "00:00:00:01"}})
        EXPECT_EQ(text(TimeCode::ofFrame(r.frame, r.rate)), r.text) << r.frame;
    for (int rate = 0; rate < codeRates; rate++) {
        for (int64_t frame = 0; frame < 86400 * 23; frame += 997) {
            const TimeCode code = TimeCode::ofFrame(frame, CodeRate(rate));
            ASSERT_EQ(code.frame(), frame) << rate;
            std::array<int, 8> pieces{};
            for (int i = 0; i < 8; i++) pieces[size_t(i)] = code.piece(i) & 15;
            ASSERT_EQ(TimeCode::ofPieces(pieces), code);
            TimeCode whole;
            const FullFrame bytes = fullFrame(code);
            ASSERT_TRUE(readFullFrame(bytes, whole) && whole == code);
            ASSERT_FALSE(readFullFrame(std::span(bytes).first(9), whole));
        }
    }
}

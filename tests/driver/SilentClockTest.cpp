#include "driver/Module.h"
#include "driver/Servers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

/// Interleaved samples of a float WAV file with the plain 44-byte header.
struct Wav {
    uint16_t channels = 0;
    uint32_t rate = 0;
    std::vector<float> samples;
};

constexpr size_t headerBytes = 44;

void writeWav(const std::string& path, const Wav& wav) {
    const auto bytes = uint32_t(wav.samples.size() * sizeof(float));
    const uint32_t riff[] = {0x46464952, uint32_t(36 + bytes), 0x45564157, 0x20746d66, 16};
    const uint16_t form[] = {3, wav.channels};
    const uint32_t rates[] = {wav.rate, uint32_t(wav.rate * wav.channels * sizeof(float))};
    const uint16_t widths[] = {uint16_t(wav.channels * sizeof(float)), 32};
    const uint32_t data[] = {0x61746164, bytes};
    std::ofstream file(path, std::ios::binary);
    const auto put = [&](const auto& part) {
        file.write(reinterpret_cast<const char*>(part), sizeof part);
    };
    put(riff), put(form), put(rates), put(widths), put(data);
    file.write(reinterpret_cast<const char*>(wav.samples.data()), bytes);
}

Wav readWav(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    Wav wav;
    if (bytes.size() < headerBytes) return wav;
    std::memcpy(&wav.channels, &bytes[22], 2);
    std::memcpy(&wav.rate, &bytes[24], 4);
    uint32_t size = 0;
    std::memcpy(&size, &bytes[40], 4);
    EXPECT_EQ(size, bytes.size() - headerBytes);
    wav.samples.resize(size / sizeof(float));
    std::memcpy(wav.samples.data(), &bytes[headerBytes], size);
    return wav;
}

/// The device that is always there, in last place.
class SilentClock : public testing::Test {
protected:
    Module module;
    TempFolder folder;
    int clock() const { return int(module.devices().size()) - 1; }
};

} // namespace

TEST_F(SilentClock, GrantsAnyBlockAndRateAndHasAPairEachWay) {
    struct Case {
        int frames, rate;
    };
    const Case cases[] = {{1, 8000}, {64, 44100}, {333, 48000}, {1024, 96000}, {16384, 192000}};
    EXPECT_EQ(module.devices().back(), "Silent clock");
    for (const Case& c : cases) {
        ASSERT_TRUE(module.open(clock(), c.frames, c.rate));
        EXPECT_TRUE(module.waitBlocks(3)) << c.frames;
        EXPECT_EQ(module.frames, c.frames);
        EXPECT_EQ(module(aamFrames), c.frames);
        EXPECT_EQ(module.rate(), float(c.rate));
        EXPECT_EQ(module(aamAudioInCount), 2);
        EXPECT_EQ(module(aamAudioOutCount), 2);
        EXPECT_EQ(module(aamNeedsReopen), 0);
        module.close();
        EXPECT_EQ(module(aamAudioOutCount), 0) << "nothing is open";
    }
}

/// Late blocks are the machine's doing, but a clock that runs ahead is a fault anywhere.
TEST_F(SilentClock, NeverRunsAheadOfTime) {
    constexpr int count = 400, frames = 44;
    const int device = clock();
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_TRUE(module.open(device, frames, 44100));
    ASSERT_TRUE(module.waitBlocks(count));
    EXPECT_GE(std::chrono::steady_clock::now() - begun,
              std::chrono::nanoseconds(1000000000LL * (count - 1) * frames / 44100));
    EXPECT_GE(module.statistics().blocks, count);
}

TEST_F(SilentClock, PassesEverySampleOfTheFeedToTheCapture) {
    for (const int frames : {64, 333, 1024}) {
        Wav sent{2, 44100, {}};
        uint32_t random = 1;
        for (int i = 0; i < 2 * 20000; ++i)
            sent.samples.push_back(float(int32_t(random = random * 1664525 + 1013904223)) *
                                   0x1p-31f);
        writeWav(folder.file("in.wav"), sent);
        module.program = [](const Block& b) {
            for (int c = 0; c < 2; ++c) std::copy_n(b.ins[c], b.frames, b.outs[c]);
            return 0L;
        };
        ASSERT_EQ(module(aamTestFeed, folder.file("in.wav").c_str()), 0);
        ASSERT_EQ(module(aamTestCapture, folder.file("out.wav").c_str()), 0);
        ASSERT_TRUE(module.open(clock(), frames, 44100));
        ASSERT_TRUE(module.waitBlocks(20000 / frames + 2));
        EXPECT_EQ(module.statistics().lostFrames, 0);
        module.close();

        Wav got = readWav(folder.file("out.wav"));
        EXPECT_EQ(got.channels, 2);
        EXPECT_EQ(got.rate, 44100u);
        ASSERT_GT(got.samples.size(), sent.samples.size());
        sent.samples.resize(got.samples.size()); // silence follows
        EXPECT_EQ(got.samples, sent.samples) << "at blocks of " << frames;
    }
    EXPECT_EQ(module(aamTestFeed, folder.file("missing.wav").c_str()), -1);
    EXPECT_EQ(module(aamTestCapture, folder.file("no/such/folder.wav").c_str()), -1);
}

/// The buffers are those of the enabled channels alone, in their order, also when that changes
/// while it runs.
TEST_F(SilentClock, GivesOneBufferForEachEnabledChannel) {
    Wav sent{1, 44100, std::vector<float>(441000, 0.5f)};
    writeWav(folder.file("in.wav"), sent);
    std::atomic<long> ins{-1}, outs{-1};
    module.program = [&](const Block& b) {
        ins = b.numIns;
        outs = b.numOuts;
        return 0L;
    };
    ASSERT_TRUE(module.open(clock(), 64, 44100));
    struct Case {
        unsigned in, out;
    };
    for (const Case c : {Case{0, 0}, {1, 2}, {2, 3}, {3, 1}, {0xFFFF, 0xFFFF}}) {
        for (int i = 0; i < aamMaxChannels; ++i) {
            module(aamAudioInEnable, i, c.in >> i & 1);
            module(aamAudioOutEnable, i, c.out >> i & 1);
            EXPECT_EQ(module(aamAudioInEnabled, i), intptr_t(c.in >> i & 1));
            EXPECT_EQ(module(aamAudioOutEnabled, i), intptr_t(c.out >> i & 1));
        }
        ASSERT_TRUE(module.waitBlocks(2));
        EXPECT_EQ(ins, __builtin_popcount(c.in & 3));
        EXPECT_EQ(outs, __builtin_popcount(c.out & 3));
    }
    module.close();
    EXPECT_EQ(module(aamAudioOutEnabled, 1), 1) << "the flags outlive the device";
}

TEST_F(SilentClock, SendsEventsInOrderInsideTheBlockAndNoMoreThanFit) {
    std::atomic<bool> done{false};
    module.program = [&](const Block& b) -> long {
        if (done) return 0;
        const int32_t frames[] = {300, -7, 20, 20, 64};
        for (int i = 0; i < 5; ++i) b.events[i] = {0x404090 + i, -1, {}, frames[i]};
        for (int i = 5; i < aamMaxEvents; ++i) b.events[i] = {0x90, 0, {}, 63};
        done = true;
        return 100000;
    };
    module(aamTestTake);
    ASSERT_TRUE(module.open(clock(), 64, 44100));
    ASSERT_TRUE(module.waitBlocks(3));
    struct Sent {
        int32_t data;
        int64_t frame;
    };
    std::vector<Sent> sent;
    AamEvent event{};
    int64_t frame = 0;
    while (module(aamTestTake, &event, intptr_t(&frame)) == 1) sent.push_back({event.data, frame});
    ASSERT_EQ(sent.size(), size_t(aamMaxEvents));
    const Sent first[] = {
        {0x404091, 0}, {0x404092, 20}, {0x404093, 20}, {0x404090, 63}, {0x404094, 63}};
    for (size_t i = 0; i < std::size(first); ++i) {
        EXPECT_EQ(sent[i].data, first[i].data) << i;
        EXPECT_EQ(sent[i].frame, first[i].frame) << i;
    }
}

TEST_F(SilentClock, BringsInjectedEventsOnceAndInsideTheBlock) {
    std::vector<AamEvent> got;
    module.program = [&](const Block& b) {
        got.insert(got.end(), b.events, b.events + b.numEvents);
        return 0L;
    };
    const AamEvent events[] = {{0x7F3C90, 0, {}, 5}, {0x003C80, 3, {}, 9999}};
    for (const AamEvent& e : events) ASSERT_EQ(module(aamTestInject, &e), 0);
    ASSERT_TRUE(module.open(clock(), 64, 44100));
    ASSERT_TRUE(module.waitBlocks(3));
    module.close();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].data, 0x7F3C90);
    EXPECT_EQ(got[0].frame, 5);
    EXPECT_EQ(got[1].device, 3);
    EXPECT_EQ(got[1].frame, 63);
}

TEST_F(SilentClock, HasNoCallbackRunningOnceStopped) {
    stopWhileInside(module, clock());
    EXPECT_GT(module.statistics().lateBlocks, 0) << "5 ms of work for blocks of 1.5 ms, three held";
}

TEST_F(SilentClock, ReopensAHundredTimes) {
    reopen(module, clock(), 100);
}

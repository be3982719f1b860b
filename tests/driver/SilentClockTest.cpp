#include "driver/Module.h"
#include "driver/Servers.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

using Samples = std::vector<float>;

/// A WAV file of interleaved floats with the plain 44-byte header.
std::string wavOf(uint16_t channels, uint32_t rate, const Samples& samples) {
    std::string file;
    const auto put = [&file](auto... values) {
        (file.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
    };
    const auto bytes = uint32_t(samples.size() * sizeof(float));
    put(0x46464952, uint32_t(36 + bytes), 0x45564157, 0x20746d66, 16); // RIFF, WAVE, fmt
    put(uint16_t(3), channels, rate, uint32_t(rate * channels * sizeof(float)));
    put(uint16_t(channels * sizeof(float)), uint16_t(32), 0x61746164, bytes); // data
    return file.append(reinterpret_cast<const char*>(samples.data()), bytes);
}

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The device that is always there, in last place.
class SilentClock : public testing::Test {
protected:
    Module module;
    TempFolder folder;
    int clock() const { return int(module.devices().size()) - 1; }
    bool feed(const std::string& wav) const {
        std::ofstream(folder.file("in.wav"), std::ios::binary) << wav;
        return module(aamTestFeed, folder.file("in.wav").c_str()) == 0;
    }
};

} // namespace

TEST_F(SilentClock, GrantsAnyBlockAndRateAndHasAPairEachWay) {
    EXPECT_EQ(module.devices().back(), "Silent clock");
    const std::pair<int, int> cases[] = {{1, 8000}, {333, 48000}, {16384, 192000}};
    for (const auto& [frames, rate] : cases) {
        ASSERT_TRUE(module.open(clock(), frames, rate));
        EXPECT_TRUE(module.waitBlocks(3)) << frames;
        EXPECT_EQ(module.frames, frames);
        EXPECT_EQ(module(aamFrames), frames);
        EXPECT_EQ(module.rate(), float(rate));
        EXPECT_TRUE(module(aamAudioInCount) == 2 && module(aamAudioOutCount) == 2);
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
    module.program = [](const Block& b) {
        for (int c = 0; c < 2; ++c) std::copy_n(b.ins[c], b.frames, b.outs[c]);
        return 0L;
    };
    Samples sent;
    for (uint32_t i = 1; i <= 2 * 20000; ++i)
        sent.push_back(float(int32_t(i * 2654435769u)) * 0x1p-31f);
    for (const int frames : {64, 333, 1024}) {
        ASSERT_TRUE(feed(wavOf(2, 44100, sent)));
        const std::string out = folder.file("out.wav");
        ASSERT_EQ(module(aamTestCapture, out.c_str()), 0);
        ASSERT_TRUE(module.open(clock(), frames, 44100));
        ASSERT_TRUE(module.waitBlocks(20000 / frames + 2));
        EXPECT_EQ(module.statistics().lostFrames, 0);
        module.close();
        const std::string got = bytesOf(out);
        Samples expected = sent;
        expected.resize(std::max(sent.size(), got.size() / sizeof(float) - 11)); // silence follows
        EXPECT_TRUE(got == wavOf(2, 44100, expected)) << "at blocks of " << frames;
    }
    EXPECT_EQ(module(aamTestFeed, folder.file("missing.wav").c_str()), -1);
    EXPECT_EQ(module(aamTestCapture, folder.file("no/such/folder.wav").c_str()), -1);
    for (const size_t cut : {0u, 11u, 30u, 43u})
        EXPECT_FALSE(feed(wavOf(2, 44100, sent).substr(0, cut)));
}

/// The buffers are those of the enabled channels alone, in their order, also when that changes
/// while it runs.
TEST_F(SilentClock, GivesOneBufferForEachEnabledChannel) {
    ASSERT_TRUE(feed(wavOf(1, 44100, Samples(441000, 0.5f))));
    std::atomic<long> ins{-1}, outs{-1};
    module.program = [&](const Block& b) {
        ins = b.numIns;
        outs = b.numOuts;
        return 0L;
    };
    ASSERT_TRUE(module.open(clock(), 64, 44100));
    const std::pair<unsigned, unsigned> cases[] = {
        {0, 0}, {1, 2}, {2, 3}, {3, 1}, {0xFFFF, 0xFFFF}};
    for (const auto& [in, out] : cases) {
        for (int i = 0; i < aamMaxChannels; ++i) {
            module(aamAudioInEnable, i, in >> i & 1);
            module(aamAudioOutEnable, i, out >> i & 1);
            EXPECT_EQ(module(aamAudioInEnabled, i), intptr_t(in >> i & 1));
        }
        ASSERT_TRUE(module.waitBlocks(2));
        EXPECT_EQ(ins, std::popcount(in & 3));
        EXPECT_EQ(outs, std::popcount(out & 3));
    }
    module.close();
    EXPECT_EQ(module(aamAudioOutEnabled, 1), 1) << "the flags outlive the device";
}

/// What is injected comes in once and inside the block; what the program sends goes out in order,
/// inside the block, and no more than fit.
TEST_F(SilentClock, CarriesEventsInsideTheBlock) {
    std::vector<AamEvent> got;
    got.reserve(10);
    std::atomic<bool> done{false};
    module.program = [&](const Block& b) -> long {
        got.insert(got.end(), b.events, b.events + b.numEvents);
        if (done.exchange(true)) return 0;
        const int32_t frames[] = {300, -7, 20, 20, 64};
        for (int i = 0; i < 5; ++i) b.events[i] = {0x404090 + i, -1, {}, frames[i]};
        for (int i = 5; i < aamMaxEvents; ++i) b.events[i] = {0x90, 0, {}, 63};
        return 100000;
    };
    const AamEvent events[] = {{0x7F3C90, 0, {}, 5}, {0x003C80, 3, {}, 9999}};
    for (const AamEvent& e : events) ASSERT_EQ(module(aamTestInject, &e), 0);
    module(aamTestTake);
    ASSERT_TRUE(module.open(clock(), 64, 44100));
    ASSERT_TRUE(module.waitBlocks(3));
    module(aamStop);
    ASSERT_EQ(got.size(), 2u);
    EXPECT_TRUE(got[0].data == 0x7F3C90 && got[0].frame == 5);
    EXPECT_TRUE(got[1].device == 3 && got[1].frame == 63);

    std::vector<std::pair<int, int64_t>> sent;
    AamEvent event{};
    int64_t frame = 0;
    while (module(aamTestTake, &event, intptr_t(&frame)) == 1) sent.emplace_back(event.data, frame);
    ASSERT_EQ(sent.size(), size_t(aamMaxEvents));
    sent.resize(5);
    EXPECT_EQ(sent,
              (decltype(sent){
                  {0x404091, 0}, {0x404092, 20}, {0x404093, 20}, {0x404090, 63}, {0x404094, 63}}));
}

TEST_F(SilentClock, HasNoCallbackRunningOnceStopped) {
    stopWhileInside(module, clock());
    EXPECT_GT(module.statistics().lateBlocks, 0) << "5 ms of work for blocks of 1.5 ms, three held";
    EXPECT_GT(module.statistics().heavyBlocks, 0);
}

TEST_F(SilentClock, ReopensAHundredTimes) {
    reopen(module, clock(), 100);
}

#include "driver/Module.h"
#include "driver/Servers.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

class Pulse : public testing::Test {
protected:
    PulseServer server;
    Module module;
    int first = sink("first"), second = sink("second");

    int sink(const std::string& name) {
        EXPECT_TRUE(comes([&] { return module.device("Pulse: " + name) >= 0; }));
        return module.device("Pulse: " + name);
    }
};

} // namespace

TEST_F(Pulse, ListsASinkEachWithTheDefaultFirstAndGrantsTheBlock) {
    EXPECT_LT(sink("first"), sink("second"));
    for (const int frames : {64, 333, 1024}) {
        ASSERT_TRUE(module.open(sink("first"), frames, 44100));
        EXPECT_EQ(module(aamFrames), frames);
        EXPECT_EQ(module.rate(), 44100.0f);
        EXPECT_EQ(module(aamAudioInCount), 2) << "the default source";
        EXPECT_EQ(module.name(aamAudioOutName, 0), "Front Left");
        ASSERT_TRUE(module.waitBlocks(20)) << frames;
        EXPECT_EQ(module.frames, frames);
        module.close();
    }
}

/// The server may leave gaps on a busy machine, so most steps count, but those must be exact: a
/// wrong channel, scale or order of the blocks leaves none.
TEST_F(Pulse, PlaysTheSamplesInOrder) {
    constexpr float step = 0x1p-20f;
    int64_t played = 0;
    module.program = [&](const Block& b) {
        for (long i = 0; i < b.frames; ++i) {
            b.outs[0][i] = float(++played % (1 << 20)) * step;
            b.outs[1][i] = -b.outs[0][i];
        }
        return 0L;
    };
    TempFolder folder;
    ASSERT_TRUE(module.open(second, 256, 48000));
    const std::string file = folder.file("heard");
    Child recorder({"parecord", "-d", "second.monitor", "--raw", "--format=float32le",
                    "--rate=48000", "--channels=2", file});
    constexpr size_t wanted = 48000;
    const auto recorded = [&] {
        return std::filesystem::exists(file) ? std::filesystem::file_size(file) / 8 : 0;
    };
    ASSERT_TRUE(comes([&] { return recorded() >= wanted; }));
    recorder.end(SIGTERM);
    module.close();

    std::ifstream stream(file, std::ios::binary);
    std::vector<float> heard(2 * wanted);
    stream.read(reinterpret_cast<char*>(heard.data()),
                std::streamsize(heard.size() * sizeof(float)));
    size_t exact = 0;
    for (size_t i = 1; i < wanted; ++i) {
        const float left = heard[2 * i], before = heard[2 * i - 2];
        exact += left - before == step && heard[2 * i + 1] == -left;
    }
    EXPECT_GT(exact, wanted * 8 / 10);
}

TEST_F(Pulse, AsksToBeReopenedWhenTheSinkVanishes) {
    failWhilePlaying(module, second, [] {
        ASSERT_EQ(runCommand({"pw-cli", "destroy", "second"}), 0);
    });
}

TEST_F(Pulse, OutlivesItsServer) {
    failWhilePlaying(module, first, [&] { server.kill(); });
    EXPECT_EQ(module.device("Pulse"), -1);
}

TEST_F(Pulse, ReopensAHundredTimes) {
    reopen(module, first, 100);
}

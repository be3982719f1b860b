#include "driver/Module.h"
#include "driver/Servers.h"

#include <gtest/gtest.h>
#include <limits>

/// Whatever the program asks for at the wrong time or place gets a neutral answer.
TEST(DriverModule, AnswersNeutrallyOutsideItsLists) {
    const AamEntry entry = Module::load();
    for (intptr_t op = 1; op < aamTestCapture; ++op)
        EXPECT_EQ(entry(op, 0, 0), 0) << "before the first call, " << op;
    Module module;
    const intptr_t beyond[] = {-1, 1000, std::numeric_limits<int32_t>::max(),
                               std::numeric_limits<intptr_t>::min()};
    for (const intptr_t index : beyond) {
        EXPECT_EQ(module(aamOpen, index), -1);
        for (const AamOp op :
             {aamDeviceName, aamMidiInName, aamMidiOutName, aamAudioInName, aamAudioOutName})
            EXPECT_EQ(module.name(op, index), "") << op;
        for (const AamOp op :
             {aamMidiInEnable, aamMidiOutEnable, aamAudioInEnable, aamAudioOutEnable}) {
            module(op, index, 1);
            EXPECT_EQ(module(AamOp(op + 1), index), 0) << op;
        }
    }
    for (int i = 0; i < aamMaxChannels; ++i) EXPECT_EQ(module(aamAudioInEnabled, i), 0);
    EXPECT_EQ(module(AamOp(19)), 0);
    EXPECT_EQ(module(AamOp(-5)), 0);
    module(aamStart);
    module(aamStop);
    module(aamClose);
    EXPECT_EQ(module(aamNeedsReopen), 0);
}

/// The servers of whoever runs the tests stay out of them, and a machine without any has a device.
TEST(DriverModule, ListsTheClockAloneWhereNoServerRuns) {
    Module module;
    EXPECT_EQ(module.devices(), std::vector<std::string>{"Silent clock"});
}

TEST(DriverModule, KeepsFramesAndRateThatItWasNotAskedToChange) {
    Module module;
    const std::pair<int, int> cases[] = {{512, 512}, {-1, 512}, {16385, 512}, {16384, 16384}};
    for (const auto& [asked, kept] : cases) {
        module(aamFrames, asked);
        EXPECT_EQ(module(aamFrames), kept) << asked;
    }
    module(aamRate, 48000);
    EXPECT_EQ(module.rate(), 48000.0f);
    const int clock = module.device("Silent clock");
    ASSERT_TRUE(module.open(clock, 777, 22050));
    module.close();
    module(aamFrames, -1);
    ASSERT_EQ(module(aamOpen, clock), 0);
    EXPECT_EQ(module(aamFrames), 777);
}

/// Denormals would make a fading reverb ten times as expensive.
TEST(DriverModule, FlushesDenormalsOnItsThread) {
    Module module;
    std::atomic<float> product{-1};
    module.program = [&](const Block&) {
        volatile float tiny = std::numeric_limits<float>::min();
        product = tiny * 0.5f;
        return 0L;
    };
    ASSERT_TRUE(module.open(module.device("Silent clock"), 64, 44100));
    ASSERT_TRUE(module.waitBlocks(2));
    module.close();
    EXPECT_EQ(product, 0.0f);
}

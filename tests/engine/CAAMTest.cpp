#include "engine/CAAM.h"
#include "engine/FakeModule.h"
#include "engine/StripFixture.h"
#include "support/RtTrap.h"

#include "base/Delegates.h"
#include "base/Numbers.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

namespace {

/// The bridge on the fake module, wired to the host as the program does it.
struct CAAMTest : testing::Test {
    CAAMTest() : handle(dlopen(FAKE_MODULE, RTLD_NOW)) {
        module = static_cast<FakeState*>(dlsym(handle, "fakeState"));
        *module = FakeState();
    }
    ~CAAMTest() override {
        bridge.reset();
        dlclose(handle);
    }
    CAAM& load() {
        bridge.emplace(libio, FAKE_MODULE);
        t.host->aam = &*bridge;
        bridge->onChange = new _COnChange<CQV>(t.host, &CQV::aamChanged);
        module->calls.clear();
        return *bridge;
    }
    std::vector<int> ops() {
        std::vector<int> all;
        for (const FakeState::Call& c : module->calls) all.push_back(int(c.op));
        module->calls.clear();
        return all;
    }
    TestHost t;
    void* handle;
    FakeState* module;
    std::optional<CAAM> bridge;
};

using Ops = std::vector<int>;

} // namespace

TEST_F(CAAMTest, WithoutAModuleEverythingIsNeutral) {
    testing::internal::CaptureStdout();
    CAAM none(libio, "/nowhere/libaam.so"), other(libio, "libm.so.6");
    const std::string said = testing::internal::GetCapturedStdout();
    EXPECT_NE(said.find("dlopen(): /nowhere/libaam.so"), std::string::npos);
    EXPECT_NE(said.find("dlsym(): "), std::string::npos);
    for (CAAM* b : {&none, &other}) {
        b->audioOpen(1);
        b->idle();
        b->midiInEnable(0, 1);
        b->audioClose();
        EXPECT_FALSE(b->loaded || b->opened || b->needReload() || b->midiInEnabled(0));
        EXPECT_EQ(b->numAudioDevs() + b->getMIDIInCount(), 0);
        EXPECT_TRUE(b->midiInName(0).empty() && b->audioName(0).empty());
    }
}

TEST_F(CAAMTest, LoadingAndLeaving) {
    bridge.emplace(libio, FAKE_MODULE);
    EXPECT_EQ(ops(), (Ops{aamInit, aamMidiInCount, aamMidiOutCount, aamDeviceCount, aamDeviceName,
                          aamDeviceName}));
    EXPECT_EQ(module->callback, &libio);
    EXPECT_EQ(bridge->numAudioDevs(), 2);
    EXPECT_TRUE(bridge->audioName(1) == "device 1");
    EXPECT_TRUE(bridge->audioName(2).empty());
    EXPECT_EQ(bridge->getMIDIInCount(), 3);
    EXPECT_EQ(bridge->mumDriverTypes(), 1);
    bridge->audioOpen(0);
    ops();
    bridge.reset();
    EXPECT_EQ(ops(), (Ops{aamStop, aamClose, aamShutdown}));
    module->devices = -7;
    bridge.emplace(libio, FAKE_MODULE);
    EXPECT_EQ(bridge->numAudioDevs(), 0);
}

TEST_F(CAAMTest, RequestsWithinTheRangeOnly) {
    CAAM& b = load();
    const std::pair<int, int> frames[] = {
        {0, 1024}, {16385, 1024}, {-1, 1024}, {16384, 16384}, {1, 1}};
    for (const auto& [asked, got] : frames) {
        b.setFrames(asked);
        EXPECT_EQ(b.frames, got) << asked;
    }
    const std::pair<float, float> rates[] = {{0, 44100},   {-1, 44100},      {192001, 44100},
                                             {NAN, 44100}, {192000, 192000}, {8000, 8000}};
    for (const auto& [asked, got] : rates) {
        b.setRate(asked);
        EXPECT_EQ(b.rate, got) << asked;
    }
}

TEST_F(CAAMTest, OpeningTakesWhatTheDriverGrants) {
    CAAM& b = load();
    module->grantFrames = 512;
    module->grantRate = 48000.0f;
    b.setRate(96000.4f);
    b.audioOpen(1);
    EXPECT_EQ(ops(), (Ops{aamRate, aamFrames, aamOpen, aamFrames, aamRate, aamAudioInCount,
                          aamAudioOutCount, aamStart}));
    EXPECT_EQ(module->askedRate, 96000);
    EXPECT_TRUE(b.opened && module->running);
    EXPECT_EQ(b.frames, 512);
    EXPECT_EQ(b.numAudioIns, 8);
    EXPECT_EQ(b.numAudioOuts, 6);
    EXPECT_EQ(t.host->frames, 512);
    EXPECT_EQ(t.host->rate, 48000.0f);
    b.audioOpen(0);
    EXPECT_TRUE(ops().empty()) << "open already";
    EXPECT_EQ(b.device, 1);
    t.run();
    EXPECT_TRUE(t.host->tasks->blocksComing());
    b.audioClose();
    EXPECT_EQ(ops(), (Ops{aamStop, aamClose}));
    EXPECT_FALSE(b.opened || module->running);
    EXPECT_EQ(b.numAudioIns, 0);
    EXPECT_FALSE(t.host->tasks->blocksComing());
    b.audioClose();
    EXPECT_TRUE(ops().empty());
}

/// A device that fails, or grants nonsense, leaves the bridge closed and the requests as they were.
TEST_F(CAAMTest, FailedOpens) {
    struct Case {
        intptr_t open, frames;
        float rate;
        bool closes;
    };
    const Case cases[] = {{-1, 512, 48000, false},      {0, -1, 48000, true},
                          {0, 16385, 48000, true},      {0, 512, -1, true},
                          {0, 512, 192001, true},       {0, intptr_t(1) << 40, 48000, true},
                          {0, 512, std::nanf(""), true}};
    CAAM& b = load();
    for (const Case& c : cases) {
        module->openResult = c.open;
        module->grantFrames = c.frames;
        module->grantRate = c.rate;
        b.audioOpen(0);
        const Ops all = ops();
        EXPECT_EQ(std::ranges::count(all, int(aamClose)), c.closes) << c.frames << " " << c.rate;
        EXPECT_EQ(std::ranges::count(all, int(aamStart)), 0);
        EXPECT_FALSE(b.opened);
        EXPECT_EQ(b.frames, 1024);
        EXPECT_EQ(b.rate, 44100.0f);
        EXPECT_EQ(t.host->frames, 1024);
    }
}

TEST_F(CAAMTest, IdleReopens) {
    CAAM& b = load();
    b.audioOpen(1);
    ops();
    b.idle();
    EXPECT_EQ(ops(), Ops{aamNeedsReopen});
    module->needsReopen = 1;
    module->grantFrames = 256;
    t.host->idle();
    EXPECT_EQ(module->askedFrames, -1) << "whatever the device has";
    EXPECT_TRUE(b.opened);
    EXPECT_EQ(b.device, 1);
    EXPECT_EQ(t.host->frames, 256);
    module->needsReopen = 1;
    module->openResult = -1;
    b.idle();
    EXPECT_FALSE(b.opened);
    EXPECT_EQ(b.frames, 256);
    module->openResult = 0;
    module->grantFrames = 0;
    b.setFrames(128);
    b.needReopen = true;
    b.idle();
    EXPECT_TRUE(b.opened);
    EXPECT_EQ(t.host->frames, 128);
    ops();
    b.idle();
    EXPECT_EQ(ops(), Ops{aamNeedsReopen}) << "once";
}

TEST_F(CAAMTest, ChannelsAndPorts) {
    CAAM& b = load();
    b.midiInEnable(1, 1);
    b.midiOutEnable(0, 1);
    b.audioInEnable(7, 1);
    b.audioOutEnable(5, 1);
    b.audioOutEnable(6, 1);
    b.audioOutEnable(6, 0);
    EXPECT_TRUE(b.midiInEnabled(1) && b.midiOutEnabled(0) && b.audioInEnabled(7));
    EXPECT_FALSE(b.midiInEnabled(0) || b.audioInEnabled(6) || b.audioOutEnabled(6));
    EXPECT_TRUE(b.midiInName(2) == "min 2" && b.midiOutName(0) == "mout 0");
    EXPECT_TRUE(b.audioInName(3) == "in 3" && b.audioOutName(4) == "out 4");
    module->unterminated = true;
    EXPECT_EQ(b.audioInName(3).length(), aamNameBytes - 1);
    b.audioOpen(0);
    b.dawMode = true;
    EXPECT_TRUE(b.audioInName(3) == "daw-3" && b.audioOutName(4) == "daw-4");
    EXPECT_TRUE(b.audioInEnabled(7) && b.audioOutEnabled(5));
    EXPECT_FALSE(b.audioInEnabled(8) || b.audioOutEnabled(6)) << "beyond the device";
}

/// The real module and its device without hardware: sound runs through a hundred openings, and
/// stops with each closing.
TEST(CAAM, RealModuleOpensAHundredTimes) {
    StripFixture t(64);
    SignalComp* signal = t.addSignal();
    CAAM bridge(libio, SONDRAVA_BIN "/libaam.so");
    bridge.onChange = new _COnChange<CQV>(t.host, &CQV::aamChanged);
    t.host->aam = &bridge;
    const int silentClock = bridge.numAudioDevs() - 1;
    ASSERT_TRUE(bridge.audioName(silentClock) == "Silent clock");
    for (int i = 0; i < 2; ++i) bridge.audioOutEnable(i, 1);
    rtReset();
    for (int i = 0; i < 100; ++i) {
        const int frames = 64 << i % 3;
        bridge.setFrames(frames);
        bridge.getAudioDeviceNames();
        bridge.audioOpen(silentClock);
        ASSERT_TRUE(bridge.opened) << i;
        ASSERT_EQ(t.host->frames, frames);
        for (int ms = 0; ms < 5000 && !t.host->tasks->blocksComing(); ++ms) asSleep(1);
        ASSERT_TRUE(t.host->tasks->blocksComing()) << i;
        t.host->idle();
        bridge.audioClose();
        ASSERT_FALSE(t.host->tasks->blocksComing());
    }
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_GT(signal->at, 0);
}

#include "engine/CAAM.h"
#include "engine/DeviceMidi.h"
#include "engine/FakeModule.h"
#include "engine/MidiBytes.h"
#include "engine/StripFixture.h"
#include "support/Places.h"
#include "support/Rows.h"

#include "base/Numbers.h"

#include <dlfcn.h>

#include <cmath>
#include <optional>

namespace {

using Ops = std::vector<int>;

const std::string fakeModule = builtFile("tests/libfake_aam.so");

/// The bridge on a module, by default the fake one, wired to the host as the program does it.
struct CAAMTest : testing::Test {
    CAAMTest() : handle(dlopen(fakeModule.c_str(), RTLD_NOW)) {
        module = static_cast<FakeState*>(dlsym(handle, "fakeState"));
        *module = FakeState();
        load(fakeModule);
    }
    ~CAAMTest() override {
        b.reset();
        dlclose(handle);
    }
    void load(const std::string& path) {
        b.emplace(libio, path.c_str());
        t.host->aam = &*b;
        b->onChange = new _COnChange<CQV>(t.host, &CQV::aamChanged);
    }
    /// What the module was asked since the last look.
    Ops ops() { return std::exchange(module->ops, {}); }

    StripFixture t{1024};
    void* handle;
    FakeState* module;
    std::optional<CAAM> b;
};

} // namespace

TEST_F(CAAMTest, WithoutAModuleEverythingIsNeutral) {
    testing::internal::CaptureStdout();
    for (const char* path : {"/nowhere/libaam.so", "libm.so.6"}) {
        load(path);
        b->audioOpen(1);
        b->idle();
        EXPECT_FALSE(b->loaded || b->opened || b->midiInEnabled(0));
        EXPECT_EQ(b->numAudioDevs() + b->getMIDIInCount(), 0);
        EXPECT_TRUE(b->midiInName(0).empty() && b->audioName(0).empty());
    }
    const std::string said = testing::internal::GetCapturedStdout();
    EXPECT_NE(said.find("dlopen(): /nowhere/libaam.so"), std::string::npos);
    EXPECT_NE(said.find("dlsym(): "), std::string::npos);
}

TEST_F(CAAMTest, OpensAndTakesWhatTheDriverGrants) {
    EXPECT_EQ(ops(), (Ops{aamInit, aamMidiInCount, aamMidiOutCount, aamDeviceCount, aamDeviceName,
                          aamDeviceName}));
    EXPECT_EQ(module->callback, &libio);
    EXPECT_TRUE(b->audioName(1) == "device 1" && b->audioName(2).empty());
    EXPECT_EQ(b->audioInName(3).length(), aamNameBytes - 1);
    module->grantFrames = 512;
    module->grantRate = 48000.0f;
    for (const float wanted : {96000.4f, 0.0f, 192001.0f, NAN}) b->setRate(wanted);
    ops();
    b->audioOpen(1);
    b->audioOpen(0); // open already
    EXPECT_EQ(ops(), (Ops{aamRate, aamFrames, aamOpen, aamFrames, aamRate, aamAudioInCount,
                          aamAudioOutCount, aamStart}));
    EXPECT_EQ(module->askedRate, 96000);
    EXPECT_TRUE(b->opened && b->device == 1 && b->numAudioIns == FakeState::audioIns);
    b->dawMode = true;
    EXPECT_TRUE(b->audioInName(3) == "daw-3");
    b->dawMode = false;
    EXPECT_TRUE(t.host->frames == 512 && t.host->rate == 48000.0f);
    t.run();
    b->audioClose();
    EXPECT_EQ(ops(), (Ops{aamStop, aamClose}));
    EXPECT_FALSE(b->opened || b->numAudioIns || t.host->tasks->blocksComing());
    b->audioOpen(0);
    ops();
    b.reset();
    EXPECT_EQ(ops(), (Ops{aamStop, aamClose, aamShutdown}));
}

TEST_F(CAAMTest, FailedOpens) {
    for (const auto& [opened, frames, rate] :
         Rows<intptr_t, intptr_t, float>{{-1, 512, 48000},
                                         {0, -1, 48000},
                                         {0, intptr_t(1) << 40, 48000},
                                         {0, 16385, 48000},
                                         {0, 512, -1},
                                         {0, 512, 192001},
                                         {0, 512, NAN}}) {
        module->openResult = opened;
        module->grantFrames = frames;
        module->grantRate = rate;
        ops();
        b->audioOpen(0);
        const Ops all = ops();
        EXPECT_EQ(std::ranges::count(all, int(aamClose)), opened == 0) << frames << " " << rate;
        EXPECT_EQ(std::ranges::count(all, int(aamStart)), 0);
        EXPECT_TRUE(!b->opened && b->frames == 1024 && b->rate == 44100.0f);
        EXPECT_EQ(t.host->frames, 1024);
    }
}

TEST_F(CAAMTest, IdleReopens) {
    b->audioOpen(1);
    module->needsReopen = 1;
    module->grantFrames = 256;
    t.host->idle();
    EXPECT_EQ(module->askedFrames, -1) << "whatever the device has";
    EXPECT_TRUE(b->opened && b->device == 1);
    EXPECT_EQ(t.host->frames, 256);
    module->needsReopen = 1;
    module->openResult = -1;
    b->idle();
    EXPECT_TRUE(!b->opened && b->frames == 256);
    module->openResult = module->grantFrames = 0;
    b->setFrames(128);
    b->needReopen = true;
    b->idle();
    EXPECT_TRUE(b->opened);
    EXPECT_EQ(t.host->frames, 128);
    ops();
    b->idle();
    EXPECT_EQ(ops(), Ops{aamNeedsReopen}) << "once";
}

TEST_F(CAAMTest, TheBlockIsTheDevicesUnlessChosen) {
    b->framesChosen = false;
    module->grantFrames = 256;
    b->audioOpen(0);
    EXPECT_EQ(module->askedFrames, -1);
    EXPECT_EQ(t.host->frames, 256);
    b->setFrames(512);
    b->needReopen = true;
    b->idle();
    EXPECT_EQ(module->askedFrames, 512);
}

/// A device that is gone is tried again and again, whatever becomes of the list meanwhile, until it
/// is back or another one was chosen.
TEST_F(CAAMTest, ALostDeviceIsWaitedFor) {
    b->retryMs = 5;
    module->grantFrames = 256;
    const auto lose = [&] {
        module->needsReopen = 1;
        module->openResult = -1;
        b->idle();
        EXPECT_FALSE(b->opened);
    };
    const auto opensAgain = [&](int passes) {
        for (; passes > 0 && !b->opened; --passes) {
            asSleep(1);
            b->idle();
        }
        return b->opened;
    };
    b->audioOpen(1);
    lose();
    ops();
    EXPECT_FALSE(opensAgain(100));
    EXPECT_GT(std::ranges::count(ops(), int(aamOpen)), 1);
    module->devices = 1; // the list is made without it, then with it at another place
    b->getAudioDeviceNames();
    b->device = -1;
    module->openResult = 0;
    EXPECT_FALSE(opensAgain(50));
    module->firstDevice = 1;
    EXPECT_TRUE(opensAgain(5000));
    EXPECT_TRUE(b->device == 0 && b->audioName(0) == "device 1");

    module->devices = 2;
    lose();
    b->audioOpen(1);
    module->openResult = 0;
    EXPECT_FALSE(opensAgain(50)) << "another one was chosen";
}

/// The real module: what sounds outside has its end before the device is closed.
TEST_F(CAAMTest, NotesOutsideEndBeforeTheDeviceCloses) {
    SignalComp* signal = t.addSignal();
    t.connectMIDI(signal, t.midiOut);
    signal->messages = {{3.0, asData(midiNoteOn | 2, 60, 100)}};
    load(builtFile("bin/libaam.so"));
    void* real = dlopen(builtFile("bin/libaam.so").c_str(), RTLD_NOW);
    const auto entry = reinterpret_cast<AamEntry>(dlsym(real, "libaam"));
    entry(aamTestTake, 0, 0);
    b->audioOpen(b->numAudioDevs() - 1);
    for (int ms = 0; ms < 5000 && !t.host->deviceMidi->sounding(); ++ms) asSleep(1);
    b->audioClose();
    int last = 0;
    int64_t at = 0;
    for (AamEvent e; entry(aamTestTake, intptr_t(&e), intptr_t(&at)) == 1;) last = e.data;
    EXPECT_EQ(last, asData(midiNoteOff | 2, 60, 0));
    AamStatistics s;
    entry(aamTestStatistics, intptr_t(&s), 0);
    EXPECT_GE(s.blocks * t.host->frames, at + 2 * t.host->frames) << "and the time to be sent";
    dlclose(real);
}

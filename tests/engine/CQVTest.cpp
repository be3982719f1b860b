#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Delegates.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CAAM.h"
#include "engine/CClick.h"
#include "engine/CMap.h"
#include "engine/EditorHooks.h"
#include "engine/FakeModule.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/// A settings file of its own, for the length of a test.
struct IniGuard {
    IniGuard()
        : before(inifile), path(fs::temp_directory_path() / ("ini" + std::to_string(getpid()))) {
        fs::remove(path);
        inifile = path.c_str();
    }
    ~IniGuard() {
        fs::remove(path);
        inifile = before;
    }
    CStr before;
    fs::path path;
};

std::vector<int> types(CQV* host) {
    std::vector<int> all;
    for (const CComp* c : each<CComp>(host->comps)) all.push_back(c->type);
    return all;
}

} // namespace

TEST(CQV, NewProjectHasItsDevices) {
    TestHost t;
    EXPECT_EQ(types(t.host),
              (std::vector<int>{compMIDIIn, compMIDIOut, compAudioIn, compAudioOut}));
    EXPECT_EQ(t.midiIn->posX, 96);
    EXPECT_EQ(t.midiOut->posY, 256);
    EXPECT_EQ(t.host->loop, 1);
    EXPECT_EQ(t.host->ctrlStart, -1);
    EXPECT_EQ(t.host->maps.getCount(), 1);
    EXPECT_EQ(t.host->getMasterSeq(), nullptr);
}

/// A component for each pair of enabled channels, counted as they come.
TEST(CQV, DevicesFollowTheEnabledChannels) {
    void* module = dlopen(FAKE_MODULE, RTLD_NOW);
    *static_cast<FakeState*>(dlsym(module, "fakeState")) = FakeState();
    struct Case {
        int enabled, comps, lastUsed;
        const char* lastName;
    };
    const Case cases[] = {{0, 1, 0, "Audio Out"},       {1, 1, 1, "Audio Out"},
                          {2, 1, 2, "Audio Out"},       {3, 2, 1, "[3+4] Audio Out"},
                          {5, 3, 1, "[5+6] Audio Out"}, {32, 16, 2, "[31+32] Audio Out"}};
    for (const Case& c : cases) {
        TestHost t;
        CAAM bridge(libio, FAKE_MODULE);
        for (int i = 0; i < 32; ++i) bridge.audioOutEnable(i, 0);
        for (int i = 0; i < c.enabled; ++i) bridge.audioOutEnable(c.enabled < 16 ? i * 2 : i, 1);
        t.host->aam = &bridge;
        t.host->clear();
        t.host->init();
        CAudioOut* last = nullptr;
        int count = 0;
        for (CComp* comp : each<CComp>(t.host->comps))
            if (comp->type == compAudioOut) ++count, last = static_cast<CAudioOut*>(comp);
        ASSERT_EQ(count, c.comps) << c.enabled;
        last->setDevs();
        EXPECT_EQ(last->chs, c.lastUsed) << c.enabled;
        EXPECT_TRUE(last->id == c.lastName) << c.enabled;
        EXPECT_EQ(last->dev0, c.lastUsed > 0 ? 2 * (c.comps - 1) : -1);
    }
    dlclose(module);
}

TEST(CQV, ClearLeavesAnEmptyProject) {
    StripFixture t;
    SignalComp* s = t.addSignal();
    t.addBus();
    CQV* host = t.host;
    host->samples.add(new CSample);
    CUndo* u = host->undoStart("Cut", host, 0);
    u->asRemove(s, &host->comps);
    host->undoEnd(u, false);
    host->start();
    host->rec();
    host->idle();
    host->id = "song";
    host->audioFolder = "song_audio";
    host->clear();
    for (const CList* list :
         {&host->comps, &host->sends, &host->samples, &host->maps, &host->undoList})
        EXPECT_TRUE(list->empty());
    EXPECT_EQ(host->undoIndex, -1);
    EXPECT_EQ(host->recUndo, nullptr);
    EXPECT_TRUE(host->id == "sondrava" && host->audioFolder.empty());
    EXPECT_FALSE(host->undoBusy() || host->playing || host->recording || host->modified);
    EXPECT_EQ(host->pos, 0.0);
    EXPECT_EQ(host->mapStruct.width, 384);
    t.run();
    host->idle();
    host->init();
    EXPECT_EQ(host->comps.getCount(), 4) << "and a new one can begin";
}

TEST(CQV, FramesReachEverythingThatHasBuffers) {
    StripFixture t(256);
    SignalComp* s = t.addSignal();
    auto* insert = static_cast<GainComp*>(t.addInsert(s->output(), new GainComp(t.host)));
    SignalComp* held = t.addSignal();
    CUndo* u = t.host->undoStart("Cut", t.host, 0);
    u->asRemove(held, &t.host->comps);
    t.host->undoEnd(u, true);
    const float* before = s->output()->bufL;
    t.host->setFrames(256);
    t.host->setFrames(0);
    EXPECT_EQ(s->output()->bufL, before) << "nothing to do";
    t.host->setFrames(4096);
    EXPECT_EQ(t.host->frames, 4096);
    for (float* buf : {s->output()->bufR, insert->output()->bufL, held->output()->bufL,
                       held->input()->bufR, t.out->input()->bufL, t.host->tmpBuffers[3]})
        buf[4095] = 1.0f; // the sanitizer tells what was forgotten
    t.block(4096);
    EXPECT_EQ(t.left[4095], 1.0f);
}

TEST(CQV, Rate) {
    struct Rated : SignalComp {
        using SignalComp::SignalComp;
        void setRate(double hz) override { got = hz, ++calls; }
        double got = 0;
        int calls = 0;
    };
    TestHost t;
    auto* c = t.add(new Rated(t.host));
    struct Case {
        double hz;
        int calls, framesInMs;
    };
    // Asked in a row; what is refused or the same changes nothing.
    for (const Case& r : {Case{44100, 0, 44},
                          {48000, 1, 48},
                          {48000, 1, 48},
                          {7999, 1, 48},
                          {std::nan(""), 1, 48},
                          {8000, 2, 8},
                          {11500, 3, 12},
                          {44100, 4, 44}}) {
        t.host->setRate(r.hz);
        EXPECT_EQ(c->calls, r.calls) << r.hz;
        EXPECT_EQ(framesInMs, r.framesInMs) << r.hz;
        EXPECT_FLOAT_EQ(t.host->rate * t.host->invRate, 1.0f);
    }
}

TEST(CQV, Names) {
    TestHost t;
    auto* in = new CInputChannel(t.host);
    t.host->inputs.add(in);
    EXPECT_TRUE(t.host->getName(t.host) == "Master");
    EXPECT_TRUE(t.host->getName(in) == "Out 1") << "seen from outside";
    EXPECT_TRUE(t.host->autoNameComp("Bass") == "Bass");
    for (const char* name : {"Bass", "Bass-1", "Bass-3"}) t.add(new SignalComp(t.host))->id = name;
    EXPECT_TRUE(t.host->autoNameComp("Bass") == "Bass-2");
}

TEST(CQV, SolosAreFoundForEveryStripButNotForBuses) {
    StripFixture t;
    SignalComp* a = t.addSignal();
    SignalComp* b = t.addSignal();
    CGroupCh* bus = t.addBus();
    b->output()->solo = 1;
    t.block();
    EXPECT_EQ(a->output()->anySolo, 1);
    EXPECT_EQ(bus->output()->anySolo, 0);
    b->output()->solo = 0;
    bus->output()->solo = 1;
    t.block();
    EXPECT_EQ(a->output()->anySolo, 0);
}

/// The tick: each part in its place, and not within itself.
TEST(CQV, IdleVisitsAllInOrder) {
    static std::vector<std::string> log;
    struct Hooks : EditorHooks {
        void mainIdle() override {
            log.push_back("window");
            qv->idle();
        }
    } hooks;
    struct Logged : SignalComp {
        using SignalComp::SignalComp;
        void idle() override { log.push_back("idle"); }
        void afteridle() override { log.push_back("after"); }
    };
    StripFixture t;
    t.add(new Logged(t.host));
    log.clear();
    setEditorHooks(&hooks);
    t.host->midiActivity = 1.0f;
    t.host->idle();
    setEditorHooks(nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"idle", "window", "after"}));
    for (const float left : {0.67f, 0.34f, 0.01f, 0.0f}) {
        EXPECT_NEAR(t.host->midiActivity, left, 1e-6);
        t.host->idle();
    }
}

// Settings

TEST(CQV, SettingsComeAndGoWithinTheirRange) {
    const IniGuard ini;
    {
        TestHost t;
        t.host->settingsEnabled = true;
        t.host->readSettings();
        EXPECT_EQ(t.host->click->mode, 6);
        EXPECT_EQ(t.host->click->beats, 4);
        EXPECT_FLOAT_EQ(t.host->click->volume, 0.8f);
        EXPECT_EQ(t.host->storeInt("rndTrackCol", 7), 7);
        t.host->settings.setInt("passing", 3);
        t.host->settings.setInt("rndTrackCol", 8);
        t.host->click->volume = 0.29f;
        t.host->tempAudioFolder = "/tmp/x";
    }
    CIniFile(inifile).writeString("metronome", "beats", "99999");
    CIniFile(inifile).writeString("metronome", "mode", "-1");
    TestHost t;
    t.host->settingsEnabled = true;
    t.host->readSettings();
    t.host->settingsEnabled = false;
    EXPECT_FLOAT_EQ(t.host->click->volume, 0.29f);
    EXPECT_TRUE(t.host->tempAudioFolder == "/tmp/x");
    EXPECT_EQ(t.host->storeInt("rndTrackCol", 7), 8);
    EXPECT_EQ(t.host->storeInt("passing", 1), 1) << "was not to be stored";
    EXPECT_EQ(t.host->click->beats, 255);
    EXPECT_EQ(t.host->click->mode, 7);
}

TEST(CQV, SettingsOfTakesStayInRange) {
    const IniGuard ini;
    struct Case {
        const char *bits, *latency;
        int recBits, recLatency;
    };
    for (const Case& c : {Case{"24", "137", 24, 137}, Case{"32", "0", 32, 0},
                          Case{"16", "-5", 16, 0}, Case{"8", "x", 16, 0}, Case{"", "", 16, 0}}) {
        CIniFile(inifile).writeString("audio", "recbits", c.bits);
        CIniFile(inifile).writeString("options", "rec-latency", c.latency);
        TestHost t;
        t.host->settingsEnabled = true;
        t.host->readSettings();
        EXPECT_EQ(t.host->recBits, c.recBits) << c.bits;
        EXPECT_EQ(t.host->recLatency, c.recLatency) << c.latency;
    }
}

TEST(CQV, Folders) {
    const IniGuard ini;
    CIniFile file(inifile);
    file.writeString("ClipFolders", "mine", "/a=b");
    file.writeString("ClipFolders", "other", "/c");
    TestHost t;
    CStringList names, paths;
    t.host->getFolders("ClipFolders", &names, &paths);
    ASSERT_EQ(names.count(), 2);
    EXPECT_TRUE(names.get(0) == "mine" && paths.get(0) == "/a=b" && paths.get(1) == "/c");

    const fs::path beside = fs::path(asAppname().asChar()).parent_path() / "presets";
    names.clear();
    paths.clear();
    t.host->getFolders("PresetFolders", &names, &paths);
    EXPECT_EQ(names.count(), 0);
    fs::create_directory(beside);
    t.host->getFolders("PresetFolders", &names, &paths);
    ASSERT_EQ(paths.count(), 1);
    EXPECT_TRUE(fs::equivalent(paths.get(0).asChar(), beside));
    t.host->settingsEnabled = true;
    t.host->readSettings();
    t.host->settingsEnabled = false;
    EXPECT_TRUE(t.host->presetFolder == paths.get(0));
    EXPECT_TRUE(t.host->clipFolder == "/a=b");
    fs::remove(beside);
}

// The worker

TEST(CPeakThread, ImagesComeWhenItIsWoken) {
    TestHost t;
    auto* sample = new CSample;
    auto* frames = static_cast<unsigned char*>(std::calloc(1000, 4));
    sample->takeData(frames, 1000);
    sample->valid = true;
    auto* broken = new CSample;
    t.host->samples.add(broken);
    t.host->samples.add(sample);
    t.host->parkWorkers();
    t.host->updatePeaks();
    asSleep(5);
    EXPECT_TRUE(sample->needsPeaks) << "it stands still";
    t.host->unparkWorkers();
    for (int i = 0; i < 5000 && sample->needsPeaks; ++i) asSleep(1);
    EXPECT_FALSE(sample->needsPeaks);
    EXPECT_TRUE(broken->needsPeaks);
}

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "engine/CAAM.h"
#include "engine/CClick.h"
#include "engine/CMap.h"
#include "engine/EditorHooks.h"
#include "engine/StripFixture.h"
#include "engine/plan/GraphWorkers.h"
#include "support/Places.h"

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

/// A host that reads the settings, and writes them at its end.
struct WithSettings : TestHost {
    WithSettings() {
        host->settingsEnabled = true;
        host->readSettings();
    }
};

} // namespace

/// A component for each pair of enabled channels, counted as they come.
TEST(CQV, DevicesFollowTheEnabledChannels) {
    const struct {
        int enabled, comps, lastUsed;
        const char* lastName;
    } cases[] = {{0, 1, 0, "Audio Out"},
                 {1, 1, 1, "Audio Out"},
                 {3, 2, 1, "[3+4] Audio Out"},
                 {32, 16, 2, "[31+32] Audio Out"}};
    for (const auto& c : cases) {
        TestHost t;
        CAAM bridge(libio, builtFile("bin/libaam.so").c_str());
        for (int i = 0; i < c.enabled; ++i) bridge.audioOutEnable(c.enabled < 16 ? 2 * i : i, 1);
        t.host->aam = &bridge;
        t.host->clear();
        t.host->init();
        std::vector<CAudioOut*> outs;
        for (CComp* comp : t.host->comps)
            if (comp->type == compAudioOut) outs.push_back(static_cast<CAudioOut*>(comp));
        ASSERT_EQ(int(outs.size()), c.comps) << c.enabled;
        outs.back()->setDevs();
        EXPECT_EQ(outs.back()->chs, c.lastUsed) << c.enabled;
        EXPECT_TRUE(outs.back()->id == c.lastName) << c.enabled;
        for (int i = 0; i < 32; ++i) bridge.audioOutEnable(i, 0);
    }
}

TEST(CQV, ClearLeavesAnEmptyProject) {
    StripFixture t;
    SignalComp* s = t.addSignal();
    t.addBus();
    CQV* host = t.host;
    host->samples.add(new CSample);
    t.step([&](CUndo* u) { u->asRemove(s, &host->comps); });
    host->start();
    host->rec();
    host->idle();
    host->audioFolder = "song_audio";
    host->setTempo(77.0f);
    t.run();
    host->clear();
    for (const float tempo : {host->songTempo.load(), host->tempo.load(), host->tempoNow.load()})
        EXPECT_EQ(tempo, 120.0f);
    for (const CList* list :
         listsOf(host->comps, host->sends, host->samples, host->maps, host->undoList))
        EXPECT_TRUE(list->empty());
    EXPECT_TRUE(host->undoIndex == -1 && !host->recUndo && host->audioFolder.empty());
    EXPECT_FALSE(host->undoBusy() || host->playing || host->recording || host->modified());
    EXPECT_EQ(host->pos, 0.0);
    t.run();
    host->idle();
    host->init();
    EXPECT_TRUE(host->comps.getCount() == 4 && host->maps.getCount() == 1) << "a new one begins";
}

TEST(CQV, FramesReachEverythingThatHasBuffers) {
    StripFixture t(256);
    SignalComp* s = t.addSignal();
    GainComp* insert = t.addInsert(s->output(), new GainComp(t.host));
    SignalComp* held = t.addSignal();
    t.step([&](CUndo* u) { u->asRemove(held, &t.host->comps); });
    t.host->setFrames(4096);
    for (float* buf : {s->output()->bufR, insert->output()->bufL, held->output()->bufL,
                       held->input()->bufR, t.out->input()->bufL, t.host->scratch().right.data()})
        buf[4095] = 1.0f; // the sanitizer tells what was forgotten
    t.block(4096);
    EXPECT_EQ(t.left[4095], 1.0f);
}

/// What a window does in its turn may come back to the tick, which is not run within itself.
TEST(CQV, IdleIsNotRunWithinItself) {
    static int turns;
    struct Hooks : EditorHooks {
        void mainIdle() override {
            if (++turns < 3) qv->idle();
        }
    } hooks;
    TestHost t;
    turns = 0;
    setEditorHooks(&hooks);
    t.host->idle();
    setEditorHooks(nullptr);
    EXPECT_EQ(turns, 1);
}

// Settings

TEST(CQV, SettingsComeAndGoWithinTheirRange) {
    const IniGuard ini;
    const auto write = [](const char* section, const char* key, const char* value) {
        CIniFile(inifile).writeString(section, key, value);
    };
    {
        WithSettings t;
        EXPECT_EQ(t.host->click->mode, 6);
        EXPECT_EQ(t.host->storeInt("rndTrackCol", 7), 7);
        t.host->settings.setInt("passing", 3);
        t.host->settings.setInt("rndTrackCol", 8);
        t.host->click->volume = 0.29f;
    }
    write("metronome", "beats", "99999");
    write("audio", "recbits", "24");
    write("options", "rec-latency", "137");
    {
        WithSettings t;
        EXPECT_FLOAT_EQ(t.host->click->volume, 0.29f);
        EXPECT_EQ(t.host->storeInt("rndTrackCol", 7), 8);
        EXPECT_EQ(t.host->storeInt("passing", 1), 1) << "was not to be stored";
        EXPECT_EQ(t.host->click->beats, 255);
        EXPECT_TRUE(t.host->recBits == 24 && t.host->recLatency == 137);
    }
    write("audio", "recbits", "8");
    write("options", "rec-latency", "-5");
    WithSettings t;
    EXPECT_TRUE(t.host->recBits == 16 && t.host->recLatency == 0);
}

#pragma once

#include "base/CIniFile.h"
#include "base/CList.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "gui/CApp.h"
#include "gui/CGroup.h"
#include "gui/XConnection.h"
#include "project/CompTable.h"
#include "sequencer/song/CSeq.h"
#include "shell/AppHooks.h"
#include "shell/CMainWin.h"
#include "shell/Pages.h"
#include "shell/ProjectFlows.h"
#include "ui/Song.h"

#include <X11/Xlib.h>
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// The program without devices, with an empty song in a window of 1600 x 1000, for benchmarks of
/// what a user waits for. Needs a display, such as that of xvfb-run.
class ProgramDesk {
public:
    CApp app;
    std::unique_ptr<CQV> host;
    std::unique_ptr<CMainWin> win;

    ProgramDesk() {
        inifile = (folder.path + "/settings.ini").c_str();
        CIniFile(inifile).writeString("options", "startwith", "1");
        enterCompTypes();
        if (!app.open()) return;
        host = std::make_unique<CQV>();
        host->editorStruct.width = 1600;
        host->editorStruct.height = 1000;
        win = std::make_unique<CMainWin>(&app, host.get());
        hooks = std::make_unique<AppHooks>(&app, win.get());
        win->show(true);
        host->init();
        win->init();
        win->flows->start();
        app.addTimer(win.get(), 40, true);
        win->flows->newProject(kindEmpty, "");
        while (!songOf(host.get()) || win->flows->loading()) {
            app.dispatchEvents();
            app.idle();
        }
    }

    bool ready() const { return win != nullptr; }
    CSeq* seq() { return songOf(host.get()); }
    CGroup* songPage() { return win->pages->editorOf(seq())->clientGroup; } ///< of the arrangement
    template <class T>
    static T* find(const char* id, CGroup* group) {
        for (auto* c : group->controls)
            if (c->id == id) return static_cast<T*>(c);
        return nullptr;
    }
    /// Shows what has changed, and waits until the server has.
    void paint() {
        app.paintFrame();
        XSync(liveDisplay(), False);
    }
    void turn(int times) {
        for (int i = 0; i < times; i++) {
            win->onTimer();
            app.dispatchEvents();
            paint();
        }
    }

private:
    static std::string makeFolder() {
        std::string path = "/tmp/sondrava_bench.XXXXXX";
        return mkdtemp(path.data()) ? path : ".";
    }
    struct Folder {
        const std::string path = makeFolder();
        ~Folder() {
            std::error_code none;
            std::filesystem::remove_all(path, none);
        }
    };
    const Folder folder;
    std::unique_ptr<AppHooks> hooks;
};

/// How long steps take: on the clock of the wall, and of it on this thread, which other programs
/// of a busy machine lengthen little.
class StepTimes {
public:
    template <class F>
    void time(F&& step) {
        const auto start = std::chrono::steady_clock::now();
        const double before = threadMs();
        step();
        own.push_back(threadMs() - before);
        const std::chrono::duration<double, std::milli> passed =
            std::chrono::steady_clock::now() - start;
        wall.push_back(passed.count());
    }
    void report(benchmark::State& state) {
        std::sort(wall.begin(), wall.end());
        std::sort(own.begin(), own.end());
        state.counters["median_ms"] = wall[wall.size() / 2];
        state.counters["p99_ms"] = wall[wall.size() * 99 / 100];
        state.counters["most_ms"] = wall.back();
        state.counters["own_median_ms"] = own[own.size() / 2];
        state.counters["own_p99_ms"] = own[own.size() * 99 / 100];
    }

private:
    static double threadMs() {
        timespec t;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6;
    }
    std::vector<double> wall, own; ///< milliseconds
};

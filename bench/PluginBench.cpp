#include "base/CIniFile.h"
#include "base/Paths.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "plugins/CVST.h"
#include "plugins/remote/PluginProcesses.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int frames = 256, rate = 44100;

enum Place : int { inProgram, inHelper };

/// A graph of so many plug-ins beside each other, as components or as the inserts of as many
/// groups.
class Rig {
public:
    Rig(int count, int turns, Place place, bool asInserts) {
        char room[] = "/tmp/plugin-bench-XXXXXX";
        folder = mkdtemp(room);
        inifile = (folder + "/settings.ini").c_str();
        CIniFile(inifile).writeString("VSTFolders", "0", folder.c_str());
        const std::string file = folder + "/light-" + std::to_string(turns) + ".so";
        std::filesystem::copy_file(LIGHT_PLUGIN, file);
        auto processes =
            std::make_shared<PluginProcesses>(PLUGIN_HELPER, (folder + "/trust").c_str());
        processes->makerOf = [](const CStr&) { return CStr("one"); };
        processes->share = 1000.0f; // late or not, it is measured
        if (place == inProgram) processes->trust.set(file.c_str(), true);
        placing = std::make_unique<PlacePlugins>(processes);
        qv = host.get();
        host->settingsEnabled = false;
        host->setFrames(frames);
        host->setRate(rate);
        host->init();
        auto* out = static_cast<CAudioOut*>(host->getAudioOut());
        out->channelUsed[0] = out->channelUsed[1] = 1;
        for (int i = 0; i < count; i++) add(file.c_str(), asInserts);
    }
    ~Rig() {
        host.reset();
        std::filesystem::remove_all(folder);
    }
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    void block() {
        float* outs[] = {left, right};
        libio(nullptr, outs, 0, 2, frames, nullptr, 0);
    }

private:
    void add(const CStr& file, bool asInsert) {
        CVST* made = newPlugin(host.get(), file).release();
        const GraphHold hold(host.get());
        CComp* source = made;
        if (asInsert) {
            source = new CGroupCh(host.get());
            source->init();
            source->createBuffers(frames);
            made->listKind = listInsert;
            made->ownerChannel = source->output();
            made->editorOpen = true; // it does not doze
            source->output()->inserts.add(made);
        }
        host->comps.add(source);
        host->getAudioOut()->addAudioCable(source->output(), nullptr);
    }

    std::string folder;
    std::unique_ptr<PlacePlugins> placing;
    std::unique_ptr<CQV> host = std::make_unique<CQV>();
    float left[frames] = {}, right[frames] = {};
};

/// Time of a block by the wall, for plug-ins that do nothing (a bare trip) or work for about 10 us.
void plugins(benchmark::State& state) {
    Rig rig(int(state.range(0)), int(state.range(1)), Place(state.range(2)), state.range(3) != 0);
    rig.block();
    for (auto _ : state) rig.block();
    state.counters["us each"] = benchmark::Counter(double(state.range(0)) * 1e-6,
                                                   benchmark::Counter::kIsIterationInvariantRate |
                                                       benchmark::Counter::kInvert);
}

BENCHMARK(plugins)
    ->ArgNames({"count", "turns", "isolated", "inserts"})
    ->ArgsProduct({{1, 300}, {0, 12}, {inProgram, inHelper}, {0, 1}})
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();

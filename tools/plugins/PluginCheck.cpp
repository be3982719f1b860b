#include "tools/plugins/PluginCheck.h"

#include "base/CStream.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "plugins/CVST.h"

#include <X11/Xlib.h>
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr int blockFrames = 512, blocks = 200, chordBlock = 2, noiseBlock = 100;
constexpr double audible = 1e-5, same = 1e-4;

/// Some plug-ins draw random numbers; the signal that goes in is always the same.
float noise(unsigned at) {
    return float(at * 2654435761u >> 8) / float(1 << 24) - 0.5f;
}

/// A plug-in by itself, in a host without devices.
class Bench {
public:
    explicit Bench(CQV* root) : host(root) {}

    std::vector<float> play(CVST& plugin) {
        std::vector<float> heard;
        plugin.resetSound();
        for (int block = 0; block < blocks; block++) {
            const GraphHold hold(host);
            plugin.prepare(blockFrames);
            feed(plugin, block);
            plugin.process(blockFrames);
            for (const auto* out : plugin.outputs)
                for (const float* side : {out->bufL, out->bufR})
                    heard.insert(heard.end(), side, side + blockFrames);
        }
        return heard;
    }

private:
    static void feed(CVST& plugin, int block) {
        if (CMIDIQ* port = plugin.inPort(); port && block == chordBlock)
            for (const int key : {48, 55, 60, 64})
                port->addMidiEvent(10.0, asData(midiNoteOn, key, 100));
        for (auto* in : plugin.inputs)
            for (int i = 0; i < blockFrames; i++)
                in->bufL[i] = in->bufR[i] = block == 0 && i == 0 ? 0.9f
                                            : block >= noiseBlock
                                                ? noise(unsigned(block * blockFrames + i))
                                                : 0.0f;
    }

    CQV* host;
};

double loudest(const std::vector<float>& heard) {
    double most = 0.0;
    for (const float v : heard) most = std::max(most, std::fabs(double(v)));
    return most;
}

/// Sound that is random by itself is compared by its loudness.
bool equal(const std::vector<float>& a, const std::vector<float>& b,
           const std::vector<float>& again) {
    if (a.size() != b.size()) return false;
    double apart = 0.0, chance = 0.0;
    for (size_t i = 0; i < a.size(); i++) {
        apart = std::max(apart, std::fabs(double(a[i]) - double(b[i])));
        chance = std::max(chance, std::fabs(double(a[i]) - double(again[i])));
    }
    if (chance <= same) return apart <= same;
    return std::fabs(loudest(a) - loudest(b)) <= 0.5 * loudest(a);
}

std::unique_ptr<CVST> reloaded(CQV* host, CVST& plugin) {
    CMemoryStream stream;
    plugin.write(&stream);
    const int size = int(stream.getPos());
    stream.seek(0, seekStart);
    auto twin = std::make_unique<CVST>(host);
    twin->init();
    twin->read(&stream, size);
    twin->setupIO();
    twin->createBuffers(host->frames);
    return twin;
}

int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

bool windowOpens(CVST& plugin) {
    Display* display = XOpenDisplay(nullptr);
    if (!display) return false;
    XSetErrorHandler(ignoreError); // as in the program, which only notes them
    const Window frame =
        XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 800, 600, 0, 0, 0);
    XMapWindow(display, frame);
    XSync(display, False);
    plugin.openEditor(frame);
    bool shows = false;
    for (int i = 0; i < 25 && !shows; i++) {
        plugin.idleEditor();
        Window root, parent, *inside = nullptr;
        unsigned count = 0;
        XQueryTree(display, frame, &root, &parent, &inside, &count);
        if (inside) XFree(inside);
        shows = count > 0;
    }
    plugin.closeEditor();
    XDestroyWindow(display, frame);
    XCloseDisplay(display);
    return shows;
}

} // namespace

PluginCheck checkPlugin(const CStr& file) {
    PluginCheck found;
    auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(blockFrames);
    const std::unique_ptr<CVST> plugin = newPlugin(host.get(), file);
    found.loads = plugin != nullptr;
    if (!plugin) return found;
    if (plugin->numParams() > 0) plugin->setParam(0, plugin->param(0) > 0.5f ? 0.25f : 0.75f);
    plugin->idle();
    Bench bench(host.get());
    bench.play(*plugin); // some come to rest only after a first time
    const std::vector<float> heard = bench.play(*plugin), again = bench.play(*plugin);
    found.sounds = loudest(heard) > audible;
    const std::unique_ptr<CVST> twin = reloaded(host.get(), *plugin);
    bench.play(*twin);
    found.keeps = twin->opened() && equal(heard, bench.play(*twin), again);
    found.drawn = plugin->hasEditor();
    found.shows = found.drawn && windowOpens(*plugin);
    return found;
}

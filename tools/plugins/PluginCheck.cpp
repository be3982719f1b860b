#include "tools/plugins/PluginCheck.h"

#include "base/CStream.h"
#include "engine/CQV.h"
#include "plugins/CVST.h"
#include "tools/plugins/PluginBench.h"

#include <X11/Xlib.h>
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr double audible = 1e-5, same = 1e-4;

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

/// Sets a parameter to another value, so that there is something to keep: one that leaves it to be
/// heard, as many begin with a switch that turns them off. It has played once then, since some come
/// to rest only after that.
void moveOne(CVST& plugin, PluginBench& bench) {
    constexpr int tries = 4;
    for (int i = 0; i < std::min(plugin.numParams(), tries); i++) {
        const float former = plugin.param(i);
        plugin.setParam(i, former > 0.5f ? 0.25f : 0.75f);
        plugin.idle();
        if (loudest(bench.play(plugin)) > audible) return;
        plugin.setParam(i, former);
    }
    plugin.idle();
    bench.play(plugin);
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
    if (plugin.outPort()) twin->outPorts.add(new COutputPort(twin.get())); // as the project would
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
    const std::unique_ptr<CQV> host = PluginBench::newHost();
    const std::unique_ptr<CVST> plugin = newPlugin(host.get(), file);
    found.loads = plugin != nullptr;
    if (!plugin) return found;
    PluginBench bench(host.get());
    moveOne(*plugin, bench);
    const std::vector<float> heard = bench.play(*plugin), again = bench.play(*plugin);
    found.sounds = loudest(heard) > audible;
    const std::unique_ptr<CVST> twin = reloaded(host.get(), *plugin);
    bench.play(*twin);
    found.keeps = twin->opened() && equal(heard, bench.play(*twin), again);
    found.drawn = plugin->hasEditor();
    found.shows = found.drawn && windowOpens(*plugin);
    return found;
}

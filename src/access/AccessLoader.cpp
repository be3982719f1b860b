#include "access/AccessLoader.h"

#include "access/StatusWatch.h"
#include "base/Paths.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/access/LiveTree.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace {

constexpr int tickMs = 400;

CStr moduleFile(const char* name) {
    return extractFilePath(asAppname()) + name;
}

/// Where a session bus is found without asking anybody.
bool hasSessionBus() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return true;
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    std::error_code ignored;
    return folder && std::filesystem::exists(std::filesystem::path(folder) / "bus", ignored);
}

} // namespace

/// Sits on the bus, and notes what it is told.
class AccessLoader::Asker : public CThread {
public:
    Shared<bool> on{false};

    Asker() {
        if (pipe(stop) != 0) stop[0] = stop[1] = -1;
        start();
    }
    ~Asker() override {
        if (stop[1] >= 0) close(stop[1]); // wakes the thread
        finish();
        if (stop[0] >= 0) close(stop[0]);
    }
    Asker(const Asker&) = delete;
    Asker& operator=(const Asker&) = delete;

    void execute() override {
        if (stop[0] < 0) return;
        void* library = dlopen(moduleFile("libaccess-status.so").asChar(), RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
        if (const auto watch =
                reinterpret_cast<WatchAccessStatus>(dlsym(library, watchAccessStatusName)))
            watch(
                stop[0], [](void* whom, bool now) { static_cast<Asker*>(whom)->on = now; }, this);
    }

private:
    int stop[2];
};

/// Brings what the thread has noted to the interface thread.
class AccessLoader::Tick : public CCtrl {
public:
    Tick(CWin* owner, AccessLoader* whose) : CCtrl(owner, "access", 0, 0, 0, 0), loader(whose) {
        visible = false;
        win->app->addTimer(this, tickMs, true);
    }
    void onTimer() override { loader->follow(); }

private:
    AccessLoader* loader;
};

AccessLoader::AccessLoader(CApp* application, CWin* window, const CStr& name)
    : app(application), program(name) {
    if (!hasSessionBus()) return;
    asker = std::make_unique<Asker>();
    tick = std::make_unique<Tick>(window, this);
}

AccessLoader::~AccessLoader() {
    tick.reset();
    asker.reset();
    if (app->access) app->access->outlet.reset();
}

void AccessLoader::follow() {
    const bool isOpen = app->access && app->access->outlet;
    if (asker->on && !isOpen && !failed) open();
    if (!asker->on && isOpen) app->access->outlet.reset();
}

void AccessLoader::open() {
    if (!module) module = dlopen(moduleFile("libaccess.so").asChar(), RTLD_NOW | RTLD_LOCAL);
    const auto make =
        module ? reinterpret_cast<MakeAccessOutlet>(dlsym(module, "makeAccessOutlet")) : nullptr;
    if (make && !app->access) app->access = std::make_unique<LiveTree>(app);
    if (make) app->access->outlet.reset(make(app->access.get(), program.asChar()));
    failed = !make || !app->access->outlet;
}

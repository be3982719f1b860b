#pragma once

#include "plugins/PluginFixture.h"
#include "plugins/remote/PluginProcesses.h"
#include "plugins/remote/RemotePlugin.h"

#include <csignal>
#include <memory>

/// A host whose plug-ins run in helpers, which have as much time as they need, but for those that
/// are dead.
class RemoteFixture : public PluginFixture, public PluginHooks {
public:
    explicit RemoteFixture(int frames = 256) : PluginFixture(frames) {
        constexpr float muchTime = 300.0f;
        processes->share = muchTime;
        setPluginHooks(this);
    }
    ~RemoteFixture() override { setPluginHooks(nullptr); }

    std::unique_ptr<Plugin> load(const CStr& path, PluginHost& asking, CStr& why) override {
        return isolates ? processes->load(path, asking, why) : PluginHooks::load(path, asking, why);
    }
    static RemotePlugin* remote(const PluginComp* c) {
        return static_cast<RemotePlugin*>(c->loaded());
    }
    static void killHelper(const PluginComp* c) { kill(remote(c)->helperProcess(), SIGKILL); }
    /// Idle passes, with blocks between them, until something has come to pass.
    template <class F>
    bool until(F&& done) {
        return comes([&] {
            block();
            host->idle();
            return done();
        });
    }

    bool isolates = true;
    const std::shared_ptr<PluginProcesses> processes = std::make_shared<PluginProcesses>(
        builtFile("bin/sondrava-plugins").c_str(), (folder + "/trust.txt").c_str());
};

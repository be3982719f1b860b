#pragma once

#include "plugins/PluginHooks.h"
#include "plugins/PluginTrust.h"
#include "plugins/remote/PluginHelper.h"

#include <functional>
#include <map>
#include <memory>

/// How plug-ins that are not trusted share helpers.
enum class PluginGroups : int { maker, format, alone };

/// The helpers of the program, and which plug-ins run in them. Interface thread, but where told.
class PluginProcesses : public std::enable_shared_from_this<PluginProcesses> {
public:
    PluginTrust trust;
    /// Who has made a plug-in, if that is known before it is loaded; else empty.
    std::function<CStr(const CStr& path)> makerOf;
    CStr program; ///< that runs plug-ins
    /// Part of a block that all trips of it together may take; then they are late.
    Shared<float> share{0.5f};

    /// `trustFile` keeps which plug-ins may run here; empty: none may.
    PluginProcesses(const CStr& helperProgram, const CStr& trustFile);
    PluginProcesses(const PluginProcesses&) = delete;
    PluginProcesses& operator=(const PluginProcesses&) = delete;

    /// In this process if it is trusted, else in a helper. Null, with `why`, where that fails.
    std::unique_ptr<Plugin> load(const CStr& path, PluginHost& host, CStr& why);
    /// The helper for a plug-in, which is started where there is none; null where that fails.
    std::shared_ptr<PluginHelper> helperFor(const CStr& path);

    PluginGroups groups() const;         ///< a setting
    void setGroups(PluginGroups wanted); ///< of those that are loaded from now on

    /// When the trips of a block are late, in nanoseconds of the steady clock: of the block with
    /// that number, which lasts so long. Whoever renders.
    int64_t endOf(unsigned block, double seconds);

private:
    std::string groupOf(const CStr& path) const;

    std::map<std::string, std::weak_ptr<PluginHelper>> helpers; ///< by group
    int lonely = 0; ///< helpers that were started for one plug-in
    Shared<unsigned> clockBlock{~0u};
    Shared<int64_t> clockEnd{0};
};

/// While this stands, plug-ins are loaded where they belong. Interface thread.
class PlacePlugins : public PluginHooks {
public:
    explicit PlacePlugins(std::shared_ptr<PluginProcesses> of) : processes(std::move(of)) {
        setPluginHooks(this);
    }
    ~PlacePlugins() override { setPluginHooks(nullptr); }
    PlacePlugins(const PlacePlugins&) = delete;
    PlacePlugins& operator=(const PlacePlugins&) = delete;

    std::unique_ptr<Plugin> load(const CStr& path, PluginHost& host, CStr& why) override {
        return processes->load(path, host, why);
    }

    const std::shared_ptr<PluginProcesses> processes;
};

/// The program beside ours that runs plug-ins, and looks at them.
CStr pluginHelperProgram();

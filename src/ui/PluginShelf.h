#pragma once

#include "plugins/remote/PluginProcesses.h"
#include "plugins/scan/PluginScan.h"

#include <functional>

class CQV;

/// The plug-ins that the user can choose from, what keeps the list of them up to date, and the
/// processes that run them. Interface thread.
class PluginShelf {
public:
    static constexpr int mostRecent = 8;

    explicit PluginShelf(CQV* host);
    ~PluginShelf();
    PluginShelf(const PluginShelf&) = delete;
    PluginShelf& operator=(const PluginShelf&) = delete;

    PluginList list;
    PluginScan scan;
    const std::shared_ptr<PluginProcesses> processes;
    std::function<void()> onChange; ///< the list, or how far the scan is

    void refresh(); ///< looks at the folders; what is new or changed there is scanned
    void refreshSoon() { refreshDue = true; } ///< in the next idle pass
    /// The file of one, as in `PluginFile`, whatever is known of it.
    void rescan(const CStr& path);
    void rescanAll();
    void idle();

    /// Those that were chosen last and are still there, the latest first.
    std::vector<const PluginList::Entry*> recent() const;
    void used(const CStr& path);

    /// Part of a block that all of one in the song work on it; below 0 where it has none.
    float loadOf(const CStr& path) const;

private:
    CQV* qv;
    bool refreshDue = false;
};

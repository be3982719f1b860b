#pragma once

#include "plugins/scan/PluginScan.h"

#include <functional>

class CQV;

/// The plug-ins that the user can choose from, and what keeps the list of them up to date. One of
/// them at a time. Interface thread.
class PluginShelf {
public:
    static constexpr int mostRecent = 8;

    explicit PluginShelf(CQV* host);
    ~PluginShelf();
    PluginShelf(const PluginShelf&) = delete;
    PluginShelf& operator=(const PluginShelf&) = delete;

    PluginList list;
    PluginScan scan;
    std::function<void()> onChange; ///< the list, or how far the scan is

    static PluginShelf* current(); ///< null without one

    void refresh(); ///< looks at the folders; what is new or changed there is scanned
    void rescan(const CStr& path); ///< one file, whatever is known of it
    void rescanAll();
    void idle();

    /// Those that were chosen last and are still there, the latest first.
    std::vector<const PluginList::Entry*> recent() const;
    void used(const CStr& path);

private:
    CQV* qv;
};

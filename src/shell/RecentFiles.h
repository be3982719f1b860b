#pragma once

#include "base/CStringList.h"

/// The projects that were opened or saved last, the latest first, and the last one, as the settings
/// keep them. Interface thread.
class RecentFiles {
public:
    static constexpr int most = 20;

    CStringList paths; ///< of files that were there when the list was made

    /// Puts a project first and writes the list down; with an empty path it is only read.
    void addRecent(const CStr& path);
    static CStr lastProject(); ///< empty without one
};

#pragma once

#include "base/CStr.h"

/// What became of a plug-in that was used as a project uses it.
struct PluginCheck {
    bool loads = false;
    bool sounds = false; ///< an impulse, noise or a chord comes out
    bool keeps = false;  ///< saved, loaded anew and played again it sounds the same
    bool drawn = false;  ///< it has a window of its own
    bool shows = false;  ///< that window opened inside another one
};

/// Uses the plug-in in a file; with a display also its window. In a process of its own, as it may
/// take that along.
PluginCheck checkPlugin(const CStr& file);

#pragma once

#include "plugins/Plugin.h"
#include "plugins/scan/PluginFacts.h"

#include <functional>
#include <memory>

/// Loads a plug-in of any format into this process: `text` as in `PluginFile`. Null, with `why`,
/// where that fails. `host` outlives it. Interface thread, as the next.
std::unique_ptr<Plugin> loadPlugin(const CStr& text, PluginHost& host, CStr& why);

/// Looks at what a file or bundle holds, and tells each plug-in as it is found. False, with `why`,
/// where it is of no use. A bundle without plug-ins is of use to others.
bool lookInto(const CStr& file, PluginHost& host,
              const std::function<void(const PluginFacts&)>& found, CStr& why);

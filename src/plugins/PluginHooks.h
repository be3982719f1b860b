#pragma once

#include "base/CStr.h"

#include <memory>

class Plugin;
class PluginHost;

/// What plug-ins ask of the windows above. The program puts in its own; without windows nobody is
/// asked. Interface thread.
class PluginHooks {
public:
    virtual ~PluginHooks() = default;
    /// A plug-in is not in the folders. True when the user has named others, to look there again.
    virtual bool askFolders(const CStr& /*name*/) { return false; }
    /// Loads a plug-in, told as in `PluginFile`, by default into this process. Null, with `why`,
    /// where that fails.
    virtual std::unique_ptr<Plugin> load(const CStr& path, PluginHost& host, CStr& why);
    virtual void called() {} ///< code of a plug-in has run, not in a block
};

PluginHooks* pluginHooks(); ///< never null
/// Not owned; null restores the one that asks nobody.
void setPluginHooks(PluginHooks* hooks);

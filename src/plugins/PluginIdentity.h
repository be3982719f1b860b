#pragma once

#include "base/CStr.h"
#include "plugins/ParamReadings.h"

class BlockView;
class CStream;
class Plugin;

/// Which effect or instrument a plug-in is, and what its parameters tell, so that another format of
/// it can take its place where it is missing. A project keeps it. Interface thread.
struct PluginIdentity {
    CStr name, vendor; ///< without a name it is not known
    std::vector<ParamReading> params;

    static PluginIdentity of(PluginComp& comp, Plugin& plugin);
    bool known() const { return !name.empty(); }

    static constexpr const char* block = "known"; ///< of a project
    void write(CStream* stream) const;            ///< its content
    /// What does not fit is not known.
    static PluginIdentity read(BlockView& body);
};

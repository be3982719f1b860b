#include "plugins/PluginHooks.h"

#include "plugins/vst2/Vst2Plugin.h"

namespace {

PluginHooks nobody;
PluginHooks* current = &nobody;

} // namespace

std::unique_ptr<Plugin> PluginHooks::load(const CStr& path, PluginHost& host, CStr& why) {
    return Vst2Plugin::load(path, host, why);
}

PluginHooks* pluginHooks() {
    return current;
}

void setPluginHooks(PluginHooks* hooks) {
    current = hooks ? hooks : &nobody;
}

#include "plugins/PluginHooks.h"

#include "plugins/PluginLoad.h"

namespace {

PluginHooks nobody;
PluginHooks* current = &nobody;

} // namespace

std::unique_ptr<Plugin> PluginHooks::load(const CStr& path, PluginHost& host, CStr& why) {
    return loadPlugin(path, host, why);
}

PluginHooks* pluginHooks() {
    return current;
}

void setPluginHooks(PluginHooks* hooks) {
    current = hooks ? hooks : &nobody;
}

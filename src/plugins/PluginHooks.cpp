#include "plugins/PluginHooks.h"

namespace {

PluginHooks nobody;
PluginHooks* current = &nobody;

} // namespace

PluginHooks* pluginHooks() {
    return current;
}

void setPluginHooks(PluginHooks* hooks) {
    current = hooks ? hooks : &nobody;
}

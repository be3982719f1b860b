#include "plugins/PluginValues.h"

#include "plugins/Plugin.h"

#include <algorithm>

void PluginValues::start(Plugin& plugin) {
    count = std::clamp(plugin.numParams(), 0, most);
    values = std::make_unique<Shared<float>[]>(size_t(count));
    moved = std::make_unique<Shared<float>[]>(size_t(count));
    left = std::make_unique<Shared<unsigned>[]>(size_t(words()));
    follow(plugin);
}

void PluginValues::follow(Plugin& plugin) {
    for (int i = 0; i < count; i++) values[i] = plugin.param(i);
}

void PluginValues::leave(int index, float share) {
    if (!has(index)) return;
    moved[index] = share;
    left[index / wordBits].fetchOr(1u << index % wordBits);
    anyLeft.storeRelease(true);
}

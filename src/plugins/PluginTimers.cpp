#include "plugins/PluginTimers.h"

#include "base/Messages.h"
#include "engine/LoopCalls.h"

#include <algorithm>
#include <memory>

PluginTimers::~PluginTimers() {
    for (const unsigned number : timers) loopCalls().remove(number);
    for (const auto& [file, number] : files) loopCalls().remove(number);
}

unsigned PluginTimers::add(unsigned periodMs) {
    if (!isInterfaceThread()) return 0;
    const auto number = std::make_shared<unsigned>(0);
    *number = loopCalls().addTimer(periodMs, [this, number] { due(*number); });
    timers.push_back(*number);
    return *number;
}

bool PluginTimers::remove(unsigned number) {
    if (!isInterfaceThread() || std::erase(timers, number) == 0) return false;
    return loopCalls().remove(number);
}

bool PluginTimers::watch(int file, unsigned uses) {
    if (!isInterfaceThread()) return false;
    unwatch(file);
    const auto call = [this, file](unsigned now) { ready(file, now); };
    files.emplace_back(file, loopCalls().watch(file, uses, call));
    return true;
}

bool PluginTimers::unwatch(int file) {
    const auto at = std::ranges::find(files, file, &std::pair<int, unsigned>::first);
    if (!isInterfaceThread() || at == files.end()) return false;
    loopCalls().remove(at->second);
    files.erase(at);
    return true;
}

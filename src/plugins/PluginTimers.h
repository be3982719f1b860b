#pragma once

#include <functional>
#include <utility>
#include <vector>

/// The timers that one plug-in asks its host for, and the files that it waits for, among the calls
/// of the program's loop; they end with this. On another thread than the interface's nothing is
/// taken in.
class PluginTimers {
public:
    using Due = std::function<void(unsigned number)>;
    using Ready = std::function<void(int file, unsigned uses)>; ///< `LoopCalls::FileUse`

    PluginTimers(Due timer, Ready file) : due(std::move(timer)), ready(std::move(file)) {}
    ~PluginTimers();
    PluginTimers(const PluginTimers&) = delete;
    PluginTimers& operator=(const PluginTimers&) = delete;

    unsigned add(unsigned periodMs); ///< its number; 0 refused
    bool remove(unsigned number);    ///< false for one that is not there
    bool watch(int file, unsigned uses);
    bool unwatch(int file);

private:
    const Due due;
    const Ready ready;
    std::vector<unsigned> timers;
    std::vector<std::pair<int, unsigned>> files; ///< and the number of the call
};

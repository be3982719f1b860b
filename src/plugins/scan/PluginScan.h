#pragma once

#include "base/CStr.h"
#include "plugins/scan/PluginList.h"

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

/// Looks at plug-ins in processes of their own, so that one that crashes or hangs takes nothing
/// with it, and with a home folder that is thrown away; where one cannot be loaded so, with the
/// user's. Each result goes into the list at once. Interface thread, which calls `poll` now and
/// then.
class PluginScan {
public:
    static constexpr int together = 2; ///< processes

    CStr helper; ///< the program that looks at one file

    PluginScan(PluginList& list, const CStr& helperProgram);
    ~PluginScan(); ///< ends those that run
    PluginScan(const PluginScan&) = delete;
    PluginScan& operator=(const PluginScan&) = delete;

    std::chrono::milliseconds limit{10000}; ///< for one file

    /// Behind those that wait; a file that waits already stays where it is.
    void add(const std::vector<CStr>& files);
    bool poll(); ///< whether something has come to the list
    void cancel();
    bool busy() const { return !waiting.empty() || !running.empty(); }
    int done() const { return finished; } ///< of `total`, since there was nothing to do
    int total() const { return finished + int(waiting.size() + running.size()); }

private:
    class Child;

    bool start(const CStr& file);
    bool startAtHome(std::unique_ptr<Child>& child);
    const std::string& strangeHome();
    void note(const CStr& file, const FileMark& mark, const CStr& said, const CStr& why);

    PluginList& list;
    std::deque<CStr> waiting;
    std::vector<std::unique_ptr<Child>> running;
    int finished = 0;
    std::string home; ///< of those that are looked at; empty until there is one
};

#pragma once

#include "base/CStr.h"
#include "plugins/scan/PluginFacts.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

/// Which plug-ins may run in the program's own process: those that the user trusts, and those that
/// have run for ten hours without a fault. A file of the machine, not of projects, keeps it. A
/// library that was replaced by another one begins anew. Interface thread.
class PluginTrust {
public:
    static constexpr int64_t enoughSeconds = 10 * 3600;

    /// Seconds that pass, for the hours of good work.
    std::function<int64_t()> clock;

    explicit PluginTrust(const CStr& file);
    ~PluginTrust();
    PluginTrust(const PluginTrust&) = delete;
    PluginTrust& operator=(const PluginTrust&) = delete;

    bool trusted(const CStr& path) const;
    /// By the user, for good.
    void set(const CStr& path, bool trust);
    /// It works: the time since it was told the last time counts, once for all that are loaded of
    /// one file.
    void works(const CStr& path);
    void failed(const CStr& path);       ///< its hours begin anew
    int crashes(const CStr& path) const; ///< of this library so far

private:
    enum Word : int { none = 0, yes = 1, no = 2 }; ///< of the user
    struct Entry {
        FileMark mark;
        int word = none;
        int64_t seconds = 0, seen = -1;
        int crashes = 0;
    };

    Entry& entry(const CStr& path);
    void save();

    const CStr file;
    std::map<std::string, Entry> entries;
    int64_t savedAt = 0;
};

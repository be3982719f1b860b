#pragma once

#include "plugins/scan/PluginFacts.h"

#include <vector>

/// The plug-ins that the program knows, with what a scan has found out about each. It is kept in a
/// file, which is written anew with each result. Interface thread.
class PluginList {
public:
    struct Entry {
        CStr path;
        FileMark mark;
        PluginFacts facts; ///< of a file that could be loaded
        CStr why;          ///< it could not; empty: it could
        bool good() const { return why.empty(); }
    };

    explicit PluginList(const CStr& cacheFile); ///< reads it

    /// Those that load, by name.
    std::vector<const Entry*> usable() const;
    const std::vector<Entry>& all() const { return entries; }
    const Entry* find(const CStr& path) const; ///< null for one that is not known
    /// Of the files, those that are new or others than they were; forgets what is not among them.
    std::vector<CStr> compare(const std::vector<CStr>& files);
    void put(Entry entry); ///< in place of what is known of that path

private:
    void save() const;

    const CStr file;
    std::vector<Entry> entries;
};

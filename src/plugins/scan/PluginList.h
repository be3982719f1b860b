#pragma once

#include "plugins/PluginFile.h"
#include "plugins/scan/PluginFacts.h"

#include <vector>

/// The plug-ins that the program knows, with what a scan has found out about each. It is kept in a
/// file, which is written anew with each result. Interface thread.
class PluginList {
public:
    struct Entry {
        CStr path; ///< as in `PluginFile`
        FileMark mark;
        PluginFacts facts; ///< of a file that could be loaded; without a name it holds no plug-in
        CStr why;          ///< it could not; empty: it could
        bool good() const { return why.empty() && !facts.name.empty(); }
        bool broken() const { return !why.empty(); }
        CStr file() const { return PluginFile(path).file; }
        PluginFormat format() const { return PluginFile::formatOf(file()); }
    };

    /// One effect in the formats that there are of it.
    using Effect = std::vector<const Entry*>;

    explicit PluginList(const CStr& cacheFile); ///< reads it

    /// Those that load, by name.
    std::vector<const Entry*> usable() const;
    /// The same, those of one name, maker and use together.
    std::vector<Effect> effects() const;
    /// The formats of an effect of that name and maker.
    std::vector<const Entry*> formatsOf(const CStr& name, const CStr& vendor) const;
    const std::vector<Entry>& all() const { return entries; }
    /// By what stands for it, as in `PluginFile`; null for one that is not known.
    const Entry* find(const CStr& path) const;
    /// Of the files, those that are new or others than they were; forgets what is not among them.
    std::vector<CStr> compare(const std::vector<CStr>& files);
    /// All that was found in a file or bundle, in place of what is known of it.
    void put(const CStr& holder, std::vector<Entry> found);

private:
    void save() const;

    const CStr file;
    std::vector<Entry> entries;
};

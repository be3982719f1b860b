#pragma once

#include "base/CStr.h"

/// How plug-ins are built.
enum class PluginFormat { vst2, vst3, clap, lv2 };

/// Which plug-in is meant: what holds it and, where that may hold several, its name in there. As
/// one text it is `file`, or `file`, two colons and that name.
struct PluginFile {
    CStr file;   ///< a library; of LV2 and VST 3 the folder of its bundle, with no separator behind
    CStr inside; ///< the URI of LV2, the id of CLAP and VST 3; empty: the first one, or the only

    explicit PluginFile(const CStr& text);
    PluginFile(const CStr& holder, const CStr& name) : file(holder), inside(name) {}

    CStr text() const { return inside.empty() ? file : file + "::" + inside; }
    PluginFormat format() const { return formatOf(file); }
    bool isThere() const;
    CStr folderOfLibrary() const; ///< with a separator behind

    /// Whether a text could mean a plug-in, by the ending of the file's name.
    static bool isOne(const CStr& text);
    /// By that ending as well.
    static PluginFormat formatOf(const CStr& file);
    /// Whether a folder is a plug-in as a whole, whatever lies in it.
    static bool isBundle(const CStr& folder);
    /// What the user means who picks a file: a text or library of a bundle stands for that.
    static CStr ofPicked(const CStr& path);

    static constexpr const char* libraries = ".so|.clap"; ///< a filter
    static constexpr const char* pickable = ".so|.clap|.ttl";
};

/// "VST 2", "VST 3", "CLAP", "LV2".
const char* formatName(PluginFormat format);

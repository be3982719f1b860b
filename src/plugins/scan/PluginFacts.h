#pragma once

#include "base/CStr.h"

#include <optional>

/// What is known of a plug-in without loading it.
struct PluginFacts {
    CStr name, vendor;
    CStr inside; ///< as in `PluginFile`
    bool instrument = false, editor = false;
    int inputs = 0, outputs = 0, params = 0, programs = 0;

    static constexpr const char* none = "no plug-in"; ///< in place of lines

    /// A maker without the format that some tell along.
    static CStr makerAlone(const CStr& told);

    CStr line() const; ///< as one line of text
    static std::optional<PluginFacts> fromLine(const CStr& line);
};

/// A file as it was when it was looked at: another one in its place differs in one of them. Of a
/// bundle the files in it count.
struct FileMark {
    long long size = 0, time = 0, device = 0, inode = 0;

    /// Of what holds a plug-in, given as in `PluginFile`; nothing without it.
    static std::optional<FileMark> of(const CStr& path);
    bool operator==(const FileMark&) const = default;
    /// Whether it is the same file under whatever name.
    bool sameFile(const FileMark& other) const {
        return device == other.device && inode == other.inode;
    }
};

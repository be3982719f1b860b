#pragma once

#include "base/CStr.h"

#include <optional>

/// What is known of a plug-in without loading it.
struct PluginFacts {
    CStr name, vendor;
    bool instrument = false, editor = false;
    int inputs = 0, outputs = 0, params = 0, programs = 0;

    CStr line() const; ///< as one line of text
    static std::optional<PluginFacts> fromLine(const CStr& line);
};

/// A file as it was when it was looked at: another one in its place differs in one of them.
struct FileMark {
    long long size = 0, time = 0, device = 0, inode = 0;

    static std::optional<FileMark> of(const CStr& path); ///< nothing without the file
    bool operator==(const FileMark&) const = default;
    /// Whether it is the same file under whatever name.
    bool sameFile(const FileMark& other) const {
        return device == other.device && inode == other.inode;
    }
};

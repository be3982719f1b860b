#pragma once

#include "base/Paths.h"

#include <map>
#include <string>
#include <utility>

/// Whether files lie right in one folder, by whatever way their paths lead there. The disk is asked
/// once for each way.
class FolderTest {
public:
    /// None lies in an empty path.
    explicit FolderTest(CStr path) : folder(std::move(path)) {}

    bool holds(const CStr& file) {
        if (folder.empty()) return false;
        const CStr place = extractFilePath(file);
        const auto [known, isNew] = places.try_emplace(place.asChar(), false);
        if (isNew) known->second = samePlace(place, folder);
        return known->second;
    }

private:
    const CStr folder;
    std::map<std::string, bool> places;
};

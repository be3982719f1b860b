#pragma once

#include "base/CStr.h"

/// A file in the making: written under a name of its own beside the place where it shall stand, so
/// that what stands there is whole at any time. Unless it is committed, nothing is left of it.
class NewFile {
public:
    /// A symbolic link at `place` stays, and leads to the new file. A device there is written to
    /// as it is.
    explicit NewFile(const CStr& place);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const CStr& path() const { return working; } ///< to write to; not made yet
    /// Moves it to its place, over a file that is there, whose permissions it takes. False, and it
    /// stays uncommitted, if that fails.
    bool commit();

private:
    CStr target, working;
    bool moves = true; ///< to `target` in the end
};

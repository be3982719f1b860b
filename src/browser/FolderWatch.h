#pragma once

#include "base/CStr.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

/// Tells in which folders files or folders have come, gone or been renamed. Where the system
/// watches no more folders, nothing is told of the others.
class FolderWatch {
public:
    FolderWatch();
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    void add(const std::string& folder); ///< once is enough; any thread
    void clear();                        ///< watches nothing any more
    /// The folders that have changed since the last call, each once. One that is gone is told too.
    std::vector<std::string> changed();

private:
    static constexpr size_t most = 8192;

    void open();

    std::mutex mutex;
    int handle = -1;
    std::map<int, std::string> paths; ///< by the system's number
};

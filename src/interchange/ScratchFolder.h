#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

/// An empty folder among the system's temporary ones, gone with all that is in it with this object.
class ScratchFolder {
public:
    ScratchFolder() {
        std::error_code failed;
        std::string name = std::filesystem::temp_directory_path(failed) / "sondrava-XXXXXX";
        if (!failed && mkdtemp(name.data())) path = name;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path; ///< empty if it could not be made
    std::string file(const std::string& name) const { return path + "/" + name; }
};

#pragma once

#include "base/CStr.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

/// An empty folder for the length of a test.
class TempFolder {
public:
    TempFolder() {
        char name[] = "/tmp/sondrava-base-XXXXXX";
        if (!mkdtemp(name)) ADD_FAILURE() << "no folder in /tmp";
        path = name;
    }
    ~TempFolder() { std::filesystem::remove_all(path.asChar()); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    CStr file(const char* name) const { return path + "/" + name; }
    CStr write(const char* name, const std::string& content) const {
        std::ofstream(file(name).asChar(), std::ios::binary) << content;
        return file(name);
    }
    std::string read(const char* name) const {
        std::ifstream in(file(name).asChar(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    CStr path;
};

inline void PrintTo(const CStr& s, std::ostream* out) {
    *out << '"' << s.asChar() << '"';
}

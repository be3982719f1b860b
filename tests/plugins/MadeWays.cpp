#include "plugins/MadeWays.h"

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <stdexcept>

namespace {

std::string stemOf(const std::string& path) {
    const size_t from = path.rfind('/') + 1;
    return path.substr(from, path.rfind('.') - from);
}

std::string libraryHere() {
    Dl_info about{};
    dladdr(reinterpret_cast<void*>(&libraryHere), &about);
    return about.dli_fname;
}

} // namespace

const std::string& ownName() {
    static const std::string name = stemOf(libraryHere());
    return name;
}

bool bad(const char* way) {
    return ownName().starts_with("bad-") && ownName().compare(4, std::string::npos, way) == 0;
}

void fail() {
    throw std::runtime_error("made to fail");
}

void crash() {
    std::raise(SIGSEGV);
    std::raise(SIGSEGV); // whoever has handled it may be back
    std::abort();
}

void crashAtOnce() {
    std::signal(SIGSEGV, SIG_DFL);
    crash();
}

#include "plugins/MadeWays.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>

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

void misbehave(bool triggered) {
    if (triggered) {
        if (bad("crashes-process")) crash();
        if (bad("aborts-process")) std::abort();
        while (bad("hangs-process")) sleep(1);
        if (bad("oversleeps")) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (bad("throws-process")) fail();
    if (bad("rounding")) __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() | 0x6000u);
}

void waitWhileHeld() {
    const std::string file = libraryHere(), held = file.substr(0, file.rfind('/') + 1) + "held";
    while (access(held.c_str(), F_OK) == 0) usleep(1000);
}

void spoil(float* played, size_t frames) {
    if (bad("nan")) played[frames / 2] = NAN;
    if (bad("infinite")) played[0] = INFINITY;
    if (bad("overruns")) std::fill_n(played, 2 * frames, 0.5f);
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

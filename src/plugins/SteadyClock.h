#pragma once

#include <chrono>
#include <cstdint>

/// Nanoseconds of the clock by which trips are late and work is measured. No system call.
inline int64_t steadyNs() {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

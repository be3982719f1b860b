#pragma once

#include <chrono>
#include <thread>

/// Waits for a condition; false when it has not come within ten seconds.
template <class Condition>
bool comes(Condition condition) {
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

#include "driver/Gate.h"

#include <chrono>
#include <thread>

void Gate::shut() {
    open.store(false);
    settle();
}

void Gate::settle() const {
    const uint64_t seen = passes.load();
    if (seen % 2 == 0) return;
    while (passes.load() == seen) std::this_thread::sleep_for(std::chrono::microseconds(100));
}

#pragma once

#include "driver/libaam.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"

#include <vector>

/// Blocks of silence come in, as from a device, which then has stopped.
inline void runBlocks(CQV* host, int count) {
    std::vector<float> left(size_t(host->frames)), right = left;
    float* ins[] = {left.data(), right.data()};
    float* outs[] = {left.data(), right.data()};
    std::vector<AamEvent> events(aamMaxEvents);
    for (int i = 0; i < count; i++) libio(ins, outs, 2, 2, host->frames, events.data(), 0);
    host->tasks->audioStopped();
}

#pragma once

#include "engine/CGroupCh.h"
#include "engine/CQV.h"

#include <chrono>

/// A component whose work takes an eighth of a block at least.
class BusyComp : public CGroupCh {
public:
    using CGroupCh::CGroupCh;
    void process(int frames) override {
        const std::chrono::duration<double> share(frames / double(host->rate) / 8);
        const auto end = std::chrono::steady_clock::now() + share;
        while (std::chrono::steady_clock::now() < end) continue;
        CGroupCh::process(frames);
    }
};

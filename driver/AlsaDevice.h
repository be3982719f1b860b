#pragma once

#include "driver/AlsaPcm.h"
#include "driver/Backend.h"

#include <thread>

/// An open PCM device with a thread of its own. Playback sets the pace; recording, where the
/// device has it, runs in step.
class AlsaDevice : public Device {
public:
    explicit AlsaDevice(BlockCycle& blockCycle) : cycle(blockCycle) {}
    ~AlsaDevice() override { stop(); }

    bool open(const DeviceInfo& info, const DeviceWish& wish);
    void start() override;
    void stop() override;

private:
    void work();
    bool restart();
    AlsaPcm::Result runBlock();

    BlockCycle& cycle;
    AlsaPcm playback, capture;
    bool linked = false;
    std::atomic<bool> stopping{false};
    std::thread thread;
};

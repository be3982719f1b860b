#pragma once

#include "driver/AlsaPcm.h"
#include "driver/Backend.h"

#include <thread>

/// An open PCM device with a thread of its own. Playback sets the pace; recording, where the
/// device has it, runs in step.
class AlsaDevice final : public Device {
public:
    explicit AlsaDevice(BlockCycle& blockCycle) : cycle(blockCycle) {}
    ~AlsaDevice() override { stop(); }
    AlsaDevice(const AlsaDevice&) = delete;
    AlsaDevice& operator=(const AlsaDevice&) = delete;

    bool open(const DeviceInfo& info, const DeviceWish& wish);
    void start() override;
    void stop() override;

private:
    void work();
    bool restart();
    AlsaPcm::Result runBlock();

    BlockCycle& cycle;
    AlsaPcm playback, capture;
    std::atomic<bool> stopping{false};
    std::thread thread;
};

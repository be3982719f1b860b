#pragma once

#include "driver/Backend.h"

/// The device that needs no hardware: calls back in real time at any block size and rate, gives
/// silence in and throws the output away. It keeps time like a card with a buffer of three blocks.
class SilentClock : public Backend {
public:
    std::vector<DeviceInfo> devices() override;
    std::unique_ptr<Device> open(const DeviceInfo& info, const DeviceWish& wish,
                                 BlockCycle& cycle) override;
};

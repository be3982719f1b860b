#pragma once

#include "driver/Backend.h"

/// PulseAudio, or PipeWire in its place: a device for each sink, the server's default first.
class PulseBackend : public Backend {
public:
    std::vector<DeviceInfo> devices() override;
    std::unique_ptr<Device> open(const DeviceInfo& info, const DeviceWish& wish,
                                 BlockCycle& cycle) override;
};

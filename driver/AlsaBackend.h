#pragma once

#include "driver/Backend.h"

/// The PCM devices of ALSA: what the user's configuration calls the default or names itself, and
/// the hardware.
class AlsaBackend : public Backend {
public:
    /// Keeps the library from printing.
    AlsaBackend();
    std::vector<DeviceInfo> devices() override;
    std::unique_ptr<Device> open(const DeviceInfo& info, const DeviceWish& wish,
                                 BlockCycle& cycle) override;
};

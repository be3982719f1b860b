#pragma once

#include "driver/Backend.h"
#include "driver/JackWiring.h"

/// A running JACK server, which is never started from here. One device that is one client with
/// audio and MIDI ports, joined when it is opened: as they were before, at first to the physical
/// ports.
class JackBackend : public Backend {
public:
    /// Keeps the library from printing.
    JackBackend();
    /// Whether a server answers; takes some milliseconds.
    static bool reachable();

    std::vector<DeviceInfo> devices() override;
    /// Asks the server for the block size, unless it is to be kept; it then holds for all of its
    /// clients. The rate is always the server's.
    std::unique_ptr<Device> open(const DeviceInfo& info, const DeviceWish& wish,
                                 BlockCycle& cycle) override;

private:
    JackWiring wiring;
};

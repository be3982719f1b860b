#include "driver/PulseBackend.h"

#include "driver/PulseDevice.h"
#include "driver/PulseListing.h"

std::vector<DeviceInfo> PulseBackend::devices() {
    PulseConnection connection;
    const PulseListing listing(connection);
    std::vector<DeviceInfo> list;
    for (const PulseEndpoint& sink : listing.sinks) {
        const PulseEndpoint* source = listing.partner(sink);
        list.push_back({"Pulse: " + sink.description, sink.name, source ? source->name : ""});
    }
    return list;
}

std::unique_ptr<Device> PulseBackend::open(const DeviceInfo& info, const DeviceWish& wish,
                                           BlockCycle& cycle) {
    auto device = std::make_unique<PulseDevice>(cycle);
    return device->open(info, wish) ? std::move(device) : nullptr;
}

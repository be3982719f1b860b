#include "driver/JackBackend.h"

#include "driver/JackDevice.h"

JackBackend::JackBackend() {
    jack_set_error_function([](const char*) {});
    jack_set_info_function([](const char*) {});
}

bool JackBackend::reachable() {
    jack_client_t* client = jack_client_open("Sondrava-look", JackNoStartServer, nullptr);
    if (client) jack_client_close(client);
    return client != nullptr;
}

std::vector<DeviceInfo> JackBackend::devices() {
    if (!reachable()) return {};
    return {{"JACK", "", ""}};
}

std::unique_ptr<Device> JackBackend::open(const DeviceInfo&, const DeviceWish& wish,
                                          BlockCycle& cycle) {
    auto device = std::make_unique<JackDevice>(cycle, wiring);
    return device->open(wish) ? std::move(device) : nullptr;
}

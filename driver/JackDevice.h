#pragma once

#include "driver/Backend.h"

#include <array>
#include <cstdint>
#include <jack/jack.h>

struct MidiPorts;

/// Our client on a JACK server.
class JackDevice : public Device {
public:
    explicit JackDevice(BlockCycle& blockCycle) : cycle(blockCycle) {}
    ~JackDevice() override;
    JackDevice(const JackDevice&) = delete;
    JackDevice& operator=(const JackDevice&) = delete;

    /// Makes the client, its ports and connections; false if the server refuses.
    bool open(const DeviceWish& wish);
    void start() override {} // the server calls all the time; the cycle's gate decides
    void stop() override {}

private:
    using Ports = std::vector<jack_port_t*>;
    bool connectCallbacks();
    bool addPorts();
    bool addAudioPorts(bool inputs, Ports& ports, std::vector<std::string>& names);
    jack_port_t* addMidiPort(const char* name, unsigned long direction);
    void settleFrames(const DeviceWish& wish);
    void joinPhysical();
    std::vector<std::string> physical(const char* type, unsigned long direction) const;
    void join(const std::string& from, const std::string& to);

    int process(jack_nframes_t count);
    void readMidi(jack_nframes_t count);
    void writeMidi(int events, jack_nframes_t count);
    void framesChanged(int count);
    void rateChanged(int hz);

    BlockCycle& cycle;
    jack_client_t* client = nullptr; ///< owned
    Ports ins, outs;
    jack_port_t *midiIn = nullptr, *midiOut = nullptr;
    std::atomic<int> serverFrames{0};
    std::atomic<bool> settled{false}; ///< `frames` and `rate` are what the program was told
    std::atomic<bool> dead{false};    ///< the server is gone
};

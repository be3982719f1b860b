#pragma once

#include "driver/Backend.h"
#include "driver/JackWiring.h"
#include "driver/Ring.h"
#include "driver/libaam.h"

#include <array>
#include <cstdint>
#include <jack/jack.h>

struct MidiPorts;

/// Our client on a JACK server.
class JackDevice : public Device {
public:
    /// `known` outlives the device.
    JackDevice(BlockCycle& blockCycle, JackWiring& known)
        : cycle(blockCycle), wiring(known), room(size_t(aamMostMessage)) {}
    ~JackDevice() override;
    JackDevice(const JackDevice&) = delete;
    JackDevice& operator=(const JackDevice&) = delete;

    /// Makes the client, its ports and connections; false if the server refuses.
    bool open(const DeviceWish& wish);
    void start() override {} // the server calls all the time; the cycle's gate decides
    void stop() override {}
    void idle() override;

private:
    using Ports = JackWiring::Ports;
    bool connectCallbacks();
    bool addPorts();
    bool addAudioPorts(bool inputs, Ports& ports, std::vector<std::string>& names);
    jack_port_t* addMidiPort(const char* name, unsigned long direction);
    void settleFrames(const DeviceWish& wish);
    void joinPhysical();
    std::vector<std::string> physical(const char* type, unsigned long direction) const;
    void join(jack_port_t* own, const std::string& other);
    void followWiring();

    int process(jack_nframes_t count);
    void readMidi(jack_nframes_t count);
    void writeMidi(int events, jack_nframes_t count);
    bool writeMessages(void* buffer, jack_nframes_t until);
    void writeEvent(void* buffer, jack_nframes_t frame, const AamEvent& event);
    bool writePiece(void* buffer, jack_nframes_t frame);
    void framesChanged(int count);
    void rateChanged(int hz);

    BlockCycle& cycle;
    JackWiring& wiring;
    int64_t lookedNs = 0; ///< when the wiring was last looked at, 0 before the first time
    jack_client_t* client = nullptr; ///< owned
    Ports ins, outs;
    jack_port_t *midiIn = nullptr, *midiOut = nullptr;
    Ring<AamEvent> held{256};        ///< short messages behind one that is cut
    std::vector<unsigned char> room; ///< for the message that is sent
    AamMessage sending{};            ///< it; no length without one
    int sent = 0;                    ///< bytes of it that are written
    std::atomic<unsigned> cycles{0}; ///< of the server
    unsigned madeAt = 0;             ///< the cycle of the latest connection that was made here
    std::atomic<int> serverFrames{0};
    std::atomic<bool> settled{false}; ///< `frames` and `rate` are what the program was told
    std::atomic<bool> dead{false};    ///< the server is gone
};

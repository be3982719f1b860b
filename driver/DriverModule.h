#pragma once

#include "driver/AlsaMidi.h"
#include "driver/Backend.h"
#include "driver/BlockCycle.h"
#include "driver/MidiPorts.h"
#include "driver/WavCapture.h"
#include "driver/WavFeed.h"
#include "driver/libaam.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

/// Everything between `aamInit` and `aamShutdown`: the back ends, their devices and the one that
/// is open. Interface thread.
class DriverModule {
public:
    explicit DriverModule(AamCallback callback);
    ~DriverModule();
    DriverModule(const DriverModule&) = delete;
    DriverModule& operator=(const DriverModule&) = delete;

    /// Carries out any operation but `aamInit` and `aamShutdown`.
    intptr_t perform(intptr_t op, intptr_t a, intptr_t b);

private:
    struct Entry {
        Backend* backend = nullptr;
        DeviceInfo info;
    };

    intptr_t device(intptr_t op, intptr_t a, intptr_t b);
    intptr_t midi(intptr_t op, intptr_t a, intptr_t b);
    intptr_t audio(intptr_t op, intptr_t a, intptr_t b);
    intptr_t test(intptr_t op, intptr_t a, intptr_t b);

    intptr_t countDevices();
    intptr_t open(intptr_t index);
    void close();
    void start();
    void stop();
    intptr_t framesAsked(intptr_t a);
    intptr_t rateAsked(intptr_t a, float* granted);
    void enableMidi(MidiPorts::List& list, intptr_t index, bool on);
    intptr_t capture(const char* path);
    intptr_t feed(const char* path);
    intptr_t take(AamEvent* event, int64_t* frame);
    intptr_t send(const AamMessage& message);
    intptr_t takeMessage(AamMessage& to);
    void beginCapture();

    MidiPorts ports;
    std::vector<std::unique_ptr<Backend>> backends;
    std::vector<Entry> devices;
    DeviceWish wish;
    BlockCycle cycle;
    std::unique_ptr<AlsaMidi> sequencer;
    std::unique_ptr<WavCapture> capturing;
    std::unique_ptr<WavFeed> feeding;
    std::unique_ptr<Device> opened;
    bool running = false;
};

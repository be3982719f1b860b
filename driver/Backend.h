#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

class BlockCycle;

/// A device as it stands in the list.
struct DeviceInfo {
    std::string name;     ///< for the user
    std::string playback; ///< what the back end opens to play, in its own terms
    std::string capture;  ///< the same to record, empty for none
};

/// What the program asks a device for. It takes what it can and says what it took.
struct DeviceWish {
    int frames = 1024;      ///< 1 to 16384
    bool keepFrames = true; ///< take the block size that the device has, `frames` if it has none
    int rate = 44100;       ///< Hz, 1 or more
};

/// An open device. It runs `BlockCycle::run` once per block on a thread of its own between `start`
/// and `stop`, whose callers have the cycle's gate open in between and shut around.
class Device {
public:
    int frames = 0;                             ///< granted block size, 1 to 16384
    int rate = 0;                               ///< granted rate in Hz
    std::vector<std::string> inNames, outNames; ///< one for each channel, at most 32
    std::atomic<bool> needsReopen{false};       ///< any thread sets it

    Device() = default;
    virtual ~Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    virtual void start() = 0;
    virtual void stop() = 0;
    /// Every now and then, from the interface thread.
    virtual void idle() {}
};

/// One kind of sound system. Interface thread.
class Backend {
public:
    Backend() = default;
    virtual ~Backend() = default;
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    /// The devices that can be opened now; empty, quickly and silently, if its server is missing.
    virtual std::vector<DeviceInfo> devices() = 0;
    /// Opens a device of this back end; null if that fails. `cycle` outlives the device.
    virtual std::unique_ptr<Device> open(const DeviceInfo& info, const DeviceWish& wish,
                                         BlockCycle& cycle) = 0;
};

#pragma once

#include "driver/Gate.h"
#include "driver/MidiPorts.h"
#include "driver/Ring.h"
#include "driver/libaam.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

class AlsaMidi;
class WavCapture;
class WavFeed;

/// A block as a device hands it over, with all of its channels whether enabled or not.
struct DeviceBlock {
    float* const* ins;
    float* const* outs;
    int numIns, numOuts, frames;
    int64_t dueNs;      ///< when it should be ready; 0 means one block's length from now
    int64_t lostNs = 0; ///< of its time, before the system woke the device
};

/// What is done for each block whatever device it comes from: picks the enabled channels, gathers
/// the events, calls the program and hands on what it sent. `run` and `addEvent` belong to the
/// device's thread, the rest to the interface thread.
class BlockCycle {
public:
    AamCallback callback = nullptr; ///< set before the first block
    Gate gate;
    std::atomic<uint32_t> inFlags{0}, outFlags{0}; ///< bit k for channel k
    std::atomic<int64_t> xruns{0};                 ///< devices count theirs here

    explicit BlockCycle(MidiPorts& midiPorts);
    ~BlockCycle() = default;
    BlockCycle(const BlockCycle&) = delete;
    BlockCycle& operator=(const BlockCycle&) = delete;

    MidiPorts& ports;

    /// Prepares for a newly opened device. The gate is shut.
    void reset(int deviceRate);
    /// Puts another one in the place of the last, which is free to be deleted on return.
    void setSequencer(AlsaMidi* midi);
    void setFeed(WavFeed* wav);
    void setCapture(WavCapture* wav);
    void statistics(AamStatistics& to) const;
    /// Adds to the events of the next block; false if too many wait.
    bool inject(const AamEvent& event) { return injected.put(event); }
    /// The oldest event collected since `collect`, and its frame counted from the open.
    bool take(AamEvent& event, int64_t& frame);
    void collect();

    /// Adds an event to the block that the next `run` computes; dropped when the array is full.
    void addEvent(int32_t data, int device, int frame);
    /// Computes a block. Answers the count of events to send, which `events` holds in the order of
    /// their frames, all inside the block. With the gate shut the block is silent.
    int run(const DeviceBlock& block);
    std::array<AamEvent, aamMaxEvents> events{};

private:
    struct Taken {
        AamEvent event;
        int64_t frame;
    };
    void compute(const DeviceBlock& block);
    void choose(const DeviceBlock& block);
    void gather(int64_t begunNs, int frames);
    void order(int frames);
    void handOn(int64_t begunNs, int frames);
    void measure(const DeviceBlock& block, int64_t begunNs);

    int rate = 44100;
    int numEvents = 0;
    std::array<float*, aamMaxChannels> ins{}, outs{}; ///< of the enabled channels
    int numIns = 0, numOuts = 0;
    int64_t framesRun = 0;
    int64_t lastBegunNs = 0; ///< when the block before began
    std::vector<uint64_t> keys;
    std::vector<AamEvent> ordered;
    Ring<AamEvent> injected;
    Ring<Taken> taken;
    std::atomic<bool> collecting{false};
    std::atomic<AlsaMidi*> sequencer{nullptr};
    std::atomic<WavFeed*> feed{nullptr};
    std::atomic<WavCapture*> capture{nullptr};
    std::atomic<int64_t> blocks{0}, lateBlocks{0}, wokenLate{0}, lostFrames{0}, worstNs{0},
        heavyBlocks{0};
};

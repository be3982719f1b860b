#pragma once

#include "driver/Backend.h"
#include "driver/PulseConnection.h"
#include "driver/PulseListing.h"
#include "driver/Ring.h"

#include <cstddef>

/// A stream to a sink, which sets the pace, and one from a source if there is one. Blocks are
/// computed on the connection's thread whenever the server has room.
class PulseDevice : public Device {
public:
    explicit PulseDevice(BlockCycle& blockCycle) : cycle(blockCycle) {}
    ~PulseDevice() override;
    PulseDevice(const PulseDevice&) = delete;
    PulseDevice& operator=(const PulseDevice&) = delete;

    /// Connects both streams, still paused; false if the sink is gone or the server refuses.
    bool open(const DeviceInfo& info, const DeviceWish& wish);
    void start() override;
    void stop() override;

private:
    using Planes = std::vector<std::vector<float>>;
    pa_stream* makeStream(const char* name, const PulseEndpoint& end);
    bool openPlayback(const PulseEndpoint& sink);
    bool openRecord(const PulseEndpoint& source);
    bool waitReady(pa_stream* stream);
    void dropStream(pa_stream*& stream);
    void prepareBuffers();
    void pause(pa_stream* stream, bool paused);

    // on the connection's thread
    void fill();
    void computeBlock();
    void receive();
    void takeInputs();

    PulseConnection connection;
    BlockCycle& cycle;
    pa_stream *playback = nullptr, *record = nullptr; ///< owned
    bool running = false;                             ///< under the connection's lock
    Planes inPlanes, outPlanes;
    std::vector<float*> ins, outs;
    std::vector<float> staged;          ///< the block under way to the server, interleaved
    size_t stagedAt = 0;                ///< samples of it that are written
    std::vector<float> gathered;        ///< a block of input, interleaved
    std::unique_ptr<Ring<float>> input; ///< recorded and not used yet, interleaved
    size_t primeSamples = 0;            ///< input to wait for before the first is used
    bool primed = false;
};

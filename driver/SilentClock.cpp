#include "driver/SilentClock.h"

#include "driver/AudioThread.h"
#include "driver/BlockCycle.h"
#include "driver/Clock.h"

#include <algorithm>
#include <array>
#include <thread>

namespace {

constexpr int numChannels = 2;    // each way
constexpr int64_t blocksHeld = 3; // one that plays, two that are filled in time

class SilentClockDevice final : public Device {
public:
    SilentClockDevice(const DeviceWish& wish, BlockCycle& blockCycle)
        : cycle(blockCycle), silence(size_t(wish.frames)) {
        frames = wish.frames;
        rate = wish.rate;
        inNames = {"Silent in 1", "Silent in 2"};
        outNames = {"Silent out 1", "Silent out 2"};
        for (auto& channel : played) channel.resize(size_t(frames));
    }
    ~SilentClockDevice() override { stop(); }
    SilentClockDevice(const SilentClockDevice&) = delete;
    SilentClockDevice& operator=(const SilentClockDevice&) = delete;

    void start() override {
        stopping.store(false);
        thread = std::thread(&SilentClockDevice::tick, this);
    }
    void stop() override {
        stopping.store(true);
        if (thread.joinable()) thread.join();
    }

private:
    void tick();
    void sleepUntil(int64_t ns) const;

    BlockCycle& cycle;
    std::vector<float> silence;
    std::array<std::vector<float>, numChannels> played;
    std::atomic<bool> stopping{false};
    std::thread thread;
};

/// Behaves like a sound card that holds `blocksHeld` blocks: one that is computed a little late is
/// made up for, and only counts as late when such a card would have run empty. After a longer gap,
/// such as that of a suspended machine, the clock starts anew.
void SilentClockDevice::tick() {
    constexpr int64_t patienceNs = 200 * nsPerMs;
    askRealtime();
    std::array<float*, numChannels> ins{silence.data(), silence.data()};
    std::array<float*, numChannels> outs{played[0].data(), played[1].data()};
    int64_t begunNs = nowNs();
    int64_t framesDone = 0;
    while (!stopping.load(std::memory_order_relaxed)) {
        sleepUntil(begunNs + framesToNs(framesDone, rate));
        framesDone += frames;
        const int64_t held = framesDone + (blocksHeld - 2) * frames;
        const int64_t dueNs = begunNs + framesToNs(held, rate);
        cycle.run({ins.data(), outs.data(), numChannels, numChannels, frames, dueNs});
        if (nowNs() - dueNs < patienceNs) continue;
        cycle.xruns.fetch_add(1, std::memory_order_relaxed);
        begunNs = nowNs();
        framesDone = 0;
    }
}

/// Sleeps in short pieces, so that `stop` need not wait for a block of seconds.
void SilentClockDevice::sleepUntil(int64_t ns) const {
    constexpr int64_t pieceNs = 20 * nsPerMs;
    while (!stopping.load(std::memory_order_relaxed)) {
        const int64_t now = nowNs();
        if (now >= ns) return;
        sleepUntilNs(std::min(ns, now + pieceNs));
    }
}

} // namespace

std::vector<DeviceInfo> SilentClock::devices() {
    return {{"Silent clock", "", ""}};
}

std::unique_ptr<Device> SilentClock::open(const DeviceInfo&, const DeviceWish& wish,
                                          BlockCycle& cycle) {
    return std::make_unique<SilentClockDevice>(wish, cycle);
}

#include "driver/SilentClock.h"

#include "driver/AudioThread.h"
#include "driver/BlockCycle.h"
#include "driver/ClockPace.h"

#include <algorithm>
#include <array>
#include <thread>

namespace {

constexpr int numChannels = 2; // each way

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

void SilentClockDevice::tick() {
    askRealtime();
    std::array<float*, numChannels> ins{silence.data(), silence.data()};
    std::array<float*, numChannels> outs{played[0].data(), played[1].data()};
    ClockPace pace(frames, rate, nowNs());
    while (!stopping.load(std::memory_order_relaxed)) {
        const bool sleeps = nowNs() < pace.beginNs();
        sleepUntil(pace.beginNs());
        pace.begin(nowNs(), sleeps);
        cycle.run(
            {ins.data(), outs.data(), numChannels, numChannels, frames, pace.dueNs(), pace.lost()});
        if (!pace.end(nowNs())) cycle.xruns.fetch_add(1, std::memory_order_relaxed);
    }
}

/// Sleeps in short pieces, so that `stop` need not wait for a block of seconds.
void SilentClockDevice::sleepUntil(int64_t ns) const {
    constexpr int64_t pieceNs = 100 * nsPerMs;
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

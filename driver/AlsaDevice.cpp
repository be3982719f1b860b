#include "driver/AlsaDevice.h"

#include "driver/AudioThread.h"
#include "driver/BlockCycle.h"
#include "driver/Clock.h"

#include <algorithm>

namespace {

constexpr int minBlocksBuffered = 2;

std::vector<std::string> numbered(const char* what, int count) {
    std::vector<std::string> names;
    for (int i = 1; i <= count; ++i) names.push_back(what + std::to_string(i));
    return names;
}

} // namespace

bool AlsaDevice::open(const DeviceInfo& info, const DeviceWish& wish) {
    if (!playback.open(info.playback, true, wish.frames, wish.rate)) return false;
    rate = playback.rate;
    const bool roomy = playback.bufferFrames >= minBlocksBuffered * wish.frames;
    frames = roomy ? wish.frames
                   : std::min(playback.periodFrames, playback.bufferFrames / minBlocksBuffered);
    if (frames < aamMinFrames || frames > aamMaxFrames) return false;
    if (capture.open(info.capture, false, frames, rate) &&
        (capture.rate != rate || capture.bufferFrames < frames))
        capture.close();
    if (!playback.prepareBlocks(frames)) return false;
    if (capture.isOpen() && !capture.prepareBlocks(frames)) capture.close();
    inNames = numbered("In ", int(capture.planes.size()));
    outNames = numbered("Out ", int(playback.planes.size()));
    return true;
}

void AlsaDevice::start() {
    stopping.store(false);
    thread = std::thread(&AlsaDevice::work, this);
}

void AlsaDevice::stop() {
    stopping.store(true);
    if (thread.joinable()) thread.join();
}

/// Runs blocks and starts anew after each gap, with a pause so that a device in trouble leaves the
/// machine its time.
void AlsaDevice::work() {
    constexpr int64_t pauseNs = nsPerMs;
    askRealtime();
    AlsaPcm::Result result = AlsaPcm::Result::gap;
    for (bool first = true;; first = false) {
        if (!restart()) break;
        if (!first) cycle.xruns.fetch_add(1, std::memory_order_relaxed);
        do result = runBlock();
        while (result == AlsaPcm::Result::done);
        if (result != AlsaPcm::Result::gap) break;
        sleepUntilNs(nowNs() + pauseNs);
    }
    playback.drop();
    if (capture.isOpen()) capture.drop();
    if (result != AlsaPcm::Result::stopped) needsReopen = true;
}

/// Brings both directions to a running state with as much silence ahead as may be, since a block is
/// only written when one has been recorded.
bool AlsaDevice::restart() {
    playback.drop();
    if (capture.isOpen()) capture.drop();
    if (!playback.prepare() || (capture.isOpen() && !capture.prepare())) return false;
    for (float* plane : playback.planes) std::fill_n(plane, frames, 0.0f);
    const int ahead = std::min(playback.bufferFrames / frames, AlsaPcm::blocksBuffered);
    for (int i = 0; i < ahead; ++i) {
        if (playback.move(stopping) != AlsaPcm::Result::done) return stopping.load();
    }
    return (!capture.isOpen() || capture.startNow()) && playback.startNow();
}

AlsaPcm::Result AlsaDevice::runBlock() {
    if (capture.isOpen()) {
        const AlsaPcm::Result result = capture.move(stopping);
        if (result != AlsaPcm::Result::done) return result;
    }
    cycle.run({capture.planes.data(), playback.planes.data(), int(capture.planes.size()),
               int(playback.planes.size()), frames, 0});
    return playback.move(stopping);
}

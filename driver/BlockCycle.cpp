#include "driver/BlockCycle.h"

#include "driver/AlsaMidi.h"
#include "driver/AudioThread.h"
#include "driver/Clock.h"
#include "driver/WavCapture.h"
#include "driver/WavFeed.h"

#include <algorithm>
#include <utility>

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

/// For counters that one thread alone writes.
void add(std::atomic<int64_t>& counter, int64_t n) {
    counter.store(counter.load(relaxed) + n, relaxed);
}

} // namespace

BlockCycle::BlockCycle(MidiPorts& midiPorts)
    : ports(midiPorts), keys(aamMaxEvents), ordered(aamMaxEvents), injected(aamMaxEvents),
      taken(aamMaxEvents) {
}

void BlockCycle::reset(int deviceRate) {
    rate = deviceRate;
    numEvents = 0;
    framesRun = 0;
    lastBegunNs = 0;
    for (std::atomic<int64_t>* counter :
         {&xruns, &blocks, &lateBlocks, &wokenLate, &lostFrames, &worstNs, &heavyBlocks})
        counter->store(0, relaxed);
}

void BlockCycle::setSequencer(AlsaMidi* midi) {
    sequencer.store(midi);
    gate.settle();
}

void BlockCycle::setFeed(WavFeed* wav) {
    feed.store(wav);
    gate.settle();
}

void BlockCycle::setCapture(WavCapture* wav) {
    capture.store(wav);
    gate.settle();
}

void BlockCycle::statistics(AamStatistics& to) const {
    constexpr int64_t nsPerMicro = 1000;
    to = {blocks.load(relaxed),     lateBlocks.load(relaxed),           xruns.load(relaxed),
          lostFrames.load(relaxed), worstNs.load(relaxed) / nsPerMicro, heavyBlocks.load(relaxed),
          wokenLate.load(relaxed)};
}

bool BlockCycle::take(AamEvent& event, int64_t& frame) {
    Taken oldest{};
    if (!taken.take(oldest)) return false;
    event = oldest.event;
    frame = oldest.frame;
    return true;
}

void BlockCycle::collect() {
    taken.drop();
    collecting.store(true, relaxed);
}

void BlockCycle::addEvent(int32_t data, int device, int frame) {
    if (numEvents == aamMaxEvents) return;
    events[size_t(numEvents++)] = {data, int8_t(device), {}, frame};
}

int BlockCycle::run(const DeviceBlock& block) {
    flushDenormals();
    if (gate.enter()) {
        compute(block);
        gate.leave();
    } else {
        for (int i = 0; i < block.numOuts; ++i) std::fill_n(block.outs[i], block.frames, 0.0f);
        numEvents = 0;
    }
    return std::exchange(numEvents, 0);
}

void BlockCycle::compute(const DeviceBlock& block) {
    const int64_t begunNs = nowNs();
    choose(block);
    gather(begunNs, block.frames);
    if (WavFeed* wav = feed.load()) wav->next(ins.data(), numIns, block.frames);
    const long sent =
        callback(ins.data(), outs.data(), numIns, numOuts, block.frames, events.data(), numEvents);
    numEvents = int(std::clamp(sent, 0L, long(aamMaxEvents)));
    order(block.frames);
    handOn(begunNs, block.frames);
    if (WavCapture* wav = capture.load()) {
        if (!wav->put(outs.data(), numOuts, block.frames)) add(lostFrames, block.frames);
    }
    measure(block, begunNs);
    framesRun += block.frames;
    lastBegunNs = begunNs;
}

void BlockCycle::choose(const DeviceBlock& block) {
    const uint32_t inMask = inFlags.load(relaxed), outMask = outFlags.load(relaxed);
    numIns = numOuts = 0;
    for (int i = 0; i < block.numIns; ++i) {
        if (inMask >> i & 1) ins[size_t(numIns++)] = block.ins[i];
    }
    for (int i = 0; i < block.numOuts; ++i) {
        if (outMask >> i & 1)
            outs[size_t(numOuts++)] = block.outs[i];
        else
            std::fill_n(block.outs[i], block.frames, 0.0f);
    }
}

void BlockCycle::gather(int64_t begunNs, int frames) {
    const int64_t sinceNs = lastBegunNs ? lastBegunNs : begunNs;
    if (AlsaMidi* midi = sequencer.load()) {
        AlsaMidi::Timed in{};
        while (numEvents < aamMaxEvents && midi->receive(in)) {
            const int64_t frame = std::max<int64_t>(in.ns - sinceNs, 0) * rate / nsPerSecond;
            addEvent(in.event.data, in.event.device, int(std::min<int64_t>(frame, frames - 1)));
        }
    }
    AamEvent event{};
    while (numEvents < aamMaxEvents && injected.take(event)) {
        event.frame = std::clamp(event.frame, 0, frames - 1);
        events[size_t(numEvents++)] = event;
    }
}

void BlockCycle::order(int frames) {
    const size_t count = size_t(numEvents);
    bool sorted = true;
    for (size_t i = 0; i < count; ++i) {
        events[i].frame = std::clamp(events[i].frame, 0, frames - 1);
        keys[i] = uint64_t(events[i].frame) << 32 | i;
        sorted = sorted && (i == 0 || events[i - 1].frame <= events[i].frame);
    }
    if (sorted) return;
    std::sort(keys.begin(), keys.begin() + numEvents);
    for (size_t i = 0; i < count; ++i) ordered[i] = events[keys[i] & 0xFFFFFFFF];
    std::copy_n(ordered.begin(), count, events.begin());
}

void BlockCycle::handOn(int64_t begunNs, int frames) {
    if (numEvents == 0) return;
    if (AlsaMidi* midi = sequencer.load()) {
        const int64_t firstNs = begunNs + framesToNs(frames, rate);
        midi->send(events.data(), numEvents, firstNs, rate);
    }
    if (!collecting.load(relaxed)) return;
    for (int i = 0; i < numEvents; ++i) {
        const AamEvent& event = events[size_t(i)];
        taken.put({event, framesRun + event.frame});
    }
}

void BlockCycle::measure(const DeviceBlock& block, int64_t begunNs) {
    const int64_t ended = nowNs();
    const int64_t lasts = framesToNs(block.frames, rate);
    const int64_t due = block.dueNs ? block.dueNs : begunNs + lasts;
    add(blocks, 1);
    if (ended > due) add(lateBlocks, 1);
    if (ended > due && ended - block.lostNs <= due) add(wokenLate, 1);
    if (ended - begunNs > lasts / 2) add(heavyBlocks, 1);
    worstNs.store(std::max(worstNs.load(relaxed), ended - begunNs), relaxed);
}

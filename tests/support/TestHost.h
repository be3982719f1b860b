#pragma once

#include "base/Deadline.h"
#include "base/Paths.h"
#include "driver/libaam.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

/// Runs something again and again on a thread of its own, as long as it lives.
class BlockThread {
public:
    explicit BlockThread(const std::function<void()>& block)
        : thread([this, block] {
              for (; !stop; ++runs, std::this_thread::yield()) block();
          }) {}
    ~BlockThread() {
        stop = true;
        thread.join();
    }
    BlockThread(const BlockThread&) = delete;
    BlockThread& operator=(const BlockThread&) = delete;
    /// Waits until it has run once more, so that it really meets what comes between.
    bool next() const {
        const long before = runs;
        return comes([&] { return runs != before; });
    }

private:
    std::atomic<bool> stop{false};
    std::atomic<long> runs{0};
    std::thread thread; // last: it uses the others
};

/// A host without a driver: blocks run when the test asks for them, through the same callback that
/// a driver module would call. It has the device components of a new project, of which the audio
/// out and in stand on the device channels 0 and 1; settings are neither read nor written.
class TestHost {
public:
    static constexpr int channels = 2;

    explicit TestHost(int blockFrames = 1024, double rate = 44100.0) : host(new CQV) {
        qv = host;
        host->settingsEnabled = false;
        host->tempAudioFolder = getTempFolder(); // and not one in the tester's home
        host->setFrames(blockFrames);
        host->setRate(rate);
        host->init();
        out = static_cast<CAudioOut*>(host->getAudioOut());
        in = static_cast<CAudioIn*>(host->getAudioIn());
        midiIn = static_cast<CMIDIIn*>(host->getMIDIIn());
        midiOut = static_cast<CMIDIOut*>(host->getMIDIOut());
        for (int i = 0; i < channels; ++i) out->channelUsed[i] = in->channelUsed[i] = 1;
    }
    ~TestHost() {
        delete host;
        qv = nullptr;
    }
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    CQV* host; ///< also the global `qv`
    CAudioOut* out;
    CAudioIn* in;
    CMIDIIn* midiIn;
    CMIDIOut* midiOut;
    std::vector<float> left, right;  ///< all that came out since `forget`
    std::vector<AamEvent> sent;      ///< all MIDI that went out since `forget`
    std::vector<float> feedL, feedR; ///< comes in, block by block; silence behind its end

    /// Runs blocks of the host's size, or of `frames`.
    void run(int blocks = 1, int frames = 0) {
        for (int i = 0; i < blocks; ++i) runBlock(frames ? frames : host->frames);
    }
    /// Runs blocks until `done()`; false when a thousand did not do.
    template <class F>
    bool runUntil(F&& done) {
        for (int i = 0; i < 1000 && !done(); ++i) run();
        return done();
    }
    void forget() {
        left.clear();
        right.clear();
        sent.clear();
    }
    void undo() const {
        host->undoClicked();
        host->settle();
    }
    void redo() const {
        host->redoClicked();
        host->settle();
    }
    /// A message that comes in with the next block.
    void send(int data, int device = 0, int frame = 0) {
        waiting.push_back({data, int8_t(device), {}, frame});
    }

    /// Takes a component into the graph, with channels, ports and buffers; owned there.
    template <class T>
    T* add(T* c) {
        c->init();
        c->createBuffers(host->frames);
        const GraphHold hold(host);
        host->comps.add(c);
        return c;
    }
    /// Cables from the first output or port to the first input or port; audio by default to the
    /// audio out.
    CAudioCable* connect(CComp* from, CComp* to = nullptr) {
        const GraphHold hold(host);
        host->hostNotices.raise(HostNotice::delays);
        return (to ? to : out)->addAudioCable(from->output(), nullptr);
    }
    CMIDICable* connectMIDI(CComp* from, CComp* to) {
        const GraphHold hold(host);
        return to->addMIDICable(from->outPort(), nullptr);
    }
    /// One block; returns how many messages went out.
    long runBlock(int frames) {
        std::vector<float> inL = take(feedL, frames), inR = take(feedR, frames);
        std::vector<float> outL(size_t(frames), 1.0f), outR = outL;
        float* ins[] = {inL.data(), inR.data()};
        float* outs[] = {outL.data(), outR.data()};
        events.resize(aamMaxEvents);
        std::copy(waiting.begin(), waiting.end(), events.begin());
        const long count =
            libio(ins, outs, channels, channels, frames, events.data(), int(waiting.size()));
        waiting.clear();
        left.insert(left.end(), outL.begin(), outL.end());
        right.insert(right.end(), outR.begin(), outR.end());
        sent.insert(sent.end(), events.begin(), events.begin() + count);
        return count;
    }

private:
    /// The next `frames` of a feed, which loses them.
    static std::vector<float> take(std::vector<float>& feed, int frames) {
        std::vector<float> block(size_t(frames), 0.0f);
        const size_t n = std::min(feed.size(), block.size());
        std::copy_n(feed.begin(), n, block.begin());
        feed.erase(feed.begin(), feed.begin() + long(n));
        return block;
    }

    std::vector<AamEvent> waiting, events;
};

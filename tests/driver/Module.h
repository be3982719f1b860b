#pragma once

#include "base/Deadline.h"
#include "driver/libaam.h"

#include <atomic>
#include <functional>
#include <string>
#include <vector>

/// What the program is given for a block.
struct Block {
    float** ins;
    float** outs;
    long numIns, numOuts, frames;
    AamEvent* events;
    int numEvents;
};

/// The built module, initialised, and the program that it calls back. One at a time.
class Module {
public:
    /// Runs on the module's thread; the result is the count of events to send. It is replaced only
    /// while no callback runs. Without it the blocks are only counted, and play silence.
    std::function<long(const Block&)> program;
    std::atomic<int64_t> blocks{0};
    std::atomic<bool> inside{false}; ///< a callback is running
    std::atomic<long> frames{0};     ///< of the last block

    Module();
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    intptr_t operator()(AamOp op, intptr_t a = 0, intptr_t b = 0) const { return entry(op, a, b); }
    template <class T>
    intptr_t operator()(AamOp op, T* a, intptr_t b = 0) const {
        return entry(op, intptr_t(a), b);
    }

    std::string name(AamOp op, intptr_t index) const;
    /// The names of all devices, listed anew.
    std::vector<std::string> devices() const;
    /// The first device whose name begins so, -1 none.
    int device(const std::string& prefix) const;
    /// Asks for rate and block, opens and starts, with the first two channels each way enabled.
    bool open(int device, int blockFrames, int rate);
    void close() const;
    /// Waits for so many further blocks; false if they do not come.
    bool waitBlocks(int count) const;
    AamStatistics statistics() const;
    float rate() const;

    static AamEntry load();

private:
    static long callback(float** ins, float** outs, long numIns, long numOuts, long frames,
                         void* events, int numEvents);
    static inline Module* current = nullptr;
    AamEntry entry;
};

/// What a process holds that a device must give back.
struct Holdings {
    size_t threads, files, mappings;
    static Holdings now();
};

/// Stops again and again while a long callback runs: it must be over by then.
void stopWhileInside(Module& module, int device);

/// Has the device fail while it plays: the program is asked once to reopen it, which then fails.
void failWhilePlaying(Module& module, int device, const std::function<void()>& fail);

/// Opens, plays a few blocks and closes so many times: nothing may pile up.
void reopen(Module& module, int device, int times);

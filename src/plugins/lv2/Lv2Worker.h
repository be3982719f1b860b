#pragma once

#include "plugins/lv2/MessageRing.h"

#include <lv2/core/lv2.h>
#include <lv2/worker/worker.h>
#include <mutex>
#include <thread>
#include <vector>

/// Does what an LV2 plug-in puts off from a block, on a thread of its own, and brings it the
/// answers in a later one. Work that is asked for while it is given a state, or in an offline
/// render, is done at once. It begins with the plug-in and ends before it.
class Lv2Worker {
public:
    Lv2Worker();
    ~Lv2Worker(); ///< waits for what is being done
    Lv2Worker(const Lv2Worker&) = delete;
    Lv2Worker& operator=(const Lv2Worker&) = delete;

    LV2_Worker_Schedule later{}; ///< what the plug-in is made with
    LV2_Worker_Schedule now{};   ///< for giving it a state; interface thread

    /// The plug-in is made; `worker` null: it has nothing to put off.
    void start(LV2_Handle plugin, const LV2_Worker_Interface* worker);

    // Whoever renders.
    void beginBlock(bool inOffline) { offline = inOffline; }
    void endBlock(); ///< behind `run`

private:
    LV2_Worker_Status ask(uint32_t size, const void* data);
    LV2_Worker_Status work(uint32_t size, const void* data);
    LV2_Worker_Status answer(uint32_t size, const void* data);
    void serve();

    LV2_Handle handle = nullptr;
    const LV2_Worker_Interface* interface = nullptr;
    bool offline = false; ///< whoever renders
    MessageRing asked, answers;
    std::mutex working, answering;
    std::vector<char> answerRoom = MessageRing::buffer();
    Shared<int> bell{0};
    Shared<bool> ends{false};
    std::thread thread;
};

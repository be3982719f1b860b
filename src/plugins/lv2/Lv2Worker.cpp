#include "plugins/lv2/Lv2Worker.h"

#include "base/Futex.h"
#include "plugins/ForeignCall.h"

namespace {

constexpr int pauseMs = 1000;

} // namespace

Lv2Worker::Lv2Worker() {
    later = {this, [](LV2_Worker_Schedule_Handle of, uint32_t size, const void* data) {
                 return static_cast<Lv2Worker*>(of)->ask(size, data);
             }};
    now = {this, [](LV2_Worker_Schedule_Handle of, uint32_t size, const void* data) {
               return static_cast<Lv2Worker*>(of)->work(size, data);
           }};
}

Lv2Worker::~Lv2Worker() {
    ends = true;
    bell.fetchAdd(1);
    futexWake(bell, 1);
    if (thread.joinable()) thread.join();
}

void Lv2Worker::start(LV2_Handle plugin, const LV2_Worker_Interface* worker) {
    handle = plugin;
    interface = worker && worker->work ? worker : nullptr;
    if (interface) thread = std::thread([this] { serve(); });
}

LV2_Worker_Status Lv2Worker::ask(uint32_t size, const void* data) {
    if (!interface) return LV2_WORKER_ERR_UNKNOWN;
    if (offline) return work(size, data);
    if (!asked.push(0, data, size)) return LV2_WORKER_ERR_NO_SPACE;
    bell.fetchAdd(1);
    futexWake(bell, 1);
    return LV2_WORKER_SUCCESS;
}

LV2_Worker_Status Lv2Worker::work(uint32_t size, const void* data) {
    if (!interface) return LV2_WORKER_ERR_UNKNOWN;
    const std::scoped_lock lock(working);
    const auto respond = [](LV2_Worker_Respond_Handle of, uint32_t bytes, const void* content) {
        return static_cast<Lv2Worker*>(of)->answer(bytes, content);
    };
    return interface->work(handle, respond, this, size, data);
}

LV2_Worker_Status Lv2Worker::answer(uint32_t size, const void* data) {
    const std::scoped_lock lock(answering);
    return answers.push(0, data, size) ? LV2_WORKER_SUCCESS : LV2_WORKER_ERR_NO_SPACE;
}

void Lv2Worker::serve() {
    std::vector<char> message = MessageRing::buffer();
    while (!ends) {
        const int rung = bell.loadAcquire();
        uint32_t kind = 0;
        if (asked.pop(kind, message)) {
            contained([&] { work(uint32_t(message.size()), message.data()); });
        } else {
            futexWait(bell, rung, pauseMs);
        }
    }
}

void Lv2Worker::endBlock() {
    if (!interface) return;
    uint32_t kind = 0;
    while (answers.pop(kind, answerRoom))
        if (interface->work_response)
            interface->work_response(handle, uint32_t(answerRoom.size()), answerRoom.data());
    if (interface->end_run) interface->end_run(handle);
}

#include "base/CThread.h"

#include <chrono>
#include <pthread.h>
#include <sched.h>
#include <system_error>

CThread::~CThread() {
    finish();
}

void CThread::start() {
    if (handle.joinable()) return;
    terminated = false;
    running = true;
    try {
        handle = std::thread(&CThread::run, this);
    } catch (const std::system_error&) {
        running = false;
        terminated = true;
    }
}

void CThread::run() {
    execute();
    terminated = true;
    const Lock lock(mutex);
    running = false;
    stillOrEnd.notify_all();
}

void CThread::setPriority(int priority) {
    takeSchedule(SCHED_RR, priority);
}

void CThread::takeSchedule(int policy, int priority) {
    if (!handle.joinable()) return;
    sched_param param{};
    param.sched_priority = priority;
    pthread_setschedparam(handle.native_handle(), policy, &param);
}

void CThread::resume() {
    const Lock lock(mutex);
    woken = true;
    wake.notify_all();
}

bool CThread::isSelf() const {
    return handle.get_id() == std::this_thread::get_id();
}

void CThread::waitFor() {
    if (joinable && handle.joinable() && !isSelf()) handle.join();
}

void CThread::finish() {
    {
        const Lock lock(mutex);
        terminated = true;
        wake.notify_all();
    }
    if (handle.joinable() && !isSelf()) handle.join();
}

void CThread::park() {
    Lock lock(mutex);
    ++parkWanted;
    if (isSelf()) return;
    stillOrEnd.wait(lock, [this] { return parked || !running; });
}

void CThread::unpark() {
    const Lock lock(mutex);
    --parkWanted;
    wake.notify_all();
}

void CThread::suspend(int ms) {
    Lock lock(mutex);
    parked = true;
    stillOrEnd.notify_all();
    const auto due = [this] { return woken || terminated; };
    if (ms < 0)
        wake.wait(lock, due);
    else
        wake.wait_for(lock, std::chrono::milliseconds(ms), due);
    wake.wait(lock, [this] { return mayGoOn(); });
    woken = false;
    parked = false;
}

void CThread::checkPark() {
    if (mayGoOn()) return;
    Lock lock(mutex);
    parked = true;
    stillOrEnd.notify_all();
    wake.wait(lock, [this] { return mayGoOn(); });
    parked = false;
}

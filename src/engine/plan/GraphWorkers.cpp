#include "engine/plan/GraphWorkers.h"

#include "audiofiles/SampleRender.h"
#include "base/Denormals.h"
#include "base/Futex.h"
#include "base/GraphMark.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/plan/GraphPlan.h"

#include <algorithm>
#include <optional>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace {

thread_local int ownPlace = 0; ///< of the thread among those that work at a block

/// Looks at a word before a thread goes to sleep on it: some 20 microseconds.
constexpr int spins = 500;
/// The same of a run that follows the last one at once, as in an export: twice as long as
/// `closeNs`.
constexpr int spinsForRun = 2500;
constexpr unsigned closeNs = 50000;
constexpr int sleepMs = 1;

} // namespace

GraphScratch::GraphScratch(int frames)
    : left(size_t(frames)), right(size_t(frames)), bank(size_t(frames) * rows), arrival(nullptr),
      source(std::make_unique_for_overwrite<unsigned char[]>(sampleScratchBytes)) {
    arrival.createBuffers(frames);
}

/// One of the threads.
class GraphWorkers::Thread : public CThread {
public:
    Thread(GraphWorkers* all, int at) : owner(all), place(at) { start(); }
    ~Thread() override {
        terminated = true;
        owner->wakeUps.fetchAdd(1);
        futexWake(owner->wakeUps, most);
        finish();
    }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    void execute() override {
        ownPlace = place;
        number = gettid();
        flushDenormals();
        for (int seen = 0; !terminated;) {
            inside.exchange(1);
            owner->work(place);
            inside.exchange(0);
            const int now = owner->wakeUps.loadAcquire();
            if (now == seen && !terminated) owner->waitForRun(now);
            seen = now;
        }
    }
    Shared<int> inside{0}; ///< may be looking at a run
    Shared<int> number{0}; ///< by which the system knows the thread

private:
    GraphWorkers* owner;
    const int place;
};

GraphWorkers::GraphWorkers(CQV* root) : host(root) {
    makeScratch();
}

GraphWorkers::~GraphWorkers() = default;

int GraphWorkers::usual() {
    return std::clamp(int(std::thread::hardware_concurrency()) - 1, 0, most);
}

void GraphWorkers::setCount(int wanted) {
    wanted = std::clamp(wanted, 0, most);
    if (wanted == count()) return;
    const GraphHold hold(host);
    threads.resize(std::min(threads.size(), size_t(wanted)));
    makeScratch();
    while (count() < wanted) {
        scratches.push_back(std::make_unique<GraphScratch>(host->frames));
        threads.push_back(std::make_unique<Thread>(this, count() + 1));
    }
    followed = 0;
}

void GraphWorkers::makeScratch() {
    scratches.clear();
    for (int i = 0; i <= count(); ++i)
        scratches.push_back(std::make_unique<GraphScratch>(host->frames));
}

GraphScratch& GraphWorkers::scratch() const {
    return *scratches[size_t(ownPlace)];
}

void GraphWorkers::settle() {
    for (const auto& thread : threads)
        while (thread->inside.loadAcquire()) sched_yield();
}

void GraphWorkers::noteMaster() {
    master = static_cast<unsigned long>(pthread_self());
    if (!insideCallback()) followPriority();
}

void GraphWorkers::followPriority() {
    const unsigned long now = master;
    if (threads.empty() || now == 0 || now == followed) return;
    followed = now;
    int policy = SCHED_OTHER;
    sched_param param{};
    if (pthread_getschedparam(pthread_t(now), &policy, &param) != 0) return;
    for (const auto& thread : threads) {
        thread->takeSchedule(policy, param.sched_priority);
        if (param.sched_priority > 0 && host->aam &&
            sched_getscheduler(thread->number) == SCHED_OTHER)
            host->aam->askRealtime(thread->number, param.sched_priority);
    }
}

bool GraphWorkers::helpWith(const GraphPlan& p, int n) const {
    constexpr float share = 0.02f; // of a device's block: far from late
    if (threads.empty() || p.widest() < 2) return false;
    const float light = insideCallback() ? share * 1e9f * float(n) / float(host->rate) : 0.0f;
    return eager || p.work() > float(lightBlock) + light;
}

void GraphWorkers::run(GraphPlan& p, int n) {
    noteMaster();
    closeBy = sinceRun.lap() < closeNs && count() <= usual();
    plan = &p;
    frames = n;
    inCallback = insideCallback();
    done = 0;
    gate = p.endOfLevel(0);
    total = unsigned(p.turns());
    p.beginLevel(0, n);
    turn.storeRelease(uint64_t(++runs) << 32);
    wakeUps.fetchAdd(1);
    if (asleep.fetchAdd(0) > 0) futexWake(wakeUps, std::min(count(), p.widest() - 1));
    work(0);
    waitForRest();
    turn.storeRelease(uint64_t(runs) << 32 | nothing);
    noteTimes(p);
    sinceRun.lap();
}

/// Takes steps until none is left to be taken.
void GraphWorkers::work(int place) {
    for (int looked = 0;;) {
        uint64_t now = turn.loadAcquire();
        const auto step = unsigned(now);
        if (step >= total) return;
        const int open = gate.loadAcquire();
        if (int(step) >= open) {
            if (++looked > spins) waitAtGate(open);
            spinPause();
        } else if (turn.compareExchange(now, now + 1)) {
            looked = 0;
            take(step, place);
        }
    }
}

void GraphWorkers::take(unsigned step, int place) {
    std::optional<GraphMark> mark;
    std::optional<CallbackMark> callback;
    if (place > 0) mark.emplace(host);
    if (place > 0 && inCallback) callback.emplace();
    // The run is not over before this step is done.
    GraphPlan* const p = plan;
    const int open = gate.load(), all = int(total.load());
    spent[place] += p->runTurn(step, frames);
    const int finished = done.fetchAdd(1) + 1;
    if (finished < open) return;
    if (finished < all) {
        p->beginLevel(finished, frames);
        gate.exchange(p->endOfLevelAfter(finished));
    }
    if (waiting.fetchAdd(0) == 0) return;
    futexWake(gate, most);
    futexWake(done, 1);
}

/// Until another run begins than that of the word.
void GraphWorkers::waitForRun(int former) {
    for (int looked = 0; closeBy && looked < spinsForRun; ++looked) {
        if (wakeUps.loadAcquire() != former) return;
        spinPause();
    }
    asleep.fetchAdd(1);
    futexWait(wakeUps, former, -1);
    asleep.fetchAdd(-1);
}

void GraphWorkers::waitAtGate(int open) {
    waiting.fetchAdd(1);
    futexWait(gate, open, sleepMs);
    waiting.fetchAdd(-1);
}

/// Until what others have taken is done.
void GraphWorkers::waitForRest() {
    const int all = int(total.load());
    for (int looked = 0;; spinPause()) {
        const int now = done.loadAcquire();
        if (now == all) return;
        if (++looked < spins) continue;
        waiting.fetchAdd(1);
        futexWait(done, now, sleepMs);
        waiting.fetchAdd(-1);
    }
}

void GraphWorkers::noteTimes(GraphPlan& p) {
    unsigned all = 0;
    for (int i = 0; i <= count(); ++i) {
        busy[i].note(spent[i]);
        all += spent[i];
        spent[i] = 0;
    }
    p.times.note(all);
}

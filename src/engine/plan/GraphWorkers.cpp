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

/// Looks at a word before a thread goes to sleep on it: some 40 microseconds.
constexpr int spins = 1000;
/// The same of a run that follows the last one at once, as in an export: twice as long as
/// `closeNs`.
constexpr int spinsForRun = 3750;
constexpr unsigned closeNs = 75000;
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
    if (threads.empty() || p.widest() < 2 || p.turns() > mostTurns) return false;
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
    gate = 0;
    total = p.turns();
    fromBoth = !p.hasAhead();
    ++runs;
    openLevel(0, p.endOfLevel(0));
    wakeUps.fetchAdd(1);
    if (asleep.fetchAdd(0) > 0) futexWake(wakeUps, std::min(count(), p.widest() - 1));
    work(0);
    waitForRest();
    open.storeRelease(nothing);
    noteTimes(p);
    sinceRun.lap();
}

/// Takes turns until none is left to be taken.
void GraphWorkers::work(int place) {
    for (int looked = 0;;) {
        const int end = gate.loadAcquire(); // before what it was set behind
        const Range now = open.loadAcquire();
        if (now.first < now.end && mayTake(place)) {
            if (takeOne(now, place)) looked = 0;
        } else if (now.first == nothing.first || (now.first >= now.end && end >= total)) {
            return;
        } else {
            if (++looked > spins) waitAtGate(end);
            spinPause();
        }
    }
}

void GraphWorkers::openLevel(int first, int end) {
    plan->beginLevel(first, frames);
    lone = end - first == 1;
    open.storeRelease({uint16_t(first), uint16_t(end), runs});
    gate.exchange(end);
}

/// What is done by one thread is done by the same in each block, if that one is awake.
bool GraphWorkers::mayTake(int place) const {
    return !lone || place == 0 || waiting > 0;
}

/// What a turn works with is still near the thread that took it in the block before: so half of
/// the threads begin at the other end.
bool GraphWorkers::takeOne(Range now, int place) {
    const bool last = fromBoth && place % 2 != 0;
    Range left = now;
    const unsigned turn = last ? --left.end : left.first++;
    if (!open.compareExchange(now, left)) return false;
    take(turn, place);
    return true;
}

void GraphWorkers::take(unsigned turn, int place) {
    std::optional<GraphMark> mark;
    std::optional<CallbackMark> callback;
    if (place > 0) mark.emplace(host);
    if (place > 0 && inCallback) callback.emplace();
    // The run is not over before this turn is done.
    GraphPlan* const p = plan;
    const int end = p->endOfLevelAfter(int(turn)), all = total;
    spent[place] += p->runTurn(turn, frames);
    const int finished = done.fetchAdd(1) + 1;
    if (finished < end) return;
    if (finished < all) openLevel(finished, p->endOfLevelAfter(finished));
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

void GraphWorkers::waitAtGate(int end) {
    waiting.fetchAdd(1);
    futexWait(gate, end, sleepMs);
    waiting.fetchAdd(-1);
}

/// Until what others have taken is done.
void GraphWorkers::waitForRest() {
    const int all = total;
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

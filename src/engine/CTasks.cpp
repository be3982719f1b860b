#include "engine/CTasks.h"

#include "base/Delegates.h"
#include "base/GraphMark.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"

#include <cassert>

namespace {

constexpr int roundsBeforeTakeOver = 10;
constexpr unsigned idlePassMs = 40;

constexpr int following(int slot) {
    return (slot + 1) % CTasks::slots;
}

} // namespace

CTasks::CTasks(CQV* host) : qv(host) {
}

CTasks::~CTasks() {
    for (const Slot& slot : ring) delete slot.delegate;
}

bool CTasks::add(COnChange* delegate, CObject* arg) {
    if (full()) {
        delete delegate;
        return false;
    }
    Slot& slot = ring[written];
    delete slot.delegate;
    slot = {delegate, arg};
    written.storeRelease(following(written));
    return true;
}

int CTasks::count() const {
    return (written.loadAcquire() - done.loadAcquire() + slots) % slots;
}

void CTasks::exec(bool fromIdle) {
    if (fromIdle && !idleMayRun()) return;
    if (insideCallback()) {
        idleOwns = false;
        idleRounds = 0;
    }
    if (fromIdle && count() == 0 && !qv->transportWaiting()) return;
    const GraphHold hold(qv);
    runAll();
}

bool CTasks::idleMayRun() {
    if (holdsGraph(qv)) return true;
    idleRounds = idleRounds + 1;
    if (idleRounds > roundsBeforeTakeOver) idleOwns = true;
    return idleOwns;
}

void CTasks::runAll() {
    assert(holdsGraph(qv));
    if (busy) return;
    busy = true;
    const int end = written.loadAcquire();
    for (int at = done; at != end; done.storeRelease(at)) {
        const Slot slot = ring[at];
        at = following(at);
        (*slot.delegate)(slot.arg);
    }
    busy = false;
}

void CTasks::pump() {
    const int now = asTimeInMS();
    const unsigned since = unsigned(now) - unsigned(lastTurn); // after however long a pause
    if (blocksComing() && !holdsGraph(qv) && since < idlePassMs) return;
    lastTurn = now;
    exec(true);
}

#include "sequencer/take/TakeEdits.h"

#include "base/Delegates.h"
#include "base/Numbers.h"
#include "engine/CQV.h"

void TakeEdits::send() {
    if (sent.loadAcquire()) return;
    running.clear();
    if (collected.empty() || host->tasks->full()) return;
    running.swap(collected);
    sent.storeRelease(true);
    host->addTask(new _COnChange<TakeEdits>(this, &TakeEdits::run), nullptr);
}

void TakeEdits::settle() {
    for (send(); pending(); send()) {
        host->tasks->pump();
        if (sent.loadAcquire()) asSleep(1);
    }
}

void TakeEdits::run(CObject*) {
    for (const Edit& edit : running) edit();
    sent.storeRelease(false);
}

#include "engine/Workers.h"

#include "audiofiles/CSample.h"
#include "audiofiles/CSampleReader.h"
#include "engine/CQV.h"
#include "engine/plan/GraphWorkers.h"

void CDiskThread::execute() {
    while (!terminated) {
        checkPark();
        StopWatch watch;
        bool mayRead = qv->playing != 0;
        for (CSample* sample : qv->samples) {
            if (shallPause()) break;
            if (!sample->reader) continue;
            mayRead = true;
            sample->reader->serve();
        }
        for (CComp* c : qv->comps)
            if (c->type == compSeq) c->diskRead();
        qv->workers->reads.note(watch.lap());
        suspend(mayRead ? pauseMs : restMs);
    }
}

void CPeakThread::execute() {
    while (!terminated) {
        checkPark();
        if (!buildNext()) suspend();
    }
}

bool CPeakThread::buildNext() {
    for (CSample* sample : qv->samples) {
        if (!sample->needsPeaks || !sample->valid || sample->peakBusy) continue;
        sample->peakfile(this);
        qv->hostNotices.raise(HostNotice::peaks);
        return true;
    }
    return false;
}

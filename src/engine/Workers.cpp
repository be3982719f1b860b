#include "engine/Workers.h"

#include "audiofiles/CSample.h"
#include "engine/CQV.h"

namespace {

constexpr unsigned updatePeakImage = 4;

} // namespace

void CPeakThread::execute() {
    while (!terminated) {
        checkPark();
        if (!buildNext()) suspend();
    }
}

bool CPeakThread::buildNext() {
    for (CSample* sample : each<CSample>(qv->samples)) {
        if (!sample->needsPeaks || !sample->valid || sample->peakBusy) continue;
        sample->peakfile();
        sample->needsPeaks = false;
        qv->update(updatePeakImage);
        return true;
    }
    return false;
}

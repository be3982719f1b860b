#include "engine/plan/EventLine.h"

#include <algorithm>

void EventLine::take(const CMIDIBytes& event, int delay) {
    if (count == capacity) return;
    const double due = event.time + delay;
    int i = count++;
    for (; i > 0 && events[i - 1].time > due; --i) events[i] = events[i - 1];
    events[i] = event;
    events[i].time = due;
}

void EventLine::serve(CMIDIQ* to, int frames) {
    int served = 0;
    for (; served < count && events[served].time < frames; ++served) {
        const CMIDIBytes& e = events[served];
        to->insert(e.time, e.data, e.kind, e.value, e.param, e.owner, e.extra);
    }
    count -= served;
    for (int i = 0; i < count; ++i) {
        events[i] = events[i + served];
        events[i].time -= frames;
    }
}

#include "instruments/CSampleClip.h"

#include "base/Numbers.h"

#include <algorithm>

bool CSampleClip::open(CStr path) {
    const bool good = CSample::open(std::move(path));
    playAll();
    return good;
}

void CSampleClip::playAll() {
    start = 0;
    end = std::max(0, frames - 1);
}

void CSampleClip::limitRange() {
    const int last = std::max(0, frames - 1);
    end = asMinMax(end, 0, last);
    start = asMinMax(start, 0, end);
    loopStart = asMinMax(loopStart, 0, last);
}

void CSampleClip::setOrgKey(ToStore<int> key) {
    orgKey = (unsigned char)asMinMax(key, 0, 127);
}
void CSampleClip::setLoop(ToStore<int> v) {
    loop = asMinMax(v, loopOff, loopForward);
}

void CSampleClip::setRange(ToStore<int> from, ToStore<int> to) {
    start = from;
    end = to;
    limitRange();
}

void CSampleClip::setLoopStart(ToStore<int> frame) {
    loopStart = frame;
    limitRange();
}

void CSampleClip::setMode(ToStore<int> v) {
    mode = v;
}

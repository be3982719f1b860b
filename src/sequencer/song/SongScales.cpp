#include "sequencer/song/SongScales.h"

#include <limits>

SongScales::SongScales() {
    changes[0].tick = 0;
}

Scale SongScales::at(double tick) const {
    const Change& c = changes[indexAt(tick)];
    return {c.root, c.kind};
}

int SongScales::indexAt(double tick) const {
    int found = 0;
    int latest = 0;
    for (int i = 1; i < most; i++) {
        const int from = changes[i].tick;
        if (from < latest || from > tick) continue;
        found = i;
        latest = from;
    }
    return found;
}

int SongScales::nextAfter(double tick) const {
    int next = std::numeric_limits<int>::max();
    for (int i = 1; i < most; i++)
        if (changes[i].tick > tick && changes[i].tick < next) next = changes[i].tick;
    return next;
}

int SongScales::unused() const {
    for (int i = 1; i < most; i++)
        if (changes[i].tick == never) return i;
    return -1;
}

bool SongScales::any() const {
    if (changes[0].kind != scaleNone) return true;
    for (int i = 1; i < most; i++)
        if (changes[i].tick != never && changes[i].kind != scaleNone) return true;
    return false;
}

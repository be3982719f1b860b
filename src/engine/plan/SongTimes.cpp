#include "engine/plan/SongTimes.h"

#include <algorithm>

void SongTimes::note(const SongTime& time, int frames) {
    blocks[count++ & (most - 1)] = {next, time};
    next += frames;
}

SongTime SongTimes::before(int frames, double ticksPerFrame) const {
    const unsigned kept = std::min(count, most);
    if (kept == 0) return {};
    const int64_t wanted = at(0).frame - frames;
    unsigned ago = 0;
    for (unsigned step = most / 2; step > 0; step /= 2)
        if (ago + step < kept && at(ago + step - 1).frame > wanted) ago += step;
    const Block& block = at(ago);
    SongTime time = block.time;
    if (time.playing) time.ticks += double(wanted - block.frame) * ticksPerFrame * double(time.bpm);
    return time;
}

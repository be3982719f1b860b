#include "sequencer/song/Chance.h"

#include "base/Random.h"
#include "sequencer/song/Events.h"

bool Chance::happens(int percent, int tick, int mark) const {
    if (percent >= mostChance) return true;
    const uint64_t event = uint64_t(uint32_t(tick)) << 32 | uint32_t(mark);
    const uint64_t drawn = scramble(scramble(scramble(seed) + pass) ^ event);
    return (drawn >> 32) * mostChance >> 32 < uint64_t(percent < 0 ? 0 : percent);
}

#include "engine/SongTime.h"

#include "engine/CQV.h"

namespace {

constexpr double ticksPerBeatSecond = ticksPerQuarter / 60.0; ///< at one beat a minute

SongTimeHooks hooks;

} // namespace

void enterSongTime(const SongTimeHooks& entered) {
    hooks = entered;
}

double songSeconds(CQV* host, double ticks) {
    CComp* song = host->firstOfType(compSeq);
    if (song && hooks.seconds) return hooks.seconds(song, ticks);
    return ticks / (double(host->songTempo) * ticksPerBeatSecond);
}

double songTicks(CQV* host, double seconds) {
    CComp* song = host->firstOfType(compSeq);
    if (song && hooks.ticks) return hooks.ticks(song, seconds);
    return seconds * double(host->songTempo) * ticksPerBeatSecond;
}

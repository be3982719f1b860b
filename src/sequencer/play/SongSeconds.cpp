#include "sequencer/play/SongSeconds.h"

#include "engine/CQV.h"
#include "engine/SongTime.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"

#include <cmath>

namespace {

constexpr int unit = 1'000'000; ///< frames a second that the tempo map counts in

double seconds(CComp* song, double ticks) {
    auto* seq = static_cast<CSeq*>(song);
    CSeqProg* prog = seq->getProg();
    const float before = seq->host->songTempo;
    if (!prog) return ticks / (double(before) * ticksPerSecondPerBpm);
    return prog->tempoMap().ticksToFrames(before, 0.0, ticks, unit) / unit;
}

/// The tempo map tells whole ticks: what is missing follows from the tempo there.
double ticksOf(CComp* song, double wanted) {
    auto* seq = static_cast<CSeq*>(song);
    CSeqProg* prog = seq->getProg();
    const float before = seq->host->songTempo;
    if (!prog) return wanted * double(before) * ticksPerSecondPerBpm;
    constexpr int rounds = 3;
    const TempoMap& map = prog->tempoMap();
    double ticks = map.framesToTicks(before, 0.0, wanted * unit, unit);
    for (int i = 0; i < rounds; i++) {
        const double missing = wanted - seconds(song, ticks);
        ticks += missing * map.bpmAt(before, ticks) * ticksPerSecondPerBpm;
    }
    return std::fmax(ticks, 0.0);
}

} // namespace

void enterSongSeconds() {
    enterSongTime({seconds, ticksOf});
}

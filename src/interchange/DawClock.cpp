#include "interchange/DawClock.h"

#include "engine/CQV.h"
#include "interchange/DawUnits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

BeatClock clockOf(const DawSong& song) {
    std::vector<BeatClock::Point> points;
    for (const DawTempo& t : song.tempos) points.push_back({t.time, t.bpm, t.ramp});
    return BeatClock(song.bpm, std::move(points));
}

BeatClock clockOf(CSeq* seq) {
    std::vector<BeatClock::Point> points;
    for (const auto* t : seq->getProg()->tempos)
        points.push_back({toBeats(t->pos), double(t->getTempo()), t->ramp != 0});
    return BeatClock(double(seq->host->songTempo), std::move(points));
}

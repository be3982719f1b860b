#include "sequencer/edit/TempoEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TempoMap.h"

#include <memory>

namespace {

std::unique_ptr<CTempoPart> newPoint(int tick, double bpm, const CTempoPart* line) {
    auto point = std::make_unique<CTempoPart>();
    point->pos = tick;
    point->setTempo(float(bpm));
    point->ramp = line && line->ramp;
    return point;
}

/// A recording and the bars that it is to fill.
class BarFit {
public:
    BarFit(CSeq* song, CPart* recording, int bars)
        : seq(song), prog(song->getProg()), from(recording->pos), event(lengthEvent(recording)) {
        BarPlace end = barPlace(seq, from);
        end.bar += bars;
        to = tickOf(seq, end);
        if (event && bars > 0) bpm = (to - from) / (seconds() * ticksPerSecondPerBpm);
    }

    bool possible() const { return bpm >= double(minTempo) && bpm <= double(maxTempo); }

    void record(CUndo* undo) const {
        if (prog->tempos.empty()) return setSongTempo(undo);
        const CTempoPart* last = seq->getTempoAtPos(to);
        const double after = prog->tempoMap().bpmAt(seq->host->songTempo, to);
        bool followed = false;
        for (auto* point : prog->tempos) {
            followed = followed || point->pos == to;
            if (point->pos >= from && point->pos < to) undo->asRemove(point, &prog->tempos);
        }
        prog->addTempo(newPoint(from, bpm, nullptr).release(), undo);
        if (!followed) prog->addTempo(newPoint(to, after, last).release(), undo);
    }

private:
    void setSongTempo(CUndo* undo) const {
        const StoredValue tempo = tempoHereOf(seq);
        const StoredValue::Numbers before = tempo.get();
        seq->host->setTempo(float(bpm));
        seq->tempo.changed();
        undo->asValue(tempo, before);
    }

    double seconds() const {
        const double frames = double(event->end) - event->start + 1;
        return frames / tunedRate(event->sample, event->semitones + double(event->fine));
    }

    CSeq* seq;
    CSeqProg* prog;
    const int from;
    const CAudioEvent* event;
    int to = 0;
    double bpm = 0.0;
};

} // namespace

bool fitBars(CSeq* seq, CPart* part, int bars) {
    if (!seq->getProg()) return false;
    const BarFit fit(seq, part, bars);
    if (!fit.possible()) return false;
    CUndo* undo = seq->host->undoStart(
        "Fit bars", seq, {.song = true, .seq = SeqNotice::tracks | SeqNotice::transport});
    fit.record(undo);
    seq->host->undoEnd(undo, false);
    return true;
}

#include "data/demosong/SongPoints.h"

#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

namespace {

/// Pixels that show the whole song, in the smallest window too.
constexpr int wholeWidth = 640;

} // namespace

void addTempoPoint(CSeq* seq, int tick, float bpm, bool ramp) {
    auto* point = new CTempoPart;
    point->pos = tick;
    point->setTempo(bpm);
    point->ramp = static_cast<unsigned char>(ramp);
    seq->getProg()->addTempo(point, nullptr);
}

void addSignature(CSeq* seq, int tick, int beats, int unit) {
    auto* point = new CTimesigPart(beats, unit);
    point->pos = tick;
    seq->getProg()->addTimesig(point, nullptr);
}

void addSongMarker(CSeq* seq, int from, int to, const CStr& name) {
    auto* made = new CMarkerPart;
    made->id = name;
    made->pos = from;
    made->length = to - from;
    seq->getProg()->addMarker(made, nullptr);
}

void finishSong(CSeq* seq, int end, float bpm) {
    CQV* host = seq->host;
    const GraphHold hold(host);
    seq->orderParts(nullptr, nullptr, true);
    CSeqProg* prog = seq->getProg();
    prog->leftLocator = 0;
    prog->rightLocator = end;
    prog->loop = 0;
    seq->options.setZoom(float(wholeWidth) * quarterTicks / float(end));
    host->loop = 0;
    host->setTempo(bpm);
    host->undoClear();
    host->markSaved(host->saveMark());
}

#include "surfaces/SurfaceTarget.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "sequencer/song/CSeq.h"
#include "ui/Song.h"

namespace {

CSongTrack* selectedTrack(CSeq* seq) {
    return seq ? seq->selection.tracks.getFirst() : nullptr;
}

/// That makes a track heard; null for none.
COutputChannel* stripOf(CQV* host, CTrack* track) {
    if (COutputChannel* own = track->output()) return own;
    for (CComp* c : host->comps)
        if (c->output() && fedBy(c, track->outPort())) return c->output();
    return nullptr;
}

} // namespace

ParamRef surfaceParamOf(CQV* host, CComp* front, int index) {
    if (index < 0) return {};
    if (front && front->numParams() > 0)
        return index < front->numParams() ? ParamRef{front, index} : ParamRef{};
    const CSongTrack* track = selectedTrack(songOf(host));
    COutputChannel* strip = track ? stripOf(host, track->track) : nullptr;
    CComp* out = host->getAudioOut();
    if (!strip && out) strip = out->output();
    return strip && index < strip->numParams() ? ParamRef{strip, index} : ParamRef{};
}

void stepSelectedTrack(CQV* host, int by) {
    CSeq* seq = playableSongOf(host);
    if (!seq) return;
    const auto& tracks = seq->getProg()->tracks;
    const int at = tracks.indexed(selectedTrack(seq));
    const int to = at < 0 ? 0 : asMinMax(at + by, 0, tracks.getCount() - 1);
    auto* next = tracks.items(to);
    if (!next || to == at) return;
    seq->selection.unselectTracks();
    seq->selection.selectTrack(next, true);
    seq->raiseSong(SeqNotice::tracks);
}

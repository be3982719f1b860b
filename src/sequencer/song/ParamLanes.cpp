#include "sequencer/song/ParamLanes.h"

#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "engine/StoredValue.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"

namespace {

/// Where the sound of a parameter goes through.
struct ParamPlace {
    CComp* comp = nullptr;
    COutputChannel* channel = nullptr;
};

ParamPlace placeOf(CObject* object) {
    ParamPlace place;
    if (COutputChannel* strip = asStrip(object)) {
        place.channel = strip;
    } else if (const CSend* send = asSend(object)) {
        place.channel = send->channel;
    } else if (CComp* comp = asComp(object)) {
        place.comp = comp;
        place.channel = comp->ownerChannel;
    }
    if (place.channel) place.comp = place.channel->comp;
    return place;
}

int rankOf(const CTrack* track) {
    return track->armed ? 3 : track->selected() ? 2 : 1;
}

} // namespace

CTrack* trackOfParam(const CSeq* seq, CObject* object) {
    const ParamPlace place = placeOf(object);
    if (!place.comp) return nullptr;
    for (auto* track : seq->tracks) {
        const COutputChannel* out = track->output();
        if (out && (out == place.channel || fedBy(place.comp, out))) return track;
    }
    CTrack* best = nullptr;
    for (auto* track : seq->tracks)
        if (fedBy(place.comp, track->outPort()) && (!best || rankOf(track) > rankOf(best)))
            best = track;
    return best;
}

CSubTrack* showParamLane(CSeq* seq, CObject* object, int param) {
    CTrack* track = trackOfParam(seq, object);
    if (!track) return nullptr;
    CSubTrack* lane = track->findLane(object, param);
    if (!lane) {
        CUndo* step =
            seq->host->undoStart("Add lane", seq, {.song = true, .seq = SeqNotice::tracks});
        auto* made = new CSubTrack(paramTitle(object, param), laneAutomation);
        made->object = object;
        made->param = param;
        lane = track->addLane(made, step);
        seq->host->undoEnd(step, true);
    }
    if (!lane) return nullptr;
    lane->visible = 1;
    track->setOpen(true);
    return lane;
}

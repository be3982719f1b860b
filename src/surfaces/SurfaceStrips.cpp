#include "surfaces/SurfaceStrips.h"

#include "engine/CGroupCh.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "engine/CompTypes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackRouting.h"
#include "ui/Song.h"

#include <set>

std::vector<SurfaceStrip> surfaceStrips(CQV* host) {
    std::vector<SurfaceStrip> list;
    std::set<const COutputChannel*> known;
    const auto add = [&](COutputChannel* channel, CTrack* track, const CStr& name) {
        if (channel && known.insert(channel).second)
            list.push_back({channel, track, name.asChar()});
    };
    if (CSeq* seq = songOf(host); seq && seq->getProg()) {
        for (auto* songTrack : seq->getProg()->tracks) {
            CTrack* track = songTrack->track;
            CComp* plays = track->kind == trackMIDI ? trackTarget(seq, track) : nullptr;
            add(plays ? plays->output() : track->output(), track, track->id);
        }
    }
    for (auto* comp : host->comps)
        if (comp->type == compGroupCh) add(comp->output(), nullptr, comp->id);
    for (auto* bus : host->sends) add(bus->output(), nullptr, bus->id);
    return list;
}

SurfaceStrip mainStrip(CQV* host) {
    CComp* out = host->getAudioOut();
    return {out ? out->output() : nullptr, nullptr, "Main"};
}

void selectTrackAlone(CQV* host, CTrack* track) {
    CSeq* seq = playableSongOf(host);
    CSongTrack* songTrack = seq && track ? seq->getProg()->songTrackOf(track) : nullptr;
    if (!songTrack) return;
    seq->selection.unselectTracks();
    seq->selection.selectTrack(songTrack, true);
    seq->raiseSong(SeqNotice::tracks);
}

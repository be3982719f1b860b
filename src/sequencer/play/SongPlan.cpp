#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/plan/PlanBuilder.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"

namespace {

/// The channels that freeze files of a track play into.
std::vector<const COutputChannel*> frozenChannels(PlanBuilder& plan, const CSeq* seq,
                                                  const CTrack* track) {
    std::vector<const COutputChannel*> channels;
    for (const auto* program : plan.contents(seq->progs))
        for (const auto* songTrack : plan.contents(static_cast<const CSeqProg*>(program)->tracks)) {
            if (songTrack->track != track) continue;
            for (const auto* item : plan.contents(songTrack->freezeItems))
                channels.push_back(item->channel);
        }
    return channels;
}

} // namespace

// All tracks in one step bring out their events, and start voices; what these play is a step of
// each track.
void CSeq::planRender(PlanBuilder& plan) {
    plan.needMidi(this);
    plan.needAudio(this);
    if (CComp* keys = host->getMIDIIn()) plan.need(keys);
    for (auto* track : plan.contents(tracks))
        for (const auto* cable : plan.contents(track->midiCables)) {
            plan.need(cable->fromComp);
            plan.listen(this, cable->fromPort);
        }
    plan.render(this);
    for (auto* track : plan.contents(tracks)) {
        plan.sound(track, this, frozenChannels(plan, this, track));
        plan.note(track, {&track->live, &track->takeLatency, &track->fromDevice});
    }
}

void CSeq::planStrip(PlanBuilder& plan) {
    for (auto* track : plan.contents(tracks)) plan.strip(track);
}

#include "sequencer/song/SongSelection.h"

#include "audiofiles/CSample.h"
#include "engine/ForgetHooks.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <unordered_set>

namespace {

void countEvents(CPart* part, CPartSummary& summary) {
    for (CBaseEvent* event = part->getEvents(); event; event = event->next) {
        const CSample* sample = asClip(event)->sample;
        if (sample) (sample->chs == 1 ? summary.monoEvents : summary.stereoEvents)++;
    }
}

void countPart(CPart* part, CPartSummary& summary) {
    summary.parts++;
    if (!part->selected()) return;
    summary.selected++;
    summary.ghosts += part->ghostOf != nullptr;
    summary.midi += part->type == partMIDI;
    summary.drum += part->type == partDrum;
    const CAudioPart* audio = asAudio(part);
    if (!audio) return;
    summary.audio++;
    summary.multiclip += audio->multiclip != 0;
    countEvents(part, summary);
}

} // namespace

void SongSelection::selectTrack(CSongTrack* songTrack, bool on) {
    songTrack->track->setSelected(on);
    if (on)
        tracks.addUnique(songTrack);
    else
        tracks.remove(songTrack);
}

void SongSelection::unselectTracks() {
    for (auto* track : seq->tracks) track->setSelected(false);
    tracks.clear();
}

void SongSelection::unselectParts() {
    seq->eachSongTrack([](CSongTrack* songTrack) {
        for (auto* part : songTrack->parts) part->setSelected(false);
    });
}

void SongSelection::selectAll() {
    CSeqProg* prog = seq->getProg();
    if (!prog) return;
    for (auto* songTrack : prog->tracks) {
        selectTrack(songTrack, true);
        for (auto* part : songTrack->parts) part->setSelected(true);
    }
}

CPart* SongSelection::editPart(CTrack*& track) {
    track = nullptr;
    purge();
    CPart* found = nullptr;
    for (auto* songTrack : tracks)
        for (auto* part : songTrack->parts) {
            if (!part->selected()) continue;
            if (found || !songTrack->track->open()) return nullptr;
            found = part;
        }
    if (found) track = seq->partToTrack(found);
    return found;
}

CPart* SongSelection::firstPart(int type, CSongTrack** owner) const {
    CSeqProg* prog = seq->getProg();
    if (!prog) return nullptr;
    for (auto* songTrack : prog->tracks)
        for (auto* part : songTrack->parts) {
            if (!part->selected() || !part->asType(categoryPart, type)) continue;
            if (owner) *owner = songTrack;
            return part;
        }
    return nullptr;
}

void SongSelection::summarize(CPartSummary& summary) {
    summary = CPartSummary();
    purge();
    for (auto* songTrack : tracks)
        for (auto* part : songTrack->parts) countPart(part, summary);
}

void SongSelection::purge() {
    unsigned lists = tracks.version() + seq->progs.version();
    for (const auto* prog : seq->programs()) lists += prog->tracks.version();
    if (lists == purgedLists) return;
    std::unordered_set<const CSongTrack*> linked;
    seq->eachSongTrack([&linked](CSongTrack* songTrack) { linked.insert(songTrack); });
    std::vector<CSongTrack*> gone;
    for (auto* songTrack : tracks)
        if (!linked.count(songTrack)) gone.push_back(songTrack);
    for (CSongTrack* songTrack : gone) tracks.remove(songTrack);
    purgedLists = lists + unsigned(gone.size());
}

void SongSelection::forget(const ForgetSet& gone) {
    removeGone(tracks, gone);
}

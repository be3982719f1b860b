#include "sequencer/song/TrackRouting.h"

#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"

#include <algorithm>

namespace {

/// The notes or the sound of a track.
struct Way {
    CMIDIQ* notes;
    COutputChannel* sound;

    explicit Way(CTrack* track)
        : notes(track->kind == trackMIDI ? track->outPort() : nullptr),
          sound(track->kind == trackMIDI ? nullptr : track->output()) {}

    /// What takes sound alone has a port as well, for its automation.
    bool fits(CComp* to) const {
        if (to->type == compSeq || to->type == compMIDIIn || to->type == compAudioIn) return false;
        const bool soundOnly = to->type == compAudioOut || to->type == compEffect;
        return notes ? to->inPort() && !soundOnly : sound && to->input();
    }
    bool leadsTo(CComp* to) const { return notes ? fedBy(to, notes) : sound && fedBy(to, sound); }

    void record(CUndo* undo, CComp* to, bool on) const {
        if (on && notes)
            undo->asAdd(createMIDICable(to, notes, nullptr), &to->midiCables);
        else if (on)
            undo->asAdd(createAudioCable(to, sound, nullptr), &to->audioCables);
        else if (notes)
            remove<CMIDICable>(undo, to->midiCables, &CMIDICable::fromPort, notes);
        else
            remove<CAudioCable>(undo, to->audioCables, &CAudioCable::fromChannel, sound);
    }

private:
    template <class Cable, class From>
    static void remove(CUndo* undo, ListOf<Cable>& cables, From* Cable::*from, const From* end) {
        for (auto* cable : cables)
            if (cable->*from == end) undo->asRemove(cable, &cables);
    }
};

} // namespace

std::vector<CComp*> trackTargets(CSeq* seq, CTrack* track) {
    const Way way(track);
    std::vector<CComp*> targets;
    for (auto* comp : seq->host->comps)
        if (way.fits(comp)) targets.push_back(comp);
    return targets;
}

CComp* trackTarget(CSeq* seq, CTrack* track) {
    const Way way(track);
    for (CComp* to : trackTargets(seq, track))
        if (way.leadsTo(to)) return to;
    return nullptr;
}

bool setTrackTarget(CSeq* seq, CTrack* track, CComp* to) {
    return setTrackTargets(seq, {track}, to);
}

bool setTrackTargets(CSeq* seq, const std::vector<CTrack*>& tracks, CComp* to) {
    CUndo* undo = nullptr;
    for (CTrack* track : tracks) {
        const Way way(track);
        const std::vector<CComp*> targets = trackTargets(seq, track);
        if (to && std::ranges::find(targets, to) == targets.end()) continue;
        for (CComp* t : targets) {
            if (way.leadsTo(t) == (t == to)) continue;
            if (!undo)
                undo =
                    seq->host->undoStart(way.notes ? "Instrument" : "Output", seq, {.graph = true});
            way.record(undo, t, t == to);
        }
    }
    if (undo) seq->host->undoEnd(undo, true);
    return undo;
}

void setTrackInstrument(CSeq* seq, const std::vector<CTrack*>& tracks,
                        std::unique_ptr<CComp> instrument) {
    CUndo* undo = seq->host->undoStart("Instrument", seq, {.graph = true});
    CComp* to = instrument.release();
    to->id = seq->host->autoNameComp(to->id);
    for (CTrack* track : tracks) {
        const Way way(track);
        if (!way.notes) continue;
        for (CComp* former : trackTargets(seq, track))
            if (way.leadsTo(former)) way.record(undo, former, false);
        if (track == tracks.front())
            linkInstrument(to, track, undo);
        else
            way.record(undo, to, true);
    }
    seq->host->undoEnd(undo, true);
}

std::vector<COutputChannel*> trackSources(CSeq* seq) {
    std::vector<COutputChannel*> sources;
    for (auto* comp : seq->host->comps)
        if (comp->type == compAudioIn)
            for (auto* ch : comp->outputs) sources.push_back(ch);
    return sources;
}

COutputChannel* trackSource(CSeq* seq, CTrack* track) {
    for (COutputChannel* from : trackSources(seq))
        if (track->input() && getAudioCable(seq, from, track->input())) return from;
    return nullptr;
}

bool setTrackSources(CSeq* seq, const std::vector<CTrack*>& tracks, COutputChannel* from) {
    CUndo* undo = nullptr;
    const auto step = [&] {
        if (!undo) undo = seq->host->undoStart("Input", seq, {.graph = true});
        return undo;
    };
    for (CTrack* track : tracks) {
        if (track->kind != trackAudio || !track->input()) continue;
        for (COutputChannel* source : trackSources(seq)) {
            CAudioCable* cable = getAudioCable(seq, source, track->input());
            if ((cable != nullptr) == (source == from)) continue;
            if (cable)
                step()->asRemove(cable, &seq->audioCables);
            else
                step()->asAdd(createAudioCable(seq, from, track->input()), &seq->audioCables);
        }
    }
    if (undo) seq->host->undoEnd(undo, true);
    return undo;
}

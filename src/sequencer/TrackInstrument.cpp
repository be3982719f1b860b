#include "sequencer/TrackInstrument.h"

#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/GraphHold.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "sequencer/CSeq.h"
#include "sequencer/Scales.h"

void linkInstrument(CComp* instrument, CTrack* track, CUndo* undo) {
    CQV* host = track->host;
    CComp* out = host->getAudioOut();
    CMIDICable* midi = createMIDICable(instrument, track->outPort(), nullptr);
    CAudioCable* audio = out ? createAudioCable(out, instrument->output(), nullptr) : nullptr;
    if (undo) {
        undo->asAdd(instrument, &host->comps);
        if (midi) undo->asAdd(midi, &instrument->midiCables);
        if (audio) undo->asAdd(audio, &out->audioCables);
        return;
    }
    const GraphHold hold(host);
    host->comps.add(instrument);
    if (midi) instrument->midiCables.add(midi);
    if (audio) out->audioCables.add(audio);
    host->hostNotices.raise(HostNotice::delays);
}

CComp* addTrackInstrument(CSeq* seq, CTrack* track, CUndo* undo) {
    CQV* host = seq->host;
    CComp* synth = createComp(host, categoryComp, compSampler);
    synth->init();
    synth->createBuffers(host->frames);
    synth->setRate(double(host->rate));
    synth->id = host->autoNameComp(synth->id);
    linkInstrument(synth, track, undo);
    return synth;
}

void addDrums(CSeq* seq, CTrack* track, CUndo* undo) {
    DrumKit kit(seq->host, track->drumLayer(), seq);
    kit.addStandard();
    seq->takeKit(kit, track, undo);
}

bool feedsAnything(CTrack* track) {
    CList cables;
    listOutput(track->host, track->outPort(), &cables);
    return !cables.empty();
}

std::map<int, CStr> drumKeys(CTrack* track) {
    std::map<int, CStr> names;
    CList cables;
    listOutput(track->host, track->outPort(), &cables);
    for (const auto* cable : each<CMIDICable>(cables)) {
        CComp* to = cable->toComp;
        if (!to || to->category != categoryComp || to->type != compSampler) continue;
        auto* program = static_cast<CSynthProg*>(to->progs.items(to->curProg));
        if (!program) continue;
        bool drums = true;
        program->eachSound([&](CSound* sound) {
            drums = drums && sound->hiKey - sound->lowKey < octaveKeys;
            for (int key = sound->lowKey; drums && key <= sound->hiKey; key++)
                names.try_emplace(key, sound->id);
        });
        if (!drums) names.clear();
    }
    return names;
}

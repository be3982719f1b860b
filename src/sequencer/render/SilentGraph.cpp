#include "sequencer/render/SilentGraph.h"

#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "engine/plan/GraphPlan.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampler.h"
#include "plugins/CVST.h"
#include "sequencer/song/CSeq.h"

namespace {

void silence(CComp* c);

void silenceStrip(COutputChannel* ch) {
    for (CEQ* band : ch->eq)
        if (band) band->clear();
    for (CComp* insert : ch->inserts) silence(insert);
}

void silenceProgram(CSynthProg* prog) {
    for (const auto& send : prog->fx)
        if (send) send->clear();
    prog->eachSound([](CSound* sound) {
        for (const auto& insert : sound->fx)
            if (insert) insert->clear();
    });
}

void silenceTrack(CTrack* track) {
    track->arp->deleteAllVoices();
    for (auto* ch : track->outputs) silenceStrip(ch);
    if (!track->synthProg) return;
    silenceProgram(track->synthProg.get());
    for (auto* sound : drumSounds(*track->drumLayer())) silenceStrip(sound->output.get());
}

void silenceContent(CComp* c) {
    if (auto* rack = compAs<CEffect>(c)) {
        rack->restart();
        for (auto* prog : rack->programs())
            for (auto* fx : prog->effects) fx->clear();
    } else if (auto* sampler = compAs<CSampler>(c)) {
        sampler->allNotesOff();
        for (auto* prog : sampler->programs()) silenceProgram(prog);
    } else if (auto* plugin = compAs<CVST>(c)) {
        plugin->resetSound();
    } else if (auto* arp = compAs<CArp>(c)) {
        arp->deleteAllVoices();
    } else if (auto* seq = compAs<CSeq>(c)) {
        seq->dropVoices();
        for (auto* track : seq->tracks) silenceTrack(track);
    }
}

void silence(CComp* c) {
    silenceContent(c);
    for (auto* ch : c->outputs) silenceStrip(ch);
    for (auto* cable : c->audioCables) cable->settleMute();
    for (auto* child : c->comps) silence(child);
}

} // namespace

void silenceGraph(CQV* host) {
    silence(host);
    for (auto* bus : host->sends) silence(bus);
    host->plans->endFades();
    host->plans->current().latency().silence();
}

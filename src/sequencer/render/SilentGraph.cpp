#include "sequencer/render/SilentGraph.h"

#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
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
    switch (c->type) {
    case compEffect:
        static_cast<CEffect*>(c)->restart();
        for (auto* prog : each<CEffectProg>(c->progs))
            for (auto* fx : prog->effects) fx->clear();
        break;
    case compSampler:
        static_cast<CSampler*>(c)->allNotesOff();
        for (auto* prog : each<CSynthProg>(c->progs)) silenceProgram(prog);
        break;
    case compVST:
        static_cast<CVST*>(c)->resetSound();
        break;
    case compArp:
        static_cast<CArp*>(c)->deleteAllVoices();
        break;
    case compSeq:
        static_cast<CSeq*>(c)->dropVoices();
        for (auto* track : static_cast<CSeq*>(c)->tracks) silenceTrack(track);
        break;
    default:
        break;
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
    for (auto* bus : each<CComp>(host->sends)) silence(bus);
    host->plans->endFades();
    host->plans->current().latency().silence();
}

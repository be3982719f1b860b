#include "project/SongSends.h"

#include "common/fx/CChorus.h"
#include "common/fx/CReverb.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/CSend.h"
#include "engine/CUndo.h"
#include "engine/Cables.h"
#include "engine/GraphHold.h"
#include "instruments/CSampler.h"
#include "sequencer/edit/Pending.h"

#include <cmath>

namespace {

constexpr int hallMs = 2200;
/// Of what an instrument sends at most: a fader, which counts squared.
constexpr float reverbShare = 0.55f, chorusShare = 0.7f;

/// The effect alone, without what goes into it.
CEffect* wetRack(COutputChannel* channel, int kind) {
    std::unique_ptr<CEffect> rack = makeInsert(channel, kind);
    CFX* effect = effectOf(rack.get());
    effect->setDry(0.0f);
    effect->setWet(1.0f);
    if (kind == fxReverb) static_cast<CReverb*>(effect)->setSize(hallMs);
    return rack.release();
}

CGroupCh* makeBus(CQV* host, const char* name, int effect) {
    auto* bus = new CGroupCh(host);
    bus->init();
    bus->id = name;
    bus->createBuffers(host->frames);
    COutputChannel* out = bus->output();
    out->inserts.add(wetRack(out, effect));
    return bus;
}

void link(CQV* host, CGroupCh* bus, CUndo* undo) {
    CComp* out = host->getAudioOut();
    CAudioCable* cable = out ? createAudioCable(out, bus->output(), nullptr) : nullptr;
    if (undo) {
        undo->asAdd(bus, &host->sends);
        if (cable) undo->asAdd(cable, &out->audioCables);
        return;
    }
    const GraphHold hold(host);
    host->sends.add(bus);
    if (cable) out->audioCables.add(cable);
}

} // namespace

void SongSends::find(int& known, const char* name, int effect) {
    if (known >= 0) return;
    int count = 0;
    eachWithPending(undo, &host->sends, [&](const CComp* bus) {
        if (bus->id == name && known < 0) known = count;
        count++;
    });
    if (known >= 0 || count >= maxSends) return;
    link(host, makeBus(host, name, effect), undo);
    known = count;
}

void SongSends::send(CSampler* instrument, float reverb, float chorus) {
    const auto lead = [&](int bus, float level) {
        if (bus >= 0 && level > 0.0f) wanted.push_back({instrument->output(), bus, level});
    };
    if (reverb > 0.0f) find(reverbBus, "Reverb", fxReverb);
    if (chorus > 0.0f) find(chorusBus, "Chorus", fxChorus);
    lead(reverbBus, std::sqrt(reverb) * reverbShare);
    lead(chorusBus, std::sqrt(chorus) * chorusShare);
}

void SongSends::settle() const {
    for (const Send& s : wanted) s.channel->sendLevels[s.bus]->level = s.level;
}

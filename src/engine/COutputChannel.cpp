#include "engine/COutputChannel.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CComp.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/Mixing.h"
#include "engine/SongClock.h"
#include "engine/StripMeters.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace {

constexpr float meterFall = 0.05f;

/// The bands of a new strip.
constexpr struct {
    int form;
    float hz;
} newBands[eqBandCount] = {
    {eqHighShelf, 10000.0f}, {eqPeaking, 2000.0f}, {eqPeaking, 800.0f}, {eqLowShelf, 100.0f}};

void scale(float* buf, int frames, float factor) {
    for (int i = 0; i < frames; ++i) buf[i] *= factor;
}

/// Blends the dry signal into the wet one, in place.
void blend(float* wet, const float* dry, int frames, float share) {
    if (share >= 1.0f) return;
    const float rest = 1.0f - share;
    for (int i = 0; i < frames; ++i) wet[i] = wet[i] * share + dry[i] * rest;
}

/// Blends what went into an insert into what came out, from frame to frame by the wet share that
/// holds there: `share` at first, then that of each event.
void blendInsert(CComp* insert, const CInputChannel* in, float share, int frames) {
    const COutputChannel* out = insert->output();
    int done = 0;
    const auto blendTo = [&](int end) {
        blend(out->bufL + done, in->bufL + done, end - done, share);
        blend(out->bufR + done, in->bufR + done, end - done, share);
        done = end;
    };
    CMIDIQ* port = insert->inPort();
    for (const CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
        if (e->kind != eventParam || e->owner != insert || e->param != paramWet) continue;
        blendTo(CMIDIQ::frameOf(e, done, frames));
        share = fLimit(e->value, 0.0f, 1.0f);
    }
    blendTo(frames);
}

void passEvents(const CMIDIBytes* events, CMIDIQ* port, const PlanInsert* late, int frames) {
    EventLine* const line = late ? late->events.get() : nullptr;
    for (const CMIDIBytes* e = events; e; e = e->next) {
        if (line)
            line->take(*e, late->wait);
        else
            port->push(e->time, e->data, e->kind, e->value, e->param, e->owner, e->extra);
    }
    if (line) line->serve(port, frames);
}

/// Lets an insert that comes or goes take its part of what it stands in the way of.
void fadeInsert(COutputChannel* out, const CInputChannel* in, PlanFade& fade, int frames) {
    for (int i = 0; i < frames; ++i) {
        const float share = fade.at(i);
        out->bufL[i] = in->bufL[i] + (out->bufL[i] - in->bufL[i]) * share;
        out->bufR[i] = in->bufR[i] + (out->bufR[i] - in->bufR[i]) * share;
    }
    fade.advance(frames);
}

/// Brings a fade on by a block.
void followFade(const PlanInsert& insert, COutputChannel* out, const CInputChannel* in,
                int frames) {
    const CQV* host = insert.comp->host;
    PlanFade& fade = insert.fade->fade;
    fade.follow(insert.leaving, fadeFrames(host));
    if (fade.running()) fadeInsert(out, in, fade, frames);
    insert.fade->overAt = fade.over() ? host->blocks : 0;
}

/// Whether an insert of a strip that changes works in this block. Where one has gone, it does not
/// come elsewhere in the same block.
bool isHeard(const PlanInsert& insert, unsigned block) {
    if (insert.leaving) return !insert.ended && !insert.fade->isOver();
    return !insert.after || (insert.after->isOver() && insert.after->overAt != block);
}

/// What goes past an insert that is late.
CInputChannel* delayedDry(const PlanInsert& late, CInputChannel* in, int frames) {
    DelayLine* const line = late.dry.get();
    if (line && line->idle()) line->skip();
    if (!line || line->idle()) return in;
    CInputChannel& room = late.comp->host->scratch().arrival;
    line->process(in->bufL, in->bufR, room.bufL, room.bufR, frames);
    return &room;
}

void copyStereo(float* toL, float* toR, const COutputChannel* from, int frames) {
    std::memcpy(toL, from->bufL, size_t(frames) * sizeof(float));
    std::memcpy(toR, from->bufR, size_t(frames) * sizeof(float));
}

} // namespace

COutputChannel::COutputChannel(CComp* owner) {
    category = categoryChannel;
    type = channelOutput;
    comp = owner;
    for (CSend*& send : sendLevels) send = new CSend(owner, this);
    for (int k = 0; k < eqBandCount; ++k) {
        eq[k] = new CEQ(newBands[k].form);
        eq[k]->active = 0;
        eq[k]->setFrequency(newBands[k].hz);
        if (owner) eq[k]->setRate(owner->host->rate);
    }
    setVol(vol, false);
    setPan(pan, false);
}

COutputChannel::~COutputChannel() {
    while (auto* insert = inserts.first()) {
        inserts.del(0);
        delete insert;
    }
    for (CSend* send : sendLevels) delete send;
    for (CEQ* band : eq) delete band;
    destroyStereo(bufL, bufR);
    delete measures.load();
}

StripMeters& COutputChannel::meters() {
    if (!measures) {
        auto made = std::make_unique<StripMeters>();
        made->loudness.setRate(comp->host->rate);
        measures.storeRelease(made.release());
    }
    return *measures;
}

void COutputChannel::createBuffers(int frames) {
    createStereo(bufL, bufR, frames);
    for (auto* insert : inserts) insert->createBuffers(frames);
}

void COutputChannel::destroyBuffers() {
    destroyStereo(bufL, bufR);
    for (auto* insert : inserts) insert->destroyBuffers();
}

void COutputChannel::setFrames(int frames) {
    createBuffers(frames);
    for (auto* insert : inserts) insert->setFrames(frames);
}

void COutputChannel::setRate(double rate) {
    for (CEQ* band : eq) band->setRate(float(rate));
    for (auto* insert : inserts) insert->setRate(rate);
    if (StripMeters* made = measured()) made->loudness.setRate(rate);
}

int COutputChannel::rampFrames() const {
    return comp ? std::max(comp->host->framesInMs * rampMs, 1) : 1;
}

void COutputChannel::setVol(float v, bool ramp) {
    gainTarget = fLimit(v, 0.0f, 1.0f);
    if (!ramp || gain == gainTarget) {
        gain = gainTarget;
        gainStep = 0.0f;
        gainRamp = 0;
        return;
    }
    gainRamp = rampFrames();
    gainStep = (gainTarget - gain) / float(gainRamp);
}

void COutputChannel::setPan(float p, bool ramp) {
    panTarget = fLimit(p, -1.0f, 1.0f);
    const Sides to = panLaw(panTarget);
    if (!ramp) {
        panL = to.left;
        panR = to.right;
        panLStep = panRStep = 0.0f;
        panRamp = 0;
        return;
    }
    panRamp = rampFrames();
    panLStep = (to.left - panL) / float(panRamp);
    panRStep = (to.right - panR) / float(panRamp);
}

// Counted from where the ramp ends, so that it goes the same way in any pieces.
void COutputChannel::advanceRamps(int frames) {
    if (gainRamp > 0) {
        gainRamp = std::max(gainRamp - frames, 0);
        gain = gainTarget - gainStep * float(gainRamp);
        if (gainRamp == 0) setVol(gainTarget, false);
    }
    if (panRamp > 0) {
        panRamp = std::max(panRamp - frames, 0);
        const Sides to = panLaw(panTarget);
        panL = to.left - panLStep * float(panRamp);
        panR = to.right - panRStep * float(panRamp);
        if (panRamp == 0) setPan(panTarget, false);
    }
}

void COutputChannel::moveFader(float value) {
    comp->host->values->set(faderOf(this), {double(value), 1.0});
    holdL = 0.0f;
    holdR = 0.0f;
}

void COutputChannel::movePan(float value) {
    comp->host->values->set(panOf(this), double(value));
}

void COutputChannel::toggleMute() {
    comp->host->values->set(muteOf(this), mute ? 0.0 : 1.0);
}

void COutputChannel::toggleSolo() {
    comp->host->values->set(soloOf(this), solo ? 0.0 : 1.0);
}

void COutputChannel::setEqPower(int band, ToStore<bool> on) {
    eq[band]->active = on;
    setEQChanged();
}

void COutputChannel::setEqFrequency(int band, ToStore<float> hz) {
    eq[band]->setFrequency(hz);
    setEQChanged();
}

void COutputChannel::setEqGain(int band, ToStore<float> db) {
    eq[band]->setGain(db);
    setEQChanged();
}

void COutputChannel::setEqQ(int band, ToStore<float> q) {
    eq[band]->setQ(q);
    setEQChanged();
}

void COutputChannel::setEqType(int band, ToStore<int> form) {
    eq[band]->setFilterType(form);
    setEQChanged();
}

void COutputChannel::setEQChanged() {
    // The clock is a call of the system, so a block leaves it to the next idle pass.
    if (insideCallback())
        eqChanged = 1;
    else
        eqChangeTime = asTimeInMS();
}

void COutputChannel::processFX(CMIDIBytes* events, int frames) {
    const float exponent = fLimit(trim, -1.0f, 1.0f);
    if (exponent != 0.0f) {
        const float factor = std::pow(4.0f, exponent);
        scale(bufL, frames, factor);
        scale(bufR, frames, factor);
    }
    equalise(frames);
    COutputChannel* src = this;
    const GraphPlan* plan = comp ? &comp->host->plans->current() : nullptr;
    if (auto* all = plan && plan->isPassing() ? plan->latency().changing(this) : nullptr) {
        for (PlanInsert& insert : *all)
            if (isHeard(insert, comp->host->blocks))
                runInsert(insert.comp, &insert, src, events, frames);
    } else {
        for (auto* insert : inserts)
            runInsert(insert, plan ? plan->latency().insertOf(insert) : nullptr, src, events,
                      frames);
    }
    if (src != this) copyStereo(bufL, bufR, src, frames);
}

void COutputChannel::equalise(int frames) {
    const SongClock& clock = *comp->host->clock;
    const int from = pieceStart(comp);
    EqBand* bands[eqBandCount];
    int count = 0;
    for (CEQ* band : eq) {
        if (clock.begins() && from == 0) {
            band->runs = band->active == 1;
            band->ready();
        }
        if (band->runs) bands[count++] = band;
    }
    if (count > 0) {
        runBands(bands, count, bufL, bufR, frames);
        if (clock.ends(from + frames)) settleBands(bands, count);
    }
    if (StripMeters* to = measured()) to->takeEqualised(bufL, bufR, frames);
}

void COutputChannel::runInsert(CComp* insert, PlanInsert* late, COutputChannel*& src,
                               CMIDIBytes* events, int frames) {
    CInputChannel* in = insert->input();
    COutputChannel* out = insert->output();
    if (!in || !out) return;
    insert->prepare(frames);
    copyStereo(in->bufL, in->bufR, src, frames);
    if (CMIDIQ* port = insert->inPort()) passEvents(events, port, late, frames);
    CInputChannel* const dry = late ? delayedDry(*late, in, frames) : in;
    const float share = fLimit(insert->wet, 0.0f, 1.0f);
    insert->process(frames);
    blendInsert(insert, dry, share, frames);
    if (late && late->fade) followFade(*late, out, dry, frames);
    src = out;
    out->udpatePeaks(frames);
}

void COutputChannel::udpatePeaks(int frames) {
    peakL = highest(bufL, frames, peakL);
    peakR = highest(bufR, frames, peakR);
}

void COutputChannel::peakFadeout() {
    peakL = std::max(peakL - meterFall, 0.0f);
    peakR = std::max(peakR - meterFall, 0.0f);
}

void COutputChannel::copy(COutputChannel* src) {
    for (int i = 0; i < src->numParams(); ++i) setParam(i, src->param(i));
    for (int k = 0; k < eqBandCount; ++k) setEqType(k, src->eq[k]->filterType);
    trim = float(src->trim);
    copyInserts(src);
    const int buses = std::min(comp->host->sends.getCount(), maxSends);
    for (int i = 0; i < buses; ++i) copySend(src, i);
}

void COutputChannel::copySettings(COutputChannel* src) {
    copy(src);
    channels = int(src->channels);
    vol = float(src->vol);
    pan = float(src->pan);
    mute = static_cast<unsigned char>(src->mute);
    solo = static_cast<unsigned char>(src->solo);
    soloSafe = static_cast<unsigned char>(src->soloSafe);
    for (int i = 0; i < maxSends; ++i) copySend(src, i);
}

void COutputChannel::copySend(const COutputChannel* src, int index) {
    sendLevels[index]->level = float(src->sendLevels[index]->level);
    sendLevels[index]->muted = int(src->sendLevels[index]->muted);
}

void COutputChannel::copyInserts(COutputChannel* src) {
    for (auto* insert : src->inserts) {
        CComp* twin = insert->copy();
        if (!twin) continue;
        twin->wet = float(insert->wet);
        twin->enabled = int(insert->enabled);
        twin->listKind = listInsert;
        twin->ownerChannel = this;
        if (bufL) twin->createBuffers(comp->host->frames);
        inserts.add(twin);
    }
}

void COutputChannel::idle() {
    if (eqChanged && eqChanged.exchange(0)) eqChangeTime = asTimeInMS();
    for (auto* insert : inserts) insert->idle();
}

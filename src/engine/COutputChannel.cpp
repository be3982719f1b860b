#include "engine/COutputChannel.h"

#include "base/Numbers.h"
#include "common/Silence.h"
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
#include "engine/plan/InsertRun.h"

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
    InsertRun run(this, events, frames);
    AheadStrips* const begun = comp && comp->planned ? comp->planned->strips.get() : nullptr;
    if (!begun || !begun->take(run)) run.finish();
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
        if (!bandsRest(bands, count) || !isSilent(bufL, bufR, frames))
            runBands(bands, count, bufL, bufR, frames);
        if (clock.ends(from + frames)) settleBands(bands, count);
    }
    if (StripMeters* to = measured()) to->takeEqualised(bufL, bufR, frames);
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

#include "instruments/CSynthProg.h"

#include "common/fx/CDelay.h"
#include "common/fx/CReverb.h"
#include "engine/CQV.h"
#include "engine/SongClock.h"
#include "engine/plan/GraphPlan.h"
#include "instruments/CSampler.h"

#include <algorithm>

namespace {

constexpr float meterFall = 0.05f;

void fall(Shared<float>& peak) {
    peak = std::max(0.0f, float(peak) - meterFall);
}

} // namespace

CSynthProg::CSynthProg(CQV* root, CSampler* sampler) : owner(sampler), host(root) {
    id = "program";
    category = categorySampler;
    type = typeSynthProg;
    const float rate = root->rate;
    auto reverb = std::make_unique<CReverb>(rate, root->frames);
    auto delay = std::make_unique<CDelay>(rate, root->frames);
    if (sampler) delay->setSharedLines(sampler->delayLine(0), sampler->delayLine(1));
    reverb->setEnabled(1);
    fx[0] = std::move(reverb);
    fx[1] = std::move(delay);
    for (auto& f : fx) {
        f->setDry(0.0f);
        f->setWet(1.0f);
    }
}

CSynthProg::~CSynthProg() {
    deleteAll(layers);
}

CReverb* CSynthProg::reverb() const {
    return static_cast<CReverb*>(fx[0].get());
}
CDelay* CSynthProg::delay() const {
    return static_cast<CDelay*>(fx[1].get());
}

void CSynthProg::process(float* left, float* right, int frames, int offset) {
    for (auto& f : fx) {
        if (!f->enabled) continue;
        f->tempo = host->tempoNow;
        f->settles = host->clock->ends((owner ? pieceStart(owner) : 0) + offset + frames);
        f->process(f->bufL, f->bufR, left + offset, right + offset, frames);
    }
}

void CSynthProg::start(unsigned number) {
    chance.seed(number);
    const auto start = [](const std::unique_ptr<CFX>& f) {
        if (f->enabled) f->start();
    };
    std::ranges::for_each(fx, start);
    eachSound([&](CSound* s) {
        s->lastNote = -1.0f;
        std::ranges::for_each(s->fx, start);
    });
}

void CSynthProg::clearSends(int frames) {
    for (auto& f : fx) {
        if (f->bufL) std::fill_n(f->bufL, frames, 0.0f);
        if (f->bufR) std::fill_n(f->bufR, frames, 0.0f);
    }
}

void CSynthProg::idle() {
    eachSound([](CSound* s) {
        fall(s->peakL);
        fall(s->peakR);
    });
}

void CSynthProg::setRate(float hz) {
    for (auto& f : fx) f->setRate(hz);
}

void CSynthProg::setFrames(int frames) {
    for (auto& f : fx) f->setFrames(frames);
}

CLayer* CSynthProg::addLayer() {
    auto* l = new CLayer(this);
    layers.add(l);
    layer = l;
    return l;
}

bool CSynthProg::hasSound(const CSound* wanted) const {
    for (const CLayer* l : layers)
        if (l->sounds.contains(wanted)) return true;
    return false;
}

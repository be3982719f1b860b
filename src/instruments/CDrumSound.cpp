#include "instruments/CDrumSound.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "common/fx/CChorus.h"
#include "common/fx/CPhaser.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"

#include <algorithm>

CDrumSound::CDrumSound(CLayer* owner, CQV* host, CComp* comp)
    : CWavSound(owner, host), output(new COutputChannel(comp)) {
    reserved = 1;
    envelope[0]->envType = 0;
    envelope[1]->envType = 0;
    output->createBuffers(host->frames);
}

CDrumSound::~CDrumSound() = default;

void CDrumSound::setFrames(int frames) {
    output->setFrames(frames);
}

void CDrumSound::setRate(double rate) {
    output->setRate(rate);
    for (auto& insert : fx) insert->setRate(float(rate));
}

CStr CDrumSound::getId() const {
    return changeFileExt(id, "");
}

int CDrumSound::toggleLane() {
    const int before = getHeight();
    setFlag(drumOpen, !opened());
    return getHeight() - before;
}

void CDrumSound::startHit(CVoice* v, CQV* root, float velocity, float panning, float tune) {
    v->host = root;
    v->rate = root->rate;
    v->sound = this;
    v->note = clips[0]->orgKey;
    v->pitch = float(v->note);
    v->velocity = fLimit(velocity, 0.0f, 1.0f);
    v->group = group;
    v->channel = 0;
    v->glideLeft = 0;
    v->tail = 0;
    v->previous = nullptr;
    startVoice(v);
    initVoice(v);
    v->gainMul = v->velocity;
    v->panAdd = fLimit(panning, -1.0f, 1.0f);
    v->sourceRatio *= tune;
    v->state = CVoice::sounding;
}

void CDrumSound::clearStrip(int frames) {
    std::fill_n(output->bufL, frames, 0.0f);
    std::fill_n(output->bufR, frames, 0.0f);
}

void CDrumSound::addStrip(COutputChannel* to, int frames) const {
    addScaled(to->bufL, output->bufL, frames, 1.0f);
    addScaled(to->bufR, output->bufR, frames, 1.0f);
}

int getDrumTop(const CLayer& layer, const CDrumSound* sound) {
    int top = 0;
    for (const CDrumSound* s : drumSounds(layer)) {
        if (s == sound) break;
        top += s->getHeight();
    }
    return top;
}

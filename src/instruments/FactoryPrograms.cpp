#include "instruments/FactoryPrograms.h"

#include "common/fx/CChorus.h"
#include "common/fx/CDelay.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"
#include "engine/CQV.h"
#include "instruments/COSCSound.h"
#include "instruments/CSynthProg.h"
#include "instruments/FactoryTable.h"
#include "instruments/ProgramKnobs.h"

#include <cmath>

using namespace factory;

namespace {

constexpr int modEnvelope = 2; ///< the first that moves what a patch wants moved
constexpr int velFeedSlot = 1, velCutoffSlot = 2, velPhaseModSlot = 3;

/// The setting of an envelope time.
float asSetting(float ms) {
    return float(std::sqrt(double(ms) / 5000.0));
}

void setEnvelope(CEnv& e, const Env& row) {
    e.initial = row.initial;
    e.attack = asSetting(row.attack);
    e.decay = asSetting(row.decay);
    e.sustain = row.sustain;
    e.release = asSetting(row.release);
    e.ac = row.attackCurve;
    e.dc = row.decayCurve;
}

void setOperators(COSCSound& s, const Osc& o) {
    s.feed1 = o.feed;
    s.phaseMod = o.phaseMod;
    s.pmMul = o.times;
    s.coarse2 = o.modCoarse;
    s.feed2 = o.modFeed;
    s.oscRing = o.ring;
    s.modRing = o.modRing;
    s.detune = o.detune;
    s.width = o.width;
    s.phase = o.phase;
    s.phase2 = o.modPhase;
    s.oscInv = o.inverted ? -1.0f : 1.0f;
}

void setLfo(CLFO& l, const Lfo& row) {
    l.setSlot(0, row.target, row.amount);
    l.wave = row.wave;
    l.rate = row.hz;
    l.delay = row.delay;
    l.restart = row.restart;
    l.sync = row.beatDiv > 0;
    if (row.beatDiv > 0) l.div = row.beatDiv;
}

void setInserts(CSound& s, const Patch& p) {
    if (p.chorus.wet > 0.0f) {
        CChorus& c = *s.chorus();
        c.setWet(p.chorus.wet);
        c.setDry(p.chorus.dry);
        c.setDelay(p.chorus.delay);
        c.setDepth(p.chorus.depth);
        c.setFrequency(p.chorus.hz);
        c.setEnabled(1);
    }
    if (p.phaser.wet > 0.0f) {
        CPhaser& f = *s.phaser();
        f.setWet(p.phaser.wet);
        f.setFrequency(p.phaser.hz);
        f.setFeedback(p.phaser.feedback);
        f.setRangeMin(p.phaser.low);
        f.setRangeMax(p.phaser.high);
        f.setPhase(p.phaser.phase);
        f.setEnabled(1);
    }
}

void setModEnvelope(CEnv& e, const ModEnv& row) {
    if (row.target == targetNone) return;
    setEnvelope(e, row.env);
    e.setSlot(0, row.target, row.amount);
}

void setVelocity(CVel& v, const Patch& p) {
    v.params[0].amount = p.velVolume;
    v.params[velCutoffSlot].amount = p.velCutoff;
    if (p.velPhaseMod > 0.0f) v.setSlot(velPhaseModSlot, targetPhaseMod, p.velPhaseMod);
    if (p.velFeed > 0.0f) v.setSlot(velFeedSlot, targetFeed1, p.velFeed);
}

void setZone(CSound& s, const Patch& p) {
    s.lowKey = p.lowKey;
    s.hiKey = p.hiKey;
    s.lowVel = p.lowVel;
    s.hiVel = p.hiVel;
    s.group = static_cast<unsigned char>(p.group);
    s.bendRange = p.bend;
}

void setPatch(COSCSound& s, const Patch& p) {
    s.id = p.name;
    setOperators(s, p.osc);
    s.pan = p.pan;
    s.coarse = p.coarse;
    s.fine = p.fine;
    s.filter = p.filter;
    s.cutoff = p.cutoff;
    s.q = p.q;
    s.dist = p.dist ? 1 : 0;
    s.mode = p.mono ? soundMono : soundPoly;
    s.glide = p.glide;
    setEnvelope(*s.envelope[0], p.amp);
    setEnvelope(*s.envelope[1], p.filterEnv);
    setModEnvelope(*s.envelope[modEnvelope], p.mod);
    setModEnvelope(*s.envelope[modEnvelope + 1], p.mod2);
    for (int i = 0; i < lfoCount; i++)
        if (p.lfos[i].target != targetNone) setLfo(*s.lfo[i], p.lfos[i]);
    setVelocity(*s.vel, p);
    setZone(s, p);
    s.sends[0] = p.reverb;
    s.sends[1] = p.delay;
    setInserts(s, p);
}

void setEcho(CDelay& d, const Echo& e) {
    if (e.feedback <= 0.0f) return;
    d.setFeedback(e.feedback);
    d.setTicksLeft(e.mulLeft, e.divLeft);
    d.setTicksRight(e.mulRight, e.divRight);
    d.setEnabled(1);
}

} // namespace

const char* factoryName(int index) {
    return programs[index].name;
}

const char* factoryFamily(int index) {
    return programs[index].family;
}

const char* factoryWords(int index) {
    return programs[index].words;
}

CSynthProg* buildFactoryProg(CQV* host, CSampler* sampler, int index) {
    return buildProgram(host, sampler, programs[index]);
}

CSynthProg* factory::buildProgram(CQV* host, CSampler* sampler, const Program& row) {
    auto* prog = new CSynthProg(host, sampler);
    prog->id = row.name;
    prog->family = row.family;
    prog->words = row.words;
    CLayer* layer = prog->addLayer();
    for (const Patch& patch : row.patches) {
        auto* sound = new COSCSound(layer, host);
        setPatch(*sound, patch);
        mapControllers(*sound);
        sound->setVolume(patch.volume * row.level);
        layer->addSound(sound);
    }
    layer->sound = layer->sounds.getFirst();
    nameMacros(*prog);
    prog->reverb()->setSize(row.reverbMs);
    setEcho(*prog->delay(), row.echo);
    return prog;
}

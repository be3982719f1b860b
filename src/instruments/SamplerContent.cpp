#include "instruments/SamplerContent.h"

#include "base/BlockView.h"
#include "base/CStream.h"
#include "base/LoadBudget.h"
#include "base/Numbers.h"
#include "common/fx/CChorus.h"
#include "common/fx/CDelay.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"
#include "engine/CQV.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/CWavSound.h"

#include <cmath>
#include <cstdlib>
#include <memory>

namespace {

constexpr int slowestClip = 100, fastestClip = 768000; ///< Hz
constexpr float mostSemitones = 48.0f;
constexpr int progRoom = 20 << 10, layerRoom = 1 << 10, soundRoom = 4 << 10; ///< about
constexpr int clipRoom = 1 << 10;                                            ///< without its frames

// A value that is not there leaves the field as it is, one that is not finite too.

void readFloat(CStream& s, Stored<float>& field, float low, float high) {
    if (s.left() < int64_t(sizeof(float))) return;
    const float v = s.readFloat();
    if (std::isfinite(v)) field = fLimit(v, low, high);
}

template <class T>
void readInt(CStream& s, Stored<T>& field, int low, int high) {
    if (s.left() >= int64_t(sizeof(int))) field = T(asMinMax(s.readInt(), low, high));
}

template <class T>
void readByte(CStream& s, Stored<T>& field, int low, int high) {
    if (s.left() >= 1) field = T(asMinMax(s.readByte(), low, high));
}

/// A byte that stands for one of a list: another one leaves the field.
void readChoice(CStream& s, Stored<int>& field, int last) {
    if (s.left() < 1) return;
    const int v = s.readByte();
    if (v <= last) field = v;
}

void skip(CStream& s, int bytes) {
    for (int i = 0; i < bytes; i++) s.readByte();
}

void readSlots(CStream& s, CMod& mod) {
    for (CMod::Param& p : mod.params) {
        readByte(s, p.enabled, 0, 1);
        readFloat(s, p.amount, -mostSemitones, mostSemitones);
        readInt(s, p.index, 0, targetCount);
        if (p.index != targetPitch) p.amount = fLimit(p.amount, -1.0f, 1.0f);
    }
}

void readEnvelope(CStream& s, CEnv& e) {
    readByte(s, e.envType, 0, 1);
    skip(s, 3);
    readFloat(s, e.initial, 0.0f, 1.0f);
    readFloat(s, e.attack, 0.0f, 1.0f);
    readFloat(s, e.ac, -1.0f, 1.0f);
    readFloat(s, e.decay, 0.0f, 1.0f);
    readFloat(s, e.dc, -1.0f, 1.0f);
    readFloat(s, e.sustain, 0.0f, 1.0f);
    readFloat(s, e.release, 0.0f, 1.0f);
    readFloat(s, e.rc, -1.0f, 1.0f);
    skip(s, 2 * int(sizeof(int)));
    readInt(s, e.maxTime, 1, 60000);
}

void readLfo(CStream& s, CLFO& l) {
    readChoice(s, l.wave, lfoRandom);
    readFloat(s, l.rate, 0.01f, 50.0f);
    readByte(s, l.sync, 0, 1);
    readByte(s, l.mul, 1, 64);
    readByte(s, l.div, 1, 64);
    readInt(s, l.delay, 0, 5000);
    readByte(s, l.inv, 0, 1);
    readChoice(s, l.restart, restartMono);
    skip(s, 2);
    readSlots(s, l);
}

void readMods(CStream& s, CSound& sound) {
    readSlots(s, *sound.vel);
    for (int i = 0; i < 2; i++) readEnvelope(s, *sound.envelope[i]);
    for (auto& l : sound.lfo) readLfo(s, *l);
    for (int i = 2; i < envelopeCount; i++) {
        readEnvelope(s, *sound.envelope[i]);
        readSlots(s, *sound.envelope[i]);
    }
    readSlots(s, *sound.cp);
    for (auto& target : sound.ccMap) readByte(s, target, 0, 255);
}

/// A float for a setter that clamps and leaves out what is not a number.
template <class Fx>
void readSetting(CStream& s, Fx& fx, void (Fx::*set)(ToStore<float>)) {
    if (s.left() >= int64_t(sizeof(float))) (fx.*set)(s.readFloat());
}

template <class Fx>
void readSetting(CStream& s, Fx& fx, void (Fx::*set)(ToStore<int>)) {
    if (s.left() >= int64_t(sizeof(int))) (fx.*set)(s.readInt());
}

void readFxHead(CStream& s, CFX& fx) {
    if (s.left() >= 1) fx.setEnabled(s.readByte() != 0);
    readFloat(s, fx.dry, 0.0f, 1.0f);
    readFloat(s, fx.wet, 0.0f, 1.0f);
}

void readInserts(CStream& s, CSound& sound) {
    CPhaser& p = *sound.phaser();
    readFxHead(s, p);
    readSetting(s, p, &CPhaser::setFrequency);
    readSetting(s, p, &CPhaser::setFeedback);
    readSetting(s, p, &CPhaser::setPhase);
    readSetting(s, p, &CPhaser::setRangeMin);
    readSetting(s, p, &CPhaser::setRangeMax);
    skip(s, 4 * int(sizeof(int)));
    CChorus& c = *sound.chorus();
    readFxHead(s, c);
    readSetting(s, c, &CChorus::setDelay);
    readSetting(s, c, &CChorus::setDepth);
    readSetting(s, c, &CChorus::setPhase);
    readSetting(s, c, &CChorus::setFeedback);
    readSetting(s, c, &CChorus::setFrequency);
}

void readSendEffects(CStream& s, CSynthProg& prog) {
    CReverb& r = *prog.reverb();
    readFxHead(s, r);
    readSetting(s, r, &CReverb::setPreDelay);
    if (s.left() >= int64_t(sizeof(float))) r.setRevTimeOld(asInt(double(s.readFloat())));
    skip(s, 8 * int(sizeof(int)));
    CDelay& d = *prog.delay();
    readFxHead(s, d);
    readSetting(s, d, &CDelay::setFeedback);
    readSetting(s, d, &CDelay::setSync);
    readInt(s, d.mulLeft, 1, 32);
    readInt(s, d.divLeft, 1, 32);
    readInt(s, d.mulRight, 1, 32);
    readInt(s, d.divRight, 1, 32);
    readSetting(s, d, &CDelay::setTimeLeft);
    readSetting(s, d, &CDelay::setTimeRight);
}

void readTags(CStream& s, CSynthProg& prog) {
    prog.family = s.readStr();
    prog.words = s.readStr();
}

void readMacros(CStream& s, CSynthProg& prog) {
    for (ProgMacro& m : prog.macros) {
        if (s.left() < int64_t(sizeof(int))) return;
        m.controller = asMinMax(s.readInt(), -1, CSampler::controllers - 1);
        m.name = s.readStr();
    }
}

void readMacroRanges(CStream& s, CSynthProg& prog) {
    for (ProgMacro& m : prog.macros) {
        if (s.left() < 2 * int64_t(sizeof(float))) return;
        const float low = s.readFloat(), high = s.readFloat();
        if (!(low >= 0.0f && low < high && high <= 1.0f)) continue;
        m.low = low;
        m.high = high;
    }
}

void readStrip(CStream& s, CSound& sound) {
    readByte(s, sound.mode, soundPoly, soundMono);
    readByte(s, sound.group, 0, 255);
    skip(s, 2);
    readFloat(s, sound.volume, 0.0f, 1.0f);
    readFloat(s, sound.pan, -1.0f, 1.0f);
    readInt(s, sound.filter, filterLow, filterHigh);
    readFloat(s, sound.cutoff, 0.0f, 1.0f);
    readFloat(s, sound.q, 0.0f, 1.0f);
    readInt(s, sound.dist, 0, 1);
    skip(s, 2 * int(sizeof(int)));
    readFloat(s, sound.coarse, -mostSemitones, mostSemitones);
    readFloat(s, sound.fine, -1.0f, 1.0f);
    readInt(s, sound.glide, 0, 500);
    readInt(s, sound.bendRange, 0, 48);
    skip(s, 14 * int(sizeof(int)));
    readFloat(s, sound.sends[0], 0.0f, 1.0f);
    readFloat(s, sound.sends[1], 0.0f, 1.0f);
    skip(s, int(sizeof(int)));
    readByte(s, sound.mute, 0, 1);
    sound.reserved = (unsigned char)s.readByte();
    readByte(s, sound.solo, 0, 1);
    skip(s, 1);
    for (Stored<int>* bound : {&sound.lowKey, &sound.hiKey, &sound.lowVel, &sound.hiVel})
        readByte(s, *bound, 0, 127);
}

void readOperators(CStream& s, COSCSound& o) {
    readFloat(s, o.feed1, 0.0f, 1.0f);
    readFloat(s, o.detune, 0.0f, 1.0f);
    readFloat(s, o.phase, 0.0f, 1.0f);
    readFloat(s, o.width, 0.0f, 1.0f);
    readFloat(s, o.feed2, 0.0f, 1.0f);
    readFloat(s, o.phaseMod, 0.0f, 1.0f);
    readFloat(s, o.coarse2, -mostSemitones, mostSemitones);
    readFloat(s, o.phase2, 0.0f, 1.0f);
    readInt(s, o.pmMul, 1, COSCSound::maxPmMul);
    o.oscInv = s.readInt() == -1 ? -1.0f : 1.0f;
    readFloat(s, o.oscRing, 0.0f, 1.0f);
    readFloat(s, o.modRing, 0.0f, 1.0f);
}

} // namespace

SamplerContent::~SamplerContent() {
    deleteAll<CSynthProg>(progs);
    deleteAll(clips);
}

void SamplerContent::read(CStream* stream, int64_t end) {
    BlockView view(stream, std::min(end, stream->getSize()));
    CStr name;
    int size = 0;
    while (!ended && view.left() > 0) {
        cutOff = !readBlockHead(view, name, size);
        if (cutOff) return;
        const int64_t next = view.getPos() + size;
        BlockView body(stream, next);
        if (!readBlock(name, body) && !full && badBlock.empty()) {
            badBlock = name;
            badSize = size;
        }
        stream->seek(next, seekStart);
    }
}

bool SamplerContent::readBlock(const CStr& name, CStream& body) {
    if (name == "smp") return readClip(body);
    if (name == "prog") return openProg();
    if (name == "sound") return readSound(body);
    if (name == "layer") {
        if (!prog && !openProg()) return false;
        layer = nullptr;
        openLayer();
    } else if (name == "soundmod") {
        if (sound) readMods(body, *sound);
    } else if (name == "soundfx") {
        if (sound) readInserts(body, *sound);
    } else {
        readHeadBlock(name, body);
    }
    return true;
}

void SamplerContent::readHeadBlock(const CStr& name, CStream& body) {
    if (name == "mch") mch = asMinMax(body.readInt(), -1, 15);
    if (name == "progi") progIndex = body.readInt();
    if (name == "options") body.read(options, sampleOptionBytes);
    if (!prog) return;
    if (name == "progid") prog->id = body.readStr();
    if (name == "laex" && layer) readByte(body, layer->editAll, 0, 1);
    if (name == "progfx") readSendEffects(body, *prog);
    if (name == "reverbSize") readSetting(body, *prog->reverb(), &CReverb::setSize);
    if (name == "progwords") readTags(body, *prog);
    if (name == "progmacros") readMacros(body, *prog);
    if (name == "macrorange") readMacroRanges(body, *prog);
    if (name == "layeri") {
        auto* wanted = prog->layers.items(body.readInt());
        if (wanted) prog->layer = wanted;
    }
}

bool SamplerContent::hasRoom(const char* kind, int bytes) {
    const bool room = LoadBudget::take(kind, bytes);
    full = full || !room;
    return room;
}

bool SamplerContent::openProg() {
    prog = nullptr;
    layer = nullptr;
    sound = nullptr;
    if (progs.getCount() >= mostProgs || !hasRoom("programs", progRoom)) return false;
    prog = new CSynthProg(host, owner);
    progs.add(prog);
    return true;
}

void SamplerContent::openLayer() {
    if (!layer && hasRoom("layers", layerRoom)) layer = prog->addLayer();
}

bool SamplerContent::readClip(CStream& body) {
    clipByIndex.push_back(nullptr);
    skip(body, 2 * int(sizeof(int)));
    if (!hasRoom("samples", clipRoom)) return false;
    auto clip = std::make_unique<CSampleClip>();
    clip->filename = body.readStr();
    const int frames = body.readInt(), bits = body.readInt(), chs = body.readInt();
    const int rate = body.readInt();
    const int start = body.readInt(), end = body.readInt();
    skip(body, 6 * int(sizeof(int)));
    if (frames < 0 || (bits != 16 && bits != 24 && bits != 32) || chs < 1 || chs > 2) return false;
    clip->setFormat(asMinMax(rate, slowestClip, fastestClip), bits, chs);
    const int64_t bytes = int64_t(frames) * clip->frameBytes;
    if (bytes > body.left()) return false;
    auto* data = static_cast<unsigned char*>(std::malloc(size_t(std::max<int64_t>(bytes, 1))));
    if (!data) return false;
    body.read(data, int(bytes));
    clip->takeData(data, frames);
    clip->setRange(start, end);
    clip->peakfile();
    clipByIndex.back() = clip.get();
    clips.add(clip.release());
    return true;
}

bool SamplerContent::readSound(CStream& body) {
    constexpr int shortest = 132; ///< bytes of a sound without name and generator
    sound = nullptr;
    if (body.left() < shortest || soundCount >= mostSounds) return false;
    std::unique_ptr<CSound> made = newSound(body.readByte());
    if (!made) return false;
    const CStr name = body.readStr();
    readStrip(body, *made);
    if (made->type == typeOscSound)
        readOperators(body, static_cast<COSCSound&>(*made));
    else if (!readClipRefs(body, made.get()))
        return false;
    made->id = name;
    sound = made.release();
    keepSound(sound);
    soundCount++;
    return true;
}

std::unique_ptr<CSound> SamplerContent::newSound(int kind) {
    if (!prog && !openProg()) return nullptr;
    openLayer();
    if (!layer || !hasRoom("sounds", soundRoom)) return nullptr;
    if (kind == typeWavSound) return std::make_unique<CWavSound>(layer, host);
    if (kind == typeOscSound) return std::make_unique<COSCSound>(layer, host);
    return nullptr;
}

void SamplerContent::keepSound(CSound* made) {
    layer->addSound(made);
}

bool SamplerContent::readClipRefs(CStream& body, CSound* into) {
    auto* wav = static_cast<CWavSound*>(into);
    skip(body, 1);
    const int count = body.readByte();
    for (int i = 0; i < count && body.left() > 0; i++) {
        const int index = body.readInt();
        const int key = body.readByte();
        skip(body, 2);
        const int loop = body.readByte();
        const int loopStart = body.readInt();
        skip(body, int(sizeof(int)));
        if (index < 0 || index >= int(clipByIndex.size()) || !clipByIndex[size_t(index)]) continue;
        CSampleClip* clip = clipByIndex[size_t(index)];
        clip->setOrgKey(key);
        clip->setLoop(loop);
        clip->setLoopStart(loopStart);
        wav->addSample(clip);
    }
    return wav->clipCount > 0;
}

#include "instruments/SamplerFiles.h"

#include "base/OpenBlock.h"
#include "common/fx/CChorus.h"
#include "common/fx/CDelay.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSynthProg.h"
#include "instruments/CWavSound.h"

#include <algorithm>

namespace {

void writeZeroBytes(CStream* s, int bytes) {
    for (int i = 0; i < bytes; i++) s->writeByte(0);
}

void writeSlots(CStream* s, const CMod& mod) {
    for (const CMod::Param& p : mod.params) {
        s->writeByte(p.enabled);
        s->writeFloat(p.amount);
        s->writeInt(p.index);
    }
}

void writeEnvelope(CStream* s, const CEnv& e) {
    s->writeByte((unsigned char)int(e.envType));
    writeZeroBytes(s, 3);
    for (float v : {float(e.initial), float(e.attack), float(e.ac), float(e.decay), float(e.dc),
                    float(e.sustain), float(e.release), float(e.rc)})
        s->writeFloat(v);
    writeZeros(s, 2);
    s->writeInt(e.maxTime);
}

void writeLfo(CStream* s, const CLFO& l) {
    s->writeByte((unsigned char)int(l.wave));
    s->writeFloat(l.rate);
    s->writeByte((unsigned char)int(l.sync));
    s->writeByte((unsigned char)int(l.mul));
    s->writeByte((unsigned char)int(l.div));
    s->writeInt(l.delay);
    s->writeByte((unsigned char)int(l.inv));
    s->writeByte((unsigned char)int(l.restart));
    writeZeroBytes(s, 2);
    writeSlots(s, l);
}

void writeClipRefs(CStream* s, const CWavSound& wav, const CList& clips) {
    s->writeByte(0);
    s->writeByte((unsigned char)wav.clipCount);
    for (int i = 0; i < wav.clipCount; i++) {
        const CSampleClip& clip = *wav.clips[i];
        s->writeInt(clips.indexed(&clip));
        s->writeByte(clip.orgKey);
        s->writeByte(0);
        s->writeByte(127);
        s->writeByte((unsigned char)int(clip.loop));
        s->writeInt(clip.loopStart);
        s->writeInt(0);
    }
}

void writeOperators(CStream* s, const COSCSound& o) {
    for (float v : {float(o.feed1), float(o.detune), float(o.phase), float(o.width), float(o.feed2),
                    float(o.phaseMod), float(o.coarse2), float(o.phase2)})
        s->writeFloat(v);
    s->writeInt(o.pmMul);
    s->writeInt(int(float(o.oscInv)));
    s->writeFloat(o.oscRing);
    s->writeFloat(o.modRing);
}

void writeMods(CStream* s, const CSound& sound) {
    OpenBlock block(s, "soundmod");
    writeSlots(s, *sound.vel);
    for (int i = 0; i < 2; i++) writeEnvelope(s, *sound.envelope[i]);
    for (const auto& l : sound.lfo) writeLfo(s, *l);
    for (int i = 2; i < envelopeCount; i++) {
        writeEnvelope(s, *sound.envelope[i]);
        writeSlots(s, *sound.envelope[i]);
    }
    writeSlots(s, *sound.cp);
    for (const auto& target : sound.ccMap) s->writeByte((unsigned char)int(target));
}

void writeInserts(CStream* s, const CSound& sound) {
    OpenBlock block(s, "soundfx");
    const CPhaser& p = *sound.phaser();
    s->writeByte((unsigned char)int(p.enabled));
    for (float v : {float(p.dry), float(p.wet), float(p.frequency), float(p.feedback),
                    float(p.phase), float(p.rangeMin), float(p.rangeMax)})
        s->writeFloat(v);
    writeZeros(s, 4);
    const CChorus& c = *sound.chorus();
    s->writeByte((unsigned char)int(c.enabled));
    for (float v : {float(c.dry), float(c.wet), float(c.delay), float(c.depth), float(c.phase),
                    float(c.feedback), float(c.frequency)})
        s->writeFloat(v);
    writeZeros(s, 3);
}

void writeSendEffects(CStream* s, const CSynthProg& prog) {
    OpenBlock block(s, "progfx");
    const CReverb& r = *prog.reverb();
    s->writeByte((unsigned char)int(r.enabled));
    s->writeFloat(r.dry);
    s->writeFloat(r.wet);
    s->writeInt(r.getPreDelay());
    s->writeFloat(float(r.getRevTime()));
    writeZeros(s, 8);
    const CDelay& d = *prog.delay();
    s->writeByte((unsigned char)int(d.enabled));
    s->writeFloat(d.dry);
    s->writeFloat(d.wet);
    s->writeFloat(d.feedback);
    for (int v : {int(d.sync), int(d.mulLeft), int(d.divLeft), int(d.mulRight), int(d.divRight)})
        s->writeInt(v);
    s->writeFloat(d.timeLeft);
    s->writeFloat(d.timeRight);
    writeZeros(s, 4);
}

/// What this program's own readers know: only where something was told.
void writeTags(CStream* s, const CSynthProg& prog) {
    if (!prog.family.empty() || !prog.words.empty()) {
        OpenBlock block(s, "progwords");
        s->writeStr(prog.family);
        s->writeStr(prog.words);
    }
    const auto used = [](const ProgMacro& m) { return m.controller >= 0; };
    if (std::none_of(std::begin(prog.macros), std::end(prog.macros), used)) return;
    {
        OpenBlock block(s, "progmacros");
        for (const ProgMacro& m : prog.macros) {
            s->writeInt(m.controller);
            s->writeStr(m.name);
        }
    }
    const auto limited = [](const ProgMacro& m) { return m.low != 0.0f || m.high != 1.0f; };
    if (std::none_of(std::begin(prog.macros), std::end(prog.macros), limited)) return;
    OpenBlock block(s, "macrorange");
    for (const ProgMacro& m : prog.macros) {
        s->writeFloat(m.low);
        s->writeFloat(m.high);
    }
}

} // namespace

void writeFiletype(CStream* stream) {
    writeIntBlock(stream, "filetype", filetypeSampler);
}

void writeClip(CStream* s, const CSampleClip* clip) {
    OpenBlock block(s, "smp");
    const int frames = clip->data ? int(clip->frames) : 0;
    writeZeros(s, 2);
    s->writeStr(clip->filename);
    for (int v : {frames, clip->bits, clip->chs, int(clip->rate), int(clip->start), int(clip->end)})
        s->writeInt(v);
    writeZeros(s, 6);
    if (frames > 0) s->write(clip->data, frames * clip->frameBytes);
}

void writeSoundBlock(CStream* s, const CSound& sound, const CList& clips) {
    OpenBlock block(s, "sound");
    s->writeByte((unsigned char)sound.type);
    s->writeStr(sound.id);
    s->writeByte(sound.mode);
    s->writeByte(sound.group);
    writeZeroBytes(s, 2);
    s->writeFloat(sound.volume);
    s->writeFloat(sound.pan);
    s->writeInt(sound.filter);
    s->writeFloat(sound.cutoff);
    s->writeFloat(sound.q);
    s->writeInt(sound.dist);
    s->writeFloat(0.0f);
    s->writeInt(0);
    s->writeFloat(sound.coarse);
    s->writeFloat(sound.fine);
    s->writeInt(sound.glide);
    s->writeInt(sound.bendRange);
    writeZeros(s, 14);
    s->writeFloat(sound.sends[0]);
    s->writeFloat(sound.sends[1]);
    s->writeInt(0);
    for (unsigned char b : {(unsigned char)sound.mute, sound.reserved, (unsigned char)sound.solo})
        s->writeByte(b);
    s->writeByte(0);
    for (int bound : {int(sound.lowKey), int(sound.hiKey), int(sound.lowVel), int(sound.hiVel)})
        s->writeByte((unsigned char)bound);
    if (sound.type == typeWavSound)
        writeClipRefs(s, static_cast<const CWavSound&>(sound), clips);
    else
        writeOperators(s, static_cast<const COSCSound&>(sound));
}

void writeDrum(CStream* stream, const CSound& sound, const CList& clips) {
    writeSoundBlock(stream, sound, clips);
    writeMods(stream, sound);
}

void writeSound(CStream* stream, CSound* sound, const CList& clips) {
    writeDrum(stream, *sound, clips);
    writeInserts(stream, *sound);
}

void writeProgram(CStream* s, CSynthProg* prog, const CList& clips) {
    s->writeId("prog", 0);
    s->writeId("progid", prog->id.length() + int(sizeof(int)));
    s->writeStr(prog->id);
    for (CLayer* layer : prog->layers) {
        s->writeId("layer", 0);
        s->writeId("laex", 32);
        s->writeByte(layer->editAll);
        writeZeroBytes(s, 3);
        writeZeros(s, 7);
        for (CSound* sound : layer->sounds) writeSound(s, sound, clips);
    }
    writeSendEffects(s, *prog);
    writeIntBlock(s, "reverbSize", prog->reverb()->getRevTime());
    writeIntBlock(s, "layeri", prog->layers.indexed(prog->layer.load()));
    writeTags(s, *prog);
}

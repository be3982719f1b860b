#include "effects/RackFiles.h"

#include "base/BlockView.h"
#include "base/LoadBudget.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CGate.h"
#include "common/fx/CGuitarAmp.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"
#include "effects/CEffect.h"

namespace {

constexpr int effectBytes = 80; ///< of a block "fx"
/// About what a program takes, and the largest effect.
constexpr int progRoom = 512, effectRoom = 12 << 10, ampRoom = 48 << 10;
constexpr int progSpare = 8, drive2Spare = 16; ///< words of 0 behind a program's name and a drive

/// Puts the settings of an effect into a stream, in the order in which they are told to it.
struct SettingWriter {
    CStream& stream;

    template <class Fx>
    void setting(Fx& fx, float (Fx::*get)() const, void (Fx::*)(ToStore<float>)) {
        stream.writeFloat((fx.*get)());
    }
    template <class Fx>
    void setting(Fx& fx, int (Fx::*get)() const, void (Fx::*)(ToStore<int>)) {
        stream.writeInt((fx.*get)());
    }
    void ticks(CDelay& fx, void (CDelay::*get)(int&, int&) const,
               void (CDelay::*)(ToStore<int>, ToStore<int>)) {
        int mul = 1, div = 1;
        (fx.*get)(mul, div);
        stream.writeInt(mul);
        stream.writeInt(div);
    }
    void reverbTime(CReverb& fx) { stream.writeFloat(float(fx.getRevTime())); }
};

/// Takes them out again, as far as they are there.
struct SettingReader {
    CStream& stream;

    bool has(size_t bytes) const { return stream.left() >= int64_t(bytes); }

    template <class Fx>
    void setting(Fx& fx, float (Fx::*)() const, void (Fx::*set)(ToStore<float>)) {
        if (has(sizeof(float))) (fx.*set)(stream.readFloat());
    }
    template <class Fx>
    void setting(Fx& fx, int (Fx::*)() const, void (Fx::*set)(ToStore<int>)) {
        if (has(sizeof(int))) (fx.*set)(stream.readInt());
    }
    void ticks(CDelay& fx, void (CDelay::*)(int&, int&) const,
               void (CDelay::*set)(ToStore<int>, ToStore<int>)) {
        if (!has(2 * sizeof(int))) return;
        const int mul = stream.readInt();
        (fx.*set)(mul, stream.readInt());
    }
    void reverbTime(CReverb& fx) {
        const float ms = has(sizeof(float)) ? stream.readFloat() : NAN;
        if (std::isfinite(ms)) fx.setRevTimeOld(asInt(double(ms)));
    }
};

template <class Pass>
void settings(Pass&& p, CDelay& fx) {
    p.setting(fx, &CDelay::getFeedback, &CDelay::setFeedback);
    p.setting(fx, &CDelay::getSync, &CDelay::setSync);
    p.ticks(fx, &CDelay::getTicksLeft, &CDelay::setTicksLeft);
    p.ticks(fx, &CDelay::getTicksRight, &CDelay::setTicksRight);
    p.setting(fx, &CDelay::getTimeLeft, &CDelay::setTimeLeft);
    p.setting(fx, &CDelay::getTimeRight, &CDelay::setTimeRight);
    p.setting(fx, &CDelay::getCross, &CDelay::setCross);
}

template <class Pass>
void settings(Pass&& p, CReverb& fx) {
    p.setting(fx, &CReverb::getPreDelay, &CReverb::setPreDelay);
    p.reverbTime(fx);
}

template <class Pass>
void settings(Pass&& p, CChorus& fx) {
    p.setting(fx, &CChorus::getDelay, &CChorus::setDelay);
    p.setting(fx, &CChorus::getDepth, &CChorus::setDepth);
    p.setting(fx, &CChorus::getPhase, &CChorus::setPhase);
    p.setting(fx, &CChorus::getFeedback, &CChorus::setFeedback);
    p.setting(fx, &CChorus::getFrequency, &CChorus::setFrequency);
}

template <class Pass>
void settings(Pass&& p, CPhaser& fx) {
    p.setting(fx, &CPhaser::getFrequency, &CPhaser::setFrequency);
    p.setting(fx, &CPhaser::getFeedback, &CPhaser::setFeedback);
    p.setting(fx, &CPhaser::getPhase, &CPhaser::setPhase);
    p.setting(fx, &CPhaser::getRangeMin, &CPhaser::setRangeMin);
    p.setting(fx, &CPhaser::getRangeMax, &CPhaser::setRangeMax);
}

template <class Pass>
void settings(Pass&& p, CBitcrusher& fx) {
    p.setting(fx, &CBitcrusher::getBits, &CBitcrusher::setBits);
    p.setting(fx, &CBitcrusher::getDegrade, &CBitcrusher::setDegrade);
}

template <class Pass>
void settings(Pass&& p, CFilterFX& fx) {
    p.setting(fx, &CFilterFX::getFilterMode, &CFilterFX::setFilterMode);
    p.setting(fx, &CFilterFX::getCutoff, &CFilterFX::setCutoff);
    p.setting(fx, &CFilterFX::getResonance, &CFilterFX::setResonance);
}

template <class Pass>
void settings(Pass&& p, CCompressor& fx) {
    p.setting(fx, &CCompressor::getThreshold, &CCompressor::setThreshold);
    p.setting(fx, &CCompressor::getRatio, &CCompressor::setRatio);
    p.setting(fx, &CCompressor::getAttack, &CCompressor::setAttack);
    p.setting(fx, &CCompressor::getRelease, &CCompressor::setRelease);
    p.setting(fx, &CCompressor::getGain, &CCompressor::setGain);
}

template <class Pass>
void settings(Pass&& p, CGate& fx) {
    p.setting(fx, &CGate::getThreshold, &CGate::setThreshold);
    p.setting(fx, &CGate::getAttack, &CGate::setAttack);
    p.setting(fx, &CGate::getHold, &CGate::setHold);
    p.setting(fx, &CGate::getRelease, &CGate::setRelease);
    p.setting(fx, &CGate::getRange, &CGate::setRange);
}

/// All but the second channel's drive, for which there was no room.
template <class Pass>
void settings(Pass&& p, CGuitarAmp& fx) {
    p.setting(fx, &CGuitarAmp::getChannel, &CGuitarAmp::setChannel);
    p.setting(fx, &CGuitarAmp::getBass, &CGuitarAmp::setBass);
    p.setting(fx, &CGuitarAmp::getMid, &CGuitarAmp::setMid);
    p.setting(fx, &CGuitarAmp::getTreble, &CGuitarAmp::setTreble);
    p.setting(fx, &CGuitarAmp::getVolume, &CGuitarAmp::setVolume);
    p.setting(fx, &CGuitarAmp::getBass2, &CGuitarAmp::setBass2);
    p.setting(fx, &CGuitarAmp::getTreble2, &CGuitarAmp::setTreble2);
    p.setting(fx, &CGuitarAmp::getTopCut2, &CGuitarAmp::setTopCut2);
    p.setting(fx, &CGuitarAmp::getVolume2, &CGuitarAmp::setVolume2);
    p.setting(fx, &CGuitarAmp::getDrive3, &CGuitarAmp::setDrive3);
    p.setting(fx, &CGuitarAmp::getBass3, &CGuitarAmp::setBass3);
    p.setting(fx, &CGuitarAmp::getMid3, &CGuitarAmp::setMid3);
    p.setting(fx, &CGuitarAmp::getTreble3, &CGuitarAmp::setTreble3);
    p.setting(fx, &CGuitarAmp::getPresence3, &CGuitarAmp::setPresence3);
    p.setting(fx, &CGuitarAmp::getVolume3, &CGuitarAmp::setVolume3);
    p.setting(fx, &CGuitarAmp::getThreshold, &CGuitarAmp::setThreshold);
}

/// Nothing for a kind that this program does not know.
template <class Pass>
void settingsByKind(Pass&& p, CFX& fx) {
    switch (fx.type) {
    case fxDelay:
        return settings(p, static_cast<CDelay&>(fx));
    case fxReverb:
        return settings(p, static_cast<CReverb&>(fx));
    case fxChorus:
        return settings(p, static_cast<CChorus&>(fx));
    case fxPhaser:
        return settings(p, static_cast<CPhaser&>(fx));
    case fxBitcrusher:
        return settings(p, static_cast<CBitcrusher&>(fx));
    case fxFilter:
        return settings(p, static_cast<CFilterFX&>(fx));
    case fxCompressor:
        return settings(p, static_cast<CCompressor&>(fx));
    case fxGuitarAmp:
        return settings(p, static_cast<CGuitarAmp&>(fx));
    case fxGate:
        return settings(p, static_cast<CGate&>(fx));
    default:
        return;
    }
}

void writeEffect(CStream* s, CFX& fx) {
    s->writeId("fx", effectBytes);
    const int64_t end = s->getPos() + effectBytes;
    s->writeInt(fx.type);
    s->writeInt(fx.enabled);
    s->writeFloat(fx.dry);
    s->writeFloat(fx.wet);
    settingsByKind(SettingWriter{*s}, fx);
    while (s->getPos() < end) s->writeByte(0);
    if (fx.type == fxReverb) {
        writeIntBlock(s, "reverbSize", static_cast<CReverb&>(fx).getRevTime());
    }
    if (fx.type == fxGuitarAmp) {
        s->writeId("ampDrive2", sizeof(float));
        s->writeFloat(static_cast<CGuitarAmp&>(fx).getDrive2());
        writeZeros(s, drive2Spare); // read as eight blocks without a name
    }
}

void readGain(CStream& s, Shared<float>& gain) {
    if (s.left() < int64_t(sizeof(float))) return;
    const float v = s.readFloat();
    if (std::isfinite(v)) gain = fLimit(v, 0.0f, 1.0f);
}

} // namespace

void writeEffectProg(CStream* s, const CEffectProg& prog) {
    s->writeId("prog", prog.id.length() + int(sizeof(int)) * (1 + progSpare));
    s->writeStr(prog.id);
    writeZeros(s, progSpare);
    for (auto* fx : prog.effects) writeEffect(s, *fx);
}

RackContent::~RackContent() {
    deleteAll<CEffectProg>(progs);
}

void RackContent::read(CStream* stream, int64_t end) {
    end = std::min(end, stream->getSize());
    eachBlock(stream, end, [this](const CStr& name, CStream& body) { readBlock(name, body); });
}

void RackContent::readBlock(const CStr& name, CStream& body) {
    if (name == "prog") return readProg(body);
    if (name == "fx") return readEffect(body);
    if (body.left() < int64_t(sizeof(int))) return;
    if (name == "macros") macros = readMacros(body);
    if (name == "macrolooks") readMacroStyles(body, [this](int i) { return looks.of(i); });
    if (name == "progi") progIndex = body.readInt();
    if (name == "reverbSize" && last && last->type == fxReverb)
        static_cast<CReverb*>(last)->setSize(body.readInt());
    if (name == "ampDrive2" && last && last->type == fxGuitarAmp)
        static_cast<CGuitarAmp*>(last)->setDrive2(body.readFloat());
}

void RackContent::readProg(CStream& body) {
    prog = nullptr;
    last = nullptr;
    if (progs.getCount() >= mostProgs || !LoadBudget::take("programs", progRoom)) return;
    prog = new CEffectProg;
    prog->id = body.readStr();
    progs.add(prog);
}

void RackContent::readEffect(CStream& body) {
    last = nullptr;
    if (!prog || body.left() < int64_t(sizeof(int))) return;
    if (effectCount >= mostEffects || prog->effects.getCount() >= mostInChain) return;
    const int kind = body.readInt();
    if (!LoadBudget::take("effects", kind == fxGuitarAmp ? ampRoom : effectRoom)) return;
    effectCount++;
    last = makeEffect(kind, rate, blockFrames);
    if (body.left() >= int64_t(sizeof(int))) last->setEnabled(body.readInt() != 0);
    readGain(body, last->dry);
    readGain(body, last->wet);
    settingsByKind(SettingReader{body}, *last);
    prog->effects.add(last);
}

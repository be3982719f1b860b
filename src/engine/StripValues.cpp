#include "engine/StripValues.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"

#include <algorithm>
#include <cmath>

namespace {

using Numbers = StoredValue::Numbers;

const COutputChannel* strip(const CObject* o) {
    return static_cast<const COutputChannel*>(o);
}
COutputChannel* strip(CObject* o) {
    return static_cast<COutputChannel*>(o);
}

bool on(const Numbers& to) {
    return to[0] != 0.0;
}

constexpr int firstBandParam = 3, paramsPerBand = 4;

template <int param>
constexpr int constant(int) {
    return param;
}
template <int place>
constexpr int ofBand(int band) {
    return firstBandParam + band * paramsPerBand + place;
}

const StoredValue::Kind fader = {
    "Volume",
    [](const CObject* o, int) {
        return Numbers{double(strip(o)->vol), double(strip(o)->showFader)};
    },
    [](CObject* o, int, const Numbers& to) {
        strip(o)->vol = fLimit(float(to[0]), 0.0f, 1.0f);
        strip(o)->showFader = to[1] != 0.0;
    },
    constant<0>};
const StoredValue::Kind pan = {
    "Pan", [](const CObject* o, int) { return Numbers{double(strip(o)->pan)}; },
    [](CObject* o, int, const Numbers& to) { strip(o)->pan = fLimit(float(to[0]), -1.0f, 1.0f); },
    constant<1>};
const StoredValue::Kind mute = {
    "Mute", [](const CObject* o, int) { return Numbers{strip(o)->mute ? 1.0 : 0.0}; },
    [](CObject* o, int, const Numbers& to) { strip(o)->mute = on(to); }, constant<2>};
const StoredValue::Kind solo = {
    "Solo", [](const CObject* o, int) { return Numbers{strip(o)->solo ? 1.0 : 0.0}; },
    [](CObject* o, int, const Numbers& to) { strip(o)->solo = on(to); }};
const StoredValue::Kind soloSafe = {
    "Solo safe", [](const CObject* o, int) { return Numbers{strip(o)->soloSafe ? 1.0 : 0.0}; },
    [](CObject* o, int, const Numbers& to) { strip(o)->soloSafe = on(to); }};
const StoredValue::Kind trim = {
    "Trim", [](const CObject* o, int) { return Numbers{double(strip(o)->trim)}; },
    [](CObject* o, int, const Numbers& to) { strip(o)->trim = fLimit(float(to[0]), -1.0f, 1.0f); }};
/// In the order of a band's parameters.
const StoredValue::Kind bandKinds[paramsPerBand] = {
    {nullptr, [](const CObject* o, int k) { return Numbers{double(strip(o)->eq[k]->active)}; },
     [](CObject* o, int k, const Numbers& to) { strip(o)->setEqPower(k, on(to)); }, ofBand<0>},
    {nullptr, [](const CObject* o, int k) { return Numbers{double(strip(o)->eq[k]->gain)}; },
     [](CObject* o, int k, const Numbers& to) { strip(o)->setEqGain(k, float(to[0])); }, ofBand<1>},
    {nullptr, [](const CObject* o, int k) { return Numbers{double(strip(o)->eq[k]->frequency)}; },
     [](CObject* o, int k, const Numbers& to) { strip(o)->setEqFrequency(k, float(to[0])); },
     ofBand<2>},
    {nullptr, [](const CObject* o, int k) { return Numbers{double(strip(o)->eq[k]->q)}; },
     [](CObject* o, int k, const Numbers& to) { strip(o)->setEqQ(k, float(to[0])); }, ofBand<3>}};
const StoredValue::Kind eqType = {
    "EQ type", [](const CObject* o, int k) { return Numbers{double(strip(o)->eq[k]->filterType)}; },
    [](CObject* o, int k, const Numbers& to) {
        strip(o)->setEqType(k, std::clamp(asInt(to[0]), int(eqLowShelf), int(eqNotch)));
    }};

/// Of whatever has parameters from 0 to 1; the index is the parameter.
const StoredValue::Kind share = {
    nullptr, [](const CObject* o, int param) { return Numbers{double(paramShare(o, param))}; },
    [](CObject* o, int param, const Numbers& to) {
        setParamShare(o, param, fLimit(float(to[0]), 0.0f, 1.0f));
    },
    [](int param) { return param; },
    [](CObject* o, int param, std::vector<StoredValue>& all) {
        if (CComp* comp = asComp(o)) comp->listParam(param, all);
    }};

const StoredValue::Kind program = {
    "Program",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CComp*>(o)->curProg)}; },
    [](CObject* o, int, const Numbers& to) {
        auto* comp = static_cast<CComp*>(o);
        comp->setProg(std::clamp(asInt(to[0]), 0, std::max(comp->numProgs() - 1, 0)));
    }};

/// What it fed does not go on sounding.
const StoredValue::Kind midiCableMute = {
    "Mute cable", [](const CObject* o, int) { return Numbers{isMuted(o) ? 1.0 : 0.0}; },
    [](CObject* o, int, const Numbers& to) {
        auto* cable = static_cast<CMIDICable*>(o);
        cable->muted = on(to);
        if (cable->muted && cable->toComp) cable->toComp->allNotesOff = 1;
    }};
const StoredValue::Kind audioCableMute = {
    "Mute cable", midiCableMute.get,
    [](CObject* o, int, const Numbers& to) { static_cast<CAudioCable*>(o)->muted = on(to); }};

const StoredValue::Kind sections = {
    "Sections",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CMixProg*>(o)->sh)}; },
    [](CObject* o, int, const Numbers& to) { static_cast<CMixProg*>(o)->sh = asInt(to[0]); }};

const StoredValue::Kind tempo = {
    "Tempo",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CQV*>(o)->songTempo)}; },
    [](CObject* o, int, const Numbers& to) { static_cast<CQV*>(o)->setTempo(float(to[0])); }};
const StoredValue::Kind loop = {
    "Loop", [](const CObject* o, int) { return Numbers{double(static_cast<const CQV*>(o)->loop)}; },
    [](CObject* o, int, const Numbers& to) { static_cast<CQV*>(o)->setLoop(on(to)); }};

StoredValue stripParameter(COutputChannel* ch, int param) {
    if (param == fader.param(0)) return faderOf(ch);
    if (param == pan.param(0)) return panOf(ch);
    if (param == mute.param(0)) return muteOf(ch);
    const int inBands = param - firstBandParam;
    if (inBands >= 0 && inBands < eqBandCount * paramsPerBand)
        return {&bandKinds[inBands % paramsPerBand], ch, inBands / paramsPerBand};
    return soloOf(ch);
}

} // namespace

StoredValue faderOf(COutputChannel* ch) {
    return {&fader, ch};
}

StoredValue panOf(COutputChannel* ch) {
    return {&pan, ch};
}

StoredValue muteOf(COutputChannel* ch) {
    return {&mute, ch};
}

StoredValue soloOf(COutputChannel* ch) {
    return {&solo, ch};
}

StoredValue soloSafeOf(COutputChannel* ch) {
    return {&soloSafe, ch};
}

StoredValue trimOf(COutputChannel* ch) {
    return {&trim, ch};
}

StoredValue eqPowerOf(COutputChannel* ch, int band) {
    return {&bandKinds[0], ch, band};
}

StoredValue eqGainOf(COutputChannel* ch, int band) {
    return {&bandKinds[1], ch, band};
}

StoredValue eqFrequencyOf(COutputChannel* ch, int band) {
    return {&bandKinds[2], ch, band};
}

StoredValue eqQOf(COutputChannel* ch, int band) {
    return {&bandKinds[3], ch, band};
}

StoredValue eqTypeOf(COutputChannel* ch, int band) {
    return {&eqType, ch, band};
}

StoredValue levelOf(CSend* send) {
    return {&share, send};
}

StoredValue muteOfCable(CObject* cable) {
    return {cable->type == cableMidi ? &midiCableMute : &audioCableMute, cable};
}

StoredValue parameterOf(CObject* target, int param) {
    if (COutputChannel* strip = asStrip(target)) return stripParameter(strip, param);
    return {&share, target, param};
}

StoredValue programOfComp(CComp* comp) {
    return {&program, comp};
}

StoredValue sectionsOf(CMixProg* prog) {
    return {&sections, prog};
}

StoredValue tempoOf(CQV* host) {
    return {&tempo, host};
}

StoredValue loopOf(CQV* host) {
    return {&loop, host};
}

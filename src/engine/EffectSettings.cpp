#include "engine/EffectSettings.h"

#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CGate.h"
#include "common/fx/CGuitarAmp.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"

namespace {

CFX* effect(CObject* o) {
    return static_cast<CFX*>(o);
}

constexpr Setting power{
    "Mix",
    {"Power",
     [](const CObject* o, int) {
         const int on = static_cast<const CFX*>(o)->enabled;
         return StoredValue::Numbers{double(on != 0)};
     },
     [](CObject* o, int, const StoredValue::Numbers& to) { effect(o)->setEnabled(to[0] != 0.0); },
     nullptr, nullptr, [](CObject* o, int) { effect(o)->takeRoom(); }},
    0.0,
    1.0,
    1.0,
    &onOffUnit,
    Setting::onOff};

constexpr Setting dry(double usual) {
    return fieldSetting<&CFX::dry, 0.0, 1.0>("Mix", "Dry", usual, gainUnit);
}

constexpr Setting wet(double usual) {
    return fieldSetting<&CFX::wet, 0.0, 1.0>("Mix", "Wet", usual, gainUnit);
}

const Setting delays[] = {
    power,
    dry(0.0),
    wet(1.0),
    fieldSetting<&CDelay::feedback, 0.0, 1.0>("Echo", "Feedback", 0.5, shareUnit),
    switchSetting<&CDelay::sync>("Echo", "Sync", 1.0),
    fieldSetting<&CDelay::mulLeft, 1.0, 32.0>("Left", "Beats", 1.0, plainUnit, Setting::whole),
    fieldSetting<&CDelay::divLeft, 1.0, 32.0>("Left", "Divided by", 1.0, plainUnit, Setting::whole),
    fieldSetting<&CDelay::timeLeft, 1.0, 5000.0>("Left", "Time", 200.0, msUnit, Setting::ratio),
    fieldSetting<&CDelay::mulRight, 1.0, 32.0>("Right", "Beats", 1.0, plainUnit, Setting::whole),
    fieldSetting<&CDelay::divRight, 1.0, 32.0>("Right", "Divided by", 1.0, plainUnit,
                                               Setting::whole),
    fieldSetting<&CDelay::timeRight, 1.0, 5000.0>("Right", "Time", 200.0, msUnit, Setting::ratio),
    fieldSetting<&CDelay::cross, 0.0, 1.0>("Echo", "Cross", 0.0, shareUnit),
};

const Setting reverbs[] = {
    power,
    dry(0.0),
    wet(1.0),
    accessSetting<&CReverb::getRevTime, &CReverb::setSize>("Room", "Time", 1000.0, 60000.0, 2000.0,
                                                           msUnit, Setting::ratio),
    fieldSetting<&CReverb::preDelay, 0.0, 250.0>("Room", "Pre-delay", 20.0, msUnit),
};

const Setting choruses[] = {
    power,
    dry(0.5),
    wet(0.5),
    fieldSetting<&CChorus::delay, 1.0, 300.0>("Voices", "Delay", 20.0, msUnit, Setting::ratio),
    fieldSetting<&CChorus::depth, 0.0, 1.0>("Voices", "Depth", 0.1, shareUnit),
    fieldSetting<&CChorus::feedback, -1.0, 1.0>("Voices", "Feedback", 0.0, shareUnit),
    fieldSetting<&CChorus::frequency, 0.0, 100.0>("Sweep", "Rate", 3.0, hertzUnit),
    fieldSetting<&CChorus::phase, 0.0, 180.0>("Sweep", "Phase", 90.0, degreeUnit),
};

const Setting phasers[] = {
    power,
    dry(0.5),
    wet(0.5),
    fieldSetting<&CPhaser::feedback, -1.0, 1.0>("Notches", "Feedback", 0.7, shareUnit),
    fieldSetting<&CPhaser::rangeMin, 20.0, 20000.0>("Notches", "From", 2000.0, hertzUnit,
                                                    Setting::ratio),
    fieldSetting<&CPhaser::rangeMax, 20.0, 20000.0>("Notches", "To", 20000.0, hertzUnit,
                                                    Setting::ratio),
    fieldSetting<&CPhaser::frequency, 0.0, 100.0>("Sweep", "Rate", 0.1, hertzUnit),
    fieldSetting<&CPhaser::phase, 0.0, 180.0>("Sweep", "Phase", 0.0, degreeUnit),
};

const Setting bitcrushers[] = {
    power,
    fieldSetting<&CBitcrusher::bits, 1.0, double(CBitcrusher::maxBits)>("Crush", "Bits", 4.0,
                                                                        plainUnit, Setting::whole),
    fieldSetting<&CBitcrusher::degrade, 1.0, double(CBitcrusher::maxDegrade)>(
        "Crush", "Hold", 4.0, plainUnit, Setting::whole),
};

constexpr const char* filterModes[] = {"Low pass", "Band pass", "High pass"};
const Setting filters[] = {
    power,
    choiceSetting<&CFilterFX::filterMode, filterModes>("Filter", "Kind"),
    fieldSetting<&CFilterFX::cutoffRequest, 0.0, 1.0>("Filter", "Cutoff", 1.0, shareUnit),
    fieldSetting<&CFilterFX::resonance, 0.0, 1.0>("Filter", "Resonance", 0.0, shareUnit),
};

const Setting compressors[] = {
    power,
    fieldSetting<&CCompressor::threshold, -100.0, 0.0>("Level", "Threshold", -20.0, decibelUnit),
    fieldSetting<&CCompressor::ratio, 0.05, 1.0>("Level", "Ratio", 0.3, ratioUnit, Setting::ratio),
    fieldSetting<&CCompressor::gain, -24.0, 24.0>("Level", "Gain", 6.0, decibelUnit),
    fieldSetting<&CCompressor::attack, 1.0, 500.0>("Time", "Attack", 10.0, msUnit, Setting::ratio),
    fieldSetting<&CCompressor::release, 1.0, 5000.0>("Time", "Release", 100.0, msUnit,
                                                     Setting::ratio),
};

/// A knob of an amplifier.
template <auto get, auto set>
constexpr Setting knob(const char* channel, const char* name, double usual) {
    return accessSetting<get, set>(channel, name, 0.0, 1.0, usual, shareUnit);
}

constexpr const char* ampChannels[] = {"Clean", "Crunch", "Dirty"};
using Amp = CGuitarAmp;
const Setting amps[] = {
    power,
    choiceSetting<&Amp::channel, ampChannels>("Amplifier", "Channel"),
    fieldSetting<&Amp::threshold, 0.0, 1.0>("Amplifier", "Gate", 0.0, gainUnit),
    knob<&Amp::getBass, &Amp::setBass>("Clean", "Bass", 0.5),
    knob<&Amp::getMid, &Amp::setMid>("Clean", "Mid", 0.5),
    knob<&Amp::getTreble, &Amp::setTreble>("Clean", "Treble", 0.5),
    knob<&Amp::getVolume, &Amp::setVolume>("Clean", "Volume", 0.5),
    knob<&Amp::getDrive2, &Amp::setDrive2>("Crunch", "Drive", 0.5),
    knob<&Amp::getBass2, &Amp::setBass2>("Crunch", "Bass", 0.5),
    knob<&Amp::getTreble2, &Amp::setTreble2>("Crunch", "Treble", 0.5),
    knob<&Amp::getTopCut2, &Amp::setTopCut2>("Crunch", "Top cut", 0.3),
    knob<&Amp::getVolume2, &Amp::setVolume2>("Crunch", "Volume", 0.5),
    knob<&Amp::getDrive3, &Amp::setDrive3>("Dirty", "Drive", 0.5),
    knob<&Amp::getBass3, &Amp::setBass3>("Dirty", "Bass", 0.5),
    knob<&Amp::getMid3, &Amp::setMid3>("Dirty", "Mid", 0.5),
    knob<&Amp::getTreble3, &Amp::setTreble3>("Dirty", "Treble", 0.5),
    knob<&Amp::getPresence3, &Amp::setPresence3>("Dirty", "Presence", 0.3),
    knob<&Amp::getVolume3, &Amp::setVolume3>("Dirty", "Volume", 0.5),
};

const Setting gates[] = {
    power,
    fieldSetting<&CGate::threshold, -100.0, 0.0>("Level", "Threshold", -40.0, decibelUnit),
    fieldSetting<&CGate::range, -100.0, 0.0>("Level", "Range", -80.0, decibelUnit),
    fieldSetting<&CGate::attack, 0.1, 500.0>("Time", "Attack", 1.0, msUnit, Setting::ratio),
    fieldSetting<&CGate::hold, 0.0, 5000.0>("Time", "Hold", 50.0, msUnit),
    fieldSetting<&CGate::release, 0.1, 5000.0>("Time", "Release", 100.0, msUnit, Setting::ratio),
};

/// By kind.
const Settings tables[] = {delays,  reverbs,     choruses, phasers, bitcrushers,
                           filters, compressors, amps,     gates};

/// The echo of an instrument, whose files have no room for the last one.
Settings ofSharedDelay() {
    return Settings(delays).first(std::size(delays) - 1);
}

} // namespace

Settings settingsOf(const CFX& fx) {
    if (fx.type == fxDelay && static_cast<const CDelay&>(fx).shared) return ofSharedDelay();
    const bool known = fx.type >= 0 && fx.type < int(std::size(tables));
    return known ? tables[fx.type] : Settings();
}

const Setting& effectPower() {
    return power;
}

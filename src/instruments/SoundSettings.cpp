#include "instruments/SoundSettings.h"

#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"

#include <array>

namespace {

using Numbers = StoredValue::Numbers;

constexpr double mostSemitones = 48.0;
constexpr double lastKey = 127.0;
constexpr const char* modes[] = {"Poly", "Mono"};
constexpr const char* filterKinds[] = {"Low pass", "Band pass", "High pass"};

/// How much of a sound goes to an effect of its program.
template <int send>
constexpr Setting sendSetting(const char* name) {
    return {"Sends",
            {name,
             [](const CObject* o, int) {
                 return Numbers{double(static_cast<const CSound*>(o)->sends[send])};
             },
             [](CObject* o, int, const Numbers& to) {
                 static_cast<CSound*>(o)->sends[send] = fLimit(float(to[0]), 0.0f, 1.0f);
             }},
            0.0,
            1.0,
            0.0,
            &squaredUnit};
}

constexpr std::array level = {
    fieldSetting<&CSound::volume, 0.0, 1.0>("Level", "Volume", 1.0, squaredUnit),
    fieldSetting<&CSound::pan, -1.0, 1.0>("Level", "Pan", 0.0, panUnit),
};
constexpr std::array mute = {
    /// A drum's is set by its track (sequencer/edit/KitEdits.h), whose views it tells.
    switchSetting<&CSound::mute>("Level", "Mute")};
constexpr std::array tuning = {
    fieldSetting<&CSound::coarse, -mostSemitones, mostSemitones>("Pitch", "Coarse", 0.0,
                                                                 semitoneUnit, Setting::whole),
    fieldSetting<&CSound::fine, -1.0, 1.0>("Pitch", "Fine", 0.0, centUnit),
};
constexpr std::array filter = {
    choiceSetting<&CSound::filter, filterKinds>("Filter", "Kind"),
    fieldSetting<&CSound::cutoff, 0.0, 1.0>("Filter", "Cutoff", 1.0, shareUnit),
    fieldSetting<&CSound::q, 0.0, 1.0>("Filter", "Resonance", 0.0, shareUnit),
};
constexpr std::array choke = {
    fieldSetting<&CSound::group, 0.0, 255.0>("Zone", "Choke group", 0.0, plainUnit, Setting::whole),
};
/// What does not count for a drum, which plays at its own key, dry.
constexpr std::array sends = {sendSetting<0>("Reverb"), sendSetting<1>("Delay")};
constexpr std::array playing = {
    fieldSetting<&CSound::bendRange, 0.0, mostSemitones>("Pitch", "Bend range", 12.0, semitoneUnit,
                                                         Setting::whole),
    fieldSetting<&CSound::glide, 0.0, 500.0>("Pitch", "Glide", 0.0, msUnit),
    choiceSetting<&CSound::mode, modes>("Pitch", "Voices"),
};
constexpr std::array zone = {
    fieldSetting<&CSound::lowKey, 0.0, lastKey>("Zone", "Lowest key", 0.0, keyUnit, Setting::whole),
    fieldSetting<&CSound::hiKey, 0.0, lastKey>("Zone", "Highest key", lastKey, keyUnit,
                                               Setting::whole),
    fieldSetting<&CSound::lowVel, 0.0, lastKey>("Zone", "Softest", 0.0, plainUnit, Setting::whole),
    fieldSetting<&CSound::hiVel, 0.0, lastKey>("Zone", "Loudest", lastKey, plainUnit,
                                               Setting::whole),
};

constexpr StoredValue::Kind inverted = {
    "Invert",
    [](const CObject* o, int) {
        return Numbers{static_cast<const COSCSound*>(o)->oscInv < 0.0f ? 1.0 : 0.0};
    },
    [](CObject* o, int, const Numbers& to) {
        static_cast<COSCSound*>(o)->oscInv = to[0] != 0.0 ? -1.0f : 1.0f;
    }};

constexpr std::array operators = {
    switchSetting<&CSound::dist>("Filter", "Distortion"),
    fieldSetting<&COSCSound::feed1, 0.0, 1.0>("Carrier", "Feedback", 0.0, shareUnit),
    fieldSetting<&COSCSound::oscRing, 0.0, 1.0>("Carrier", "Shape", 0.0, shareUnit),
    fieldSetting<&COSCSound::phaseMod, 0.0, 1.0>("Modulator", "Depth", 0.0, shareUnit),
    fieldSetting<&COSCSound::pmMul, 1.0, double(COSCSound::maxPmMul)>("Modulator", "Times", 1.0,
                                                                      plainUnit, Setting::whole),
    fieldSetting<&COSCSound::coarse2, -mostSemitones, mostSemitones>("Modulator", "Coarse", 0.0,
                                                                     semitoneUnit, Setting::whole),
    fieldSetting<&COSCSound::feed2, 0.0, 1.0>("Modulator", "Feedback", 0.0, shareUnit),
    fieldSetting<&COSCSound::modRing, 0.0, 1.0>("Modulator", "Shape", 0.0, shareUnit),
    fieldSetting<&COSCSound::detune, 0.0, 1.0>("Stereo", "Detune", 0.0, shareUnit),
    fieldSetting<&COSCSound::width, 0.0, 1.0>("Stereo", "Width", 0.0, shareUnit),
    fieldSetting<&COSCSound::phase, 0.0, 1.0>("Stereo", "Phase", 0.0, shareUnit),
    fieldSetting<&COSCSound::phase2, 0.0, 1.0>("Stereo", "Mod. phase", 0.0, shareUnit),
    Setting{"Stereo", inverted, 0.0, 1.0, 0.0, &onOffUnit, Setting::onOff},
};

/// The rows of several tables.
template <size_t... sizes>
constexpr auto joined(const std::array<Setting, sizes>&... tables) {
    std::array<Setting, (sizes + ...)> all;
    auto to = all.begin();
    ((to = std::copy(tables.begin(), tables.end(), to)), ...);
    return all;
}
constexpr auto drumSound = joined(level, tuning, filter, choke);
constexpr auto waveSound = joined(level, mute, sends, tuning, playing, filter, zone, choke);
constexpr auto oscSound = joined(waveSound, operators);

constexpr const char* loopModes[] = {"Once", "Loop"};
int loopOf(const CObject* o) {
    return static_cast<const CSampleClip*>(o)->loop;
}
constexpr StoredValue::Kind loop = {
    "Play", [](const CObject* o, int) { return Numbers{double(loopOf(o))}; },
    [](CObject* o, int, const Numbers& to) {
        static_cast<CSampleClip*>(o)->setLoop(asRound(to[0]));
    }};
constexpr std::array clip = {
    fieldSetting<&CSampleClip::orgKey, 0.0, lastKey>("Sample", "Own key", CSampleClip::middleKey,
                                                     keyUnit, Setting::whole),
    Setting{"Sample", loop, 0.0, 1.0, 0.0, &plainUnit, Setting::choice, loopModes},
};

// Modulators.

/// The time of a stage, whose setting is the square root of its share of the longest.
const SettingUnit stageUnit{[](const CObject* o, double v) {
                                return msUnit.text(o, v * v * static_cast<const CEnv*>(o)->maxTime);
                            },
                            [](const CObject* o, double ms) {
                                return std::sqrt(
                                    std::max(0.0, ms) /
                                    std::max<int>(1, static_cast<const CEnv*>(o)->maxTime));
                            }};

constexpr std::array envelope = {
    fieldSetting<&CEnv::initial, 0.0, 1.0>("Levels", "Start", 0.0, shareUnit),
    fieldSetting<&CEnv::attack, 0.0, 1.0>("Times", "Attack", 0.0, stageUnit),
    fieldSetting<&CEnv::decay, 0.0, 1.0>("Times", "Decay", 0.0, stageUnit),
    fieldSetting<&CEnv::sustain, 0.0, 1.0>("Levels", "Sustain", 1.0, shareUnit),
    fieldSetting<&CEnv::release, 0.0, 1.0>("Times", "Release", 0.0, stageUnit),
    fieldSetting<&CEnv::maxTime, 1.0, 60000.0>("Times", "Longest", 5000.0, msUnit, Setting::ratio),
    fieldSetting<&CEnv::ac, -1.0, 1.0>("Curves", "Attack", 0.0, shareUnit),
    fieldSetting<&CEnv::dc, -1.0, 1.0>("Curves", "Decay", 0.0, shareUnit),
    fieldSetting<&CEnv::rc, -1.0, 1.0>("Curves", "Release", 0.0, shareUnit),
};

constexpr const char* waves[] = {"Sine", "Triangle", "Saw", "Pulse", "Random"};
constexpr const char* restarts[] = {"Free", "Each note", "First note"};
constexpr std::array lfo = {
    choiceSetting<&CLFO::wave, waves>("LFO", "Wave", lfoTri),
    fieldSetting<&CLFO::rate, 0.01, 50.0>("LFO", "Rate", 6.0, hertzUnit, Setting::ratio),
    switchSetting<&CLFO::sync>("LFO", "Sync"),
    fieldSetting<&CLFO::mul, 1.0, 64.0>("LFO", "Beats", 1.0, plainUnit, Setting::whole),
    fieldSetting<&CLFO::div, 1.0, 64.0>("LFO", "Divided by", 1.0, plainUnit, Setting::whole),
    fieldSetting<&CLFO::delay, 0.0, 5000.0>("LFO", "Delay", 0.0, msUnit),
    choiceSetting<&CLFO::restart, restarts>("LFO", "Starts", restartPoly),
};

CMod::Param& slot(CObject* o, int k) {
    return static_cast<CMod*>(o)->params[k];
}
const CMod::Param& slot(const CObject* o, int k) {
    return static_cast<const CMod*>(o)->params[k];
}
double mostAmount(int target) {
    return target == targetPitch ? mostSemitones : 1.0;
}
void setSlot(CObject* o, int k, int target, double amount) {
    const double most = mostAmount(target);
    slot(o, k).index = target;
    slot(o, k).amount = float(std::clamp(amount, -most, most));
}

/// With the amount, which must fit the new target.
constexpr StoredValue::Kind slotTarget = {
    "Destination",
    [](const CObject* o, int k) {
        return Numbers{double(slot(o, k).index), double(slot(o, k).amount)};
    },
    [](CObject* o, int k, const Numbers& to) {
        setSlot(o, k, asMinMax(asRound(to[0]), 0, targetCount - 1), to[1]);
    }};
constexpr StoredValue::Kind slotAmount = {"Amount",
                                          [](const CObject* o, int k) {
                                              return Numbers{double(slot(o, k).amount) /
                                                             mostAmount(slot(o, k).index)};
                                          },
                                          [](CObject* o, int k, const Numbers& to) {
                                              const int target = slot(o, k).index;
                                              setSlot(o, k, target, to[0] * mostAmount(target));
                                          }};

template <int k>
const SettingUnit& amountUnit() {
    static constexpr auto ofPitch = [](const CObject* o) {
        return slot(o, k).index == targetPitch;
    };
    static const SettingUnit unit{
        [](const CObject* o, double v) {
            return ofPitch(o) ? semitoneUnit.text(o, v * mostSemitones) : shareUnit.text(o, v);
        },
        [](const CObject* o, double entered) {
            return ofPitch(o) ? entered / mostSemitones : shareUnit.typed(o, entered);
        }};
    return unit;
}

template <int k>
void addSlot(std::vector<Setting>& all, int targets) {
    all.push_back({"Destinations", slotTarget, 0.0, double(targets) - 1.0, 0.0, &plainUnit,
                   Setting::choice, std::span(targetNames, size_t(targets)), k});
    all.push_back(
        {"Destinations", slotAmount, -1.0, 1.0, 0.0, &amountUnit<k>(), Setting::number, {}, k});
}

std::vector<Setting> makeSlots(int targets) {
    std::vector<Setting> all;
    addSlot<0>(all, targets);
    addSlot<1>(all, targets);
    addSlot<2>(all, targets);
    addSlot<3>(all, targets);
    static_assert(modSlots == 4);
    return all;
}

// Controllers.

CSound* sound(CObject* o) {
    return static_cast<CSound*>(o);
}
const CSound* sound(const CObject* o) {
    return static_cast<const CSound*>(o);
}

/// What one controller moves.
const StoredValue::Kind moved = {
    "Controller",
    [](const CObject* o, int number) { return Numbers{double(sound(o)->ccMap[number])}; },
    [](CObject* o, int number, const Numbers& to) { sound(o)->ccMap[number] = asRound(to[0]); }};

Numbers controllerOf(const CObject* o, int target) {
    const auto& map = sound(o)->ccMap;
    const auto* found = std::find(std::begin(map), std::end(map), target);
    return {found == std::end(map) ? -1.0 : double(found - std::begin(map))};
}

void setController(CObject* o, int target, const Numbers& to) {
    if (!std::isfinite(to[0])) return;
    for (auto& other : sound(o)->ccMap)
        if (other == target) other = targetNone;
    const int number = asRound(std::min(to[0], lastKey));
    if (number >= 0) sound(o)->ccMap[number] = target;
}

/// All controllers: what is set takes them from each other.
void listControllers(CObject* o, int, std::vector<StoredValue>& all) {
    for (int i = 0; i < int(std::size(sound(o)->ccMap)); i++) all.push_back({&moved, o, i});
}

std::vector<Setting> makeControllers(int targets) {
    std::vector<Setting> all;
    for (int target = targetPitch; target < targets; target++)
        all.push_back({"Controllers",
                       {targetNames[target], controllerOf, setController, nullptr, listControllers},
                       -1.0,
                       lastKey,
                       -1.0,
                       &controllerUnit,
                       Setting::whole,
                       {},
                       target});
    return all;
}

constexpr std::array layer = {switchSetting<&CLayer::editAll>("Layer", "Edit all")};
constexpr std::array sampler = {fieldSetting<&CSampler::mch, -1.0, 15.0>(
    "Instrument", "MIDI channel", -1.0, channelUnit, Setting::whole)};

} // namespace

Settings settingsOf(const CSound& sound) {
    if (sound.type == typeOscSound) return oscSound;
    return sound.reserved ? Settings(drumSound) : Settings(waveSound);
}

Settings clipSettings(const CSound& sound) {
    return sound.reserved ? Settings(clip).last(1) : Settings(clip);
}

Settings envelopeSettings() {
    return envelope;
}

Settings lfoSettings() {
    return lfo;
}

Settings slotSettings(const CSound& sound) {
    static const std::vector<Setting> ofSynth = makeSlots(targetCount);
    static const std::vector<Setting> ofSample = makeSlots(sampleTargetCount);
    return sound.type == typeOscSound ? ofSynth : ofSample;
}

Settings controllerSettings(const CSound& of) {
    static const std::vector<Setting> ofSynth = makeControllers(targetCount);
    static const std::vector<Setting> ofSample = makeControllers(sampleTargetCount);
    return of.type == typeOscSound ? ofSynth : ofSample;
}

Settings layerSettings() {
    return layer;
}

Settings samplerSettings() {
    return sampler;
}

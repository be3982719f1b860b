#include "modular/AskSilence.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "common/fx/CGate.h"
#include "effects/CEffect.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/DeviceComps.h"
#include "engine/KeyInput.h"
#include "engine/Mixing.h"
#include "engine/ObjectKinds.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/CWavSound.h"
#include "modular/GraphNames.h"
#include "modular/GraphPaths.h"
#include "plugins/CVST.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>

namespace {

using Causes = std::vector<GraphCause>;

CSongTrack* songTrackOf(CTrack* track) {
    CSeqProg* prog = track->seq->getProg();
    return prog ? prog->songTrackOf(track) : nullptr;
}

bool lacksSample(const CSound* sound) {
    if (sound->type != typeWavSound) return false;
    const auto* wav = static_cast<const CWavSound*>(sound);
    const CSampleClip* clip = wav->clips[0];
    return !clip || clip->frames == 0;
}

/// Of an audio part: none of its clips can be read.
bool lacksSamples(CPart* part) {
    bool any = false, good = false;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        const CSample* sample = asClip(e)->sample;
        any = true;
        good = good || (sample && sample->valid);
    }
    return any && !good;
}

/// What stands among the song's parts that this track would play.
struct PartSummary {
    int all = 0, muted = 0, missing = 0;
    CStr missingName;

    explicit PartSummary(const CSongTrack* songTrack) {
        for (auto* part : songTrack->parts) {
            all++;
            if (part->muted()) {
                muted++;
            } else if (part->type == partAudio && lacksSamples(part)) {
                missing++;
                missingName = part->id;
            }
        }
    }
};

/// Whether the monitor lets what arrives at an audio track be heard.
bool inputHeard(const CTrack* track) {
    switch (track->seq->options.audioMonitorMode()) {
    case MonitorMode::off:
        return false;
    case MonitorMode::automatic:
        return track->selected();
    case MonitorMode::record:
        return track->recArm;
    default:
        return track->monitor;
    }
}

} // namespace

void addCauses(Causes& to, const Causes& more) {
    for (const GraphCause& cause : more)
        if (std::ranges::find(to, cause) == to.end()) to.push_back(cause);
}

// Of one component.

/// A gate that follows another strip lets nothing through as long as that is silent.
Causes AskSilence::gateCauses(CComp* insert, const CStr& of) const {
    CKeyInput* key = keyInputOf(insert);
    auto* rack = key ? compAs<CEffect>(insert) : nullptr;
    const CEffectProg* prog = rack ? rack->getProg() : nullptr;
    auto* cable = key ? key->cables.getFirst() : nullptr;
    if (!prog || !cable || !insert->enabled) return {};
    constexpr float closed = 0.001f;
    const CStr source = stripName(cable->fromChannel);
    for (const auto* fx : prog->effects) {
        if (fx->type != fxGate || !fx->enabled) continue;
        if (static_cast<const CGate*>(fx)->gain > closed) continue;
        const CStr why = keyWaitsForItself(insert) ? " waits for itself." : " is too soft.";
        return {
            {cable, "The gate of " + of + " is closed: " + source + ", which it follows," + why}};
    }
    return {};
}

const CComp* AskSilence::soloed() const {
    for (const auto* list : listsOf(qv->comps, qv->sends))
        for (const auto* comp : *list)
            for (const auto* strip : comp->outputs)
                if (strip->solo) return comp;
    return nullptr;
}

Causes AskSilence::stripCauses(CComp* comp, COutputChannel* strip) const {
    Causes found;
    const CComp* track = comp->getComp(strip);
    const CStr name = track ? track->id : boxName(comp);
    CObject* blame = track ? static_cast<CObject*>(strip) : comp;
    if (strip->mute) found.push_back({blame, name + " is muted."});
    if (strip->vol <= 0.0f) found.push_back({blame, "The fader of " + name + " is at zero."});
    for (auto* insert : strip->inserts) addCauses(found, gateCauses(insert, name));
    const CComp* other = soloed();
    if (!stripOpen(comp, strip) && !strip->mute && other)
        found.push_back({const_cast<CComp*>(other),
                         boxName(other) + " is soloed: all else is silent as long as it is."});
    return found;
}

Causes AskSilence::ownCauses(int output) const {
    const auto& port = model.ports[size_t(output)];
    CComp* comp = model.boxes[size_t(port.box)].comp;
    Causes found;
    if (!comp->enabled) found.push_back({comp, boxName(comp) + " is switched off."});
    if (comp->sleeping) found.push_back({comp, boxName(comp) + " sleeps."});
    if (!isMidi(port.kind)) addCauses(found, stripCauses(comp, asStrip(port.io)));
    return found;
}

Causes AskSilence::masterCauses(int box) const {
    CComp* comp = model.boxes[size_t(box)].comp;
    Causes found;
    for (auto* strip : comp->outputs) addCauses(found, stripCauses(comp, strip));
    if (!comp->enabled) found.push_back({comp, boxName(comp) + " is switched off."});
    if (qv->listenVolume <= 0.0f)
        found.push_back({comp, "The volume of your speakers, below the meter, is at zero."});
    const auto* device = compAs<CAudioOut>(comp);
    if (!device) return found;
    if (const COutputChannel* only = device->listened)
        found.push_back({only->comp, "You listen to " + boxName(only->comp) + " alone."});
    if (qv->aam && qv->aam->opened && device->chs == 0)
        found.push_back({comp, boxName(comp) + " stands for no channel of the device."});
    return found;
}

// Sources.

Causes AskSilence::samplerCauses(CSampler* sampler) {
    const CStr name = boxName(sampler);
    auto* program = sampler->getProg();
    if (!program) return {{sampler, name + " has no program."}};
    int sounds = 0, muted = 0, missing = 0;
    program->eachSound([&](const CSound* sound) {
        sounds++;
        muted += sound->mute ? 1 : 0;
        missing += lacksSample(sound);
    });
    if (sounds == 0) return {{sampler, "The program of " + name + " has no sounds."}};
    if (muted == sounds) return {{sampler, "All sounds of " + name + " are muted."}};
    if (missing == sounds) return {{sampler, "The samples of " + name + " are missing."}};
    return {};
}

Causes AskSilence::trackCauses(CTrack* track, int output) {
    CIO* port = model.ports[size_t(output)].io;
    const CSongTrack* songTrack = songTrackOf(track);
    if (!songTrack) return {{port, "The song has no program to play."}};
    Causes found;
    if (songTrack->muted()) found.push_back({port, "The track " + track->id + " is muted."});
    CSeqProg* prog = track->seq->getProg();
    for (const auto* other : prog->tracks)
        if (other->soloed() && !songTrack->soloed()) {
            CIO* blame = other->track->outPorts.items(0);
            if (!blame) blame = other->track->outputs.items(0);
            found.push_back({blame, "The track " + other->track->id + " is soloed: " + track->id +
                                        " is silent as long as it is."});
            break;
        }
    const PartSummary parts(songTrack);
    if (parts.all == 0) {
        const bool takesInput = track->kind == trackAudio && !track->inputs.empty();
        if (takesInput && inputHeard(track)) return found;
        found.push_back({port, takesInput ? "The track " + track->id +
                                                " has no parts, and its input is not heard: it "
                                                "is not armed or monitored."
                                          : "The track " + track->id + " has no parts."});
    } else if (parts.muted == parts.all) {
        found.push_back({port, "All parts of the track " + track->id + " are muted."});
    } else if (parts.missing == parts.all - parts.muted) {
        found.push_back({port, "The sample of " + parts.missingName + " on the track " + track->id +
                                   " is missing."});
    }
    return found;
}

/// A cable brings nothing, or what is not heard where it arrives.
Causes AskSilence::ofCable(const GraphModel::Cable& cable) const {
    if (isMuted(cable.cable))
        return {{cable.cable,
                 "The cable " + cableName(model, model.cableOf(cable.cable)) + " is muted."}};
    if (!cable.midi) return {};
    const auto &from = model.ports[size_t(cable.from)], &to = model.ports[size_t(cable.to)];
    CComp *source = model.boxes[size_t(from.box)].comp, *target = model.boxes[size_t(to.box)].comp;
    const auto* sampler = compAs<CSampler>(target);
    if (!sampler || source->type != compSeq) return {};
    const int heard = sampler->mch;
    const auto* track = compAs<CTrack>(source->getComp(from.io));
    if (heard < 0 || !track || track->channel < 0 || track->channel == heard) return {};
    return {{target, boxName(target) + " hears channel " + asStr(heard + 1) + ", and " + track->id +
                         " plays on channel " + asStr(track->channel + 1) + "."}};
}

std::optional<Causes> AskSilence::cabledCauses(int first, int count, bool midi) {
    std::optional<Causes> all;
    for (const auto& cable : model.cables) {
        const bool here = cable.to >= first && cable.to < first + count;
        if (!here || cable.midi != midi || model.toKey(cable)) continue;
        if (!all) all.emplace();
        Causes one = ofCable(cable);
        addCauses(one, atOutput(cable.from));
        if (one.empty()) return Causes();
        addCauses(*all, one);
    }
    return all;
}

/// All that is cabled to the inputs of a kind.
Causes AskSilence::fedBy(int box, bool midi) {
    const auto& b = model.boxes[size_t(box)];
    if (const auto found = cabledCauses(b.firstPort, b.portCount, midi)) return *found;
    return {{b.comp, CStr("Nothing is cabled to the ") + (midi ? "MIDI" : "audio") + " input of " +
                         boxName(b.comp) + "."}};
}

Causes AskSilence::sourceCauses(int output) {
    const auto& port = model.ports[size_t(output)];
    CComp* comp = model.boxes[size_t(port.box)].comp;
    switch (comp->type) {
    case compSeq:
        if (auto* track = compAs<CTrack>(comp->getComp(port.io))) return trackCauses(track, output);
        return {};
    case compSampler: {
        Causes found = samplerCauses(static_cast<CSampler*>(comp));
        addCauses(found, fedBy(port.box, true));
        return found;
    }
    case compVST:
        if (!static_cast<CVST*>(comp)->opened())
            return {{comp, "The plug-in of " + boxName(comp) + " was not found."}};
        return fedBy(port.box, comp->inputs.empty());
    case compArp:
        return fedBy(port.box, true);
    case compEffect:
    case compGroupCh:
        return fedBy(port.box, false);
    case compAudioIn:
        if (qv->aam && qv->aam->opened && static_cast<const CDeviceAudio*>(comp)->chs == 0)
            return {{comp, boxName(comp) + " stands for no channel of the device."}};
        return {};
    default:
        return {};
    }
}

/// A port that is met again on its own path adds nothing: it has no sound of its own.
Causes AskSilence::atOutput(int port) {
    if (visited[size_t(port)])
        return {{model.ports[size_t(port)].io,
                 fullPortName(model, port) + " is fed by nothing but itself."}};
    visited[size_t(port)] = true;
    Causes found = ownCauses(port);
    addCauses(found, sourceCauses(port));
    visited[size_t(port)] = false;
    return found;
}

Causes AskSilence::atInput(int port) {
    if (const auto found = cabledCauses(port, 1, isMidi(model.ports[size_t(port)].kind)))
        return *found;
    return {
        {model.ports[size_t(port)].io, "Nothing is cabled to " + fullPortName(model, port) + "."}};
}

// Where it goes.

/// An input that is met again on its own path leads nowhere.
Causes AskSilence::fromInput(int input) {
    const auto& to = model.ports[size_t(input)];
    const auto& box = model.boxes[size_t(to.box)];
    if (box.comp->type == compAudioOut) return masterCauses(to.box);
    if (box.comp->type == compMIDIOut) return {};
    if (visited[size_t(input)])
        return {{to.io, fullPortName(model, input) + " leads to nothing but itself."}};
    visited[size_t(input)] = true;
    Causes all;
    bool open = false;
    for (int i = box.firstPort; !open && i < box.firstPort + box.portCount; i++) {
        if (!isOutput(model.ports[size_t(i)].kind) || !passes(model, input, i)) continue;
        Causes way = ownCauses(i);
        addCauses(way, onward(i));
        open = way.empty();
        addCauses(all, way);
    }
    visited[size_t(input)] = false;
    return open ? Causes() : all;
}

Causes AskSilence::alongCable(const GraphModel::Cable& cable) {
    Causes found = ofCable(cable);
    addCauses(found, fromInput(cable.to));
    return found;
}

Causes AskSilence::alongCable(const CObject* cable) {
    return alongCable(model.cables[size_t(model.cableOf(cable))]);
}

Causes AskSilence::onward(int output) {
    Causes all;
    bool any = false;
    for (const auto& cable : model.cables) {
        if (cable.from != output) continue;
        any = true;
        if (model.toKey(cable)) {
            addCauses(all, {{cable.cable, fullPortName(model, output) + " is only followed, by " +
                                              portName(model, cable.to) + "."}});
            continue;
        }
        const Causes one = alongCable(cable);
        if (one.empty()) return {};
        addCauses(all, one);
    }
    if (any) return all;
    return {{model.ports[size_t(output)].io,
             "Nothing is cabled to " + fullPortName(model, output) + "."}};
}

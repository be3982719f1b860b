#include "base/Numbers.h"
#include "common/fx/CFX.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "engine/Mixing.h"
#include "engine/SongClock.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampler.h"
#include "instruments/OscGang.h"
#include "instruments/Slices.h"

#include <algorithm>
#include <cassert>
#include <cstring>

// What the sampler does in a block: events, voices, mixing.

namespace {

constexpr int pianoVelocity = 80;
constexpr int ccWheel = 1; ///< pressure of the whole keyboard does what it does

/// Whether a voice sounds, or has kept its place among those that do.
bool takesPart(const CVoice& v) {
    return v.state == CVoice::sounding || v.seat != Seat::none;
}

} // namespace

int CSampler::freezed(COutputChannel*) {
    return playsFrozen(this);
}

void CSampler::takeGuiKeys() {
    CMIDIQ* port = inPort();
    int data = 0;
    while (port && guiQueue.pop(data))
        port->insert(0.0, data, eventMidi, 0.0f, 0, nullptr, nullptr);
}

bool CSampler::hears(const CMIDIBytes& event) const {
    if (event.kind == eventParam) return event.owner == static_cast<const CComp*>(this);
    return event.kind == eventMidi && (mch == -1 || mch == chByte(event.data));
}

void CSampler::process(int frames) {
    ProcessGuard guard(this);
    if (!guard.enter) return;
    mergeMIDI(frames);
    takeGuiKeys();
    frozen = playsFrozen(this);
    if (frozen) {
        allNotesOff();
        fxDone = true; // the file holds them
        return;
    }

    if (CSynthProg* prog = getProg()) prog->clearSends(frames);
    const int from = pieceStart(this);
    strideLeft = host->clock->left(from + frames) - from;
    if (host->clock->begins() && from == 0) cutVoices();
    int offset = 0;
    CMIDIQ* port = inPort();
    for (int i = 0; port && i < port->count; i++) {
        CMIDIBytes& event = port->events[i];
        if (!hears(event)) continue;
        const int at = CMIDIQ::frameOf(&event, offset, frames);
        if (at > offset) subProcess(at - offset, offset);
        offset = at;
        cutVoices();
        doMapping(&event);
    }
    if (offset < frames) subProcess(frames - offset, offset);
    COutputChannel* channel = output();
    if (CSynthProg* prog = getProg(); prog && channel && channel->bufL)
        prog->process(channel->bufL, channel->bufR, frames, 0);
}

void CSampler::cutVoices() {
    for (CVoice& v : voices)
        if (v.seat != Seat::none) cutVoice(&v);
}

void CSampler::subProcess(int frames, int offset) {
    const COutputChannel* channel = output();
    if (channel && channel->bufL) render(frames, offset);
}

/// What the voices of a sound add up to in a call.
struct CSampler::SoundSum {
    CSound* sound;
    const CVoice* last; ///< of the voices
    float* left;
    float* right;
};

/// Operator sounds are worked out together, as many as there is room for: their voices share lanes.
void CSampler::render(int frames, int offset) {
    if (std::ranges::none_of(voices, takesPart)) return;
    constexpr int most = std::min(GraphScratch::rows / 2, OscGang::mostSounds);
    SoundSum sums[most];
    int count = 0;
    CVoice* list[voiceCount];
    const int ahead = std::max(0, strideLeft - offset - frames);
    OscGang gang(frames, ahead);
    const auto mixAll = [&] {
        gang.run();
        for (int i = 0; i < count; i++) mixSound(sums[i], frames, offset);
        count = 0;
    };
    for (CVoice& v : voices)
        if (takesPart(v)) v.sound->voicesRendered = 0;
    for (int i = 0; i < voiceCount; i++) {
        CSound* sound = voices[i].sound;
        if (!takesPart(voices[i]) || sound->voicesRendered > 0) continue;
        const int n = gather(i, list);
        float* left = host->scratch().bank.data() + size_t(2 * count * host->frames);
        float* right = left + host->frames;
        std::fill_n(left, frames, 0.0f);
        std::fill_n(right, frames, 0.0f);
        sums[count++] = {sound, list[n - 1], left, right};
        sound->ahead = ahead;
        if (sound->type == typeOscSound)
            gang.add(static_cast<COSCSound*>(sound), list, n, left, right);
        else
            sound->processVoices(list, n, left, right, frames);
        if (count == most) mixAll();
    }
    mixAll();
}

int CSampler::gather(int from, CVoice** found) {
    CSound* sound = voices[from].sound;
    int count = 0;
    for (int i = from; i < voiceCount; i++)
        if (takesPart(voices[i]) && voices[i].sound == sound) found[count++] = &voices[i];
    sound->voicesRendered = count;
    return count;
}

void CSampler::mixSound(const SoundSum& sum, int frames, int offset) {
    const auto& [sound, last, left, right] = sum;
    for (int i = 0; i < targetCount; i++) sound->curShown[i] = sound->cur[i];
    for (int i = 0; i < lfoCount; i++) {
        const CLFOStage& stage = last->lfoStages[i];
        sound->lfo[i]->shownPhase = float(stage.phase);
        sound->lfo[i]->shownValue = stage.value;
    }
    for (auto& insert : sound->fx) {
        if (!insert->enabled) continue;
        insert->tempo = host->tempoNow;
        insert->settles = sound->ahead == 0;
        insert->process(left, right, left, right, frames);
    }
    CSynthProg* prog = getProg();
    for (int k = 0; prog && k < progSends; k++) {
        const float amount = sound->sends[k];
        CFX& send = *prog->fx[k];
        if (!send.enabled || !(amount > 0.0f) || !send.bufL) continue;
        addScaled(send.bufL + offset, left, frames, amount);
        addScaled(send.bufR + offset, right, frames, amount);
    }
    COutputChannel* channel = output();
    addScaled(channel->bufL + offset, left, frames, 1.0f);
    addScaled(channel->bufR + offset, right, frames, 1.0f);
}

// Events.

void CSampler::pianoKeys(const int* released, const int* pressed) {
    for (int key = 0; key < 128; key++)
        for (int i = 0; i < released[key]; i++) guiQueue.push(asData(midiNoteOn, key, 0));
    for (int key = 0; key < 128; key++)
        for (int i = 0; i < pressed[key]; i++)
            guiQueue.push(asData(midiNoteOn, key, pianoVelocity));
}

void CSampler::doMapping(CMIDIBytes* event) {
    if (event->kind == eventParam) {
        if (param(event->param) != event->value) setParam(event->param, event->value);
        return;
    }
    const int data = event->data;
    if (::noteOff(data)) {
        if (!pedal.holds(chByte(data), asByte1(data))) noteOff(asByte1(data));
        return;
    }
    movePedal(data);
    CSynthProg* prog = getProg();
    if (!prog) return;
    const auto control = [prog](int controller, int value) {
        prog->eachSound(
            [&](CSound* s) { setValue(s, s->ccMap[controller], float(value) / 127.0f); });
    };
    const int first = asByte1(data) & 127;
    switch (statusByte(data)) {
    case midiNoteOn:
        prog->eachSound([&](CSound* s) { noteOn(s, data); });
        break;
    case midiController:
        if (first == ccAllNotesOff)
            allNotesOff();
        else
            control(first, asByte2(data));
        break;
    case midiPressure:
        control(ccWheel, first);
        break;
    case midiPitchBend:
        prog->bend[0] = float(asByte2(data) * 128 + asByte1(data) - 8192) / 8192.0f;
        break;
    default:
        break;
    }
}

void CSampler::movePedal(int data) {
    if (::noteOn(data)) pedal.press(chByte(data), asByte1(data));
    if (statusByte(data) == midiController && asByte1(data) == SustainPedal::controller)
        pedal.move(chByte(data), asByte2(data), [this](int key) { noteOff(key); });
}

void CSampler::noteOff(int note) {
    for (CVoice& v : voices) {
        if (v.state != CVoice::sounding || v.note != note) continue;
        if (v.stages[0].stage == phaseRelease) continue;
        for (int i = 0; i < v.modCount; i++) {
            v.mods[i]->noteOff(&v.stages[i]);
            const bool envelope = i >= 1 && i < envelopeCount;
            if (envelope && v.sound->envelope[i]->release == 1.0f) v.stages[i].active = false;
        }
    }
}

void CSampler::noteOn(CSound* s, int data) {
    const int note = asByte1(data), velocity = asByte2(data);
    if (s->mute || note < s->lowKey || note > s->hiKey) return;
    if (velocity < s->lowVel || velocity > s->hiVel) return;
    CVoice* voice = addVoice(s, data, s->group);
    if (!voice) return;
    voice->host = host;
    s->initVoice(voice);
}

// A voice in its tail ends the scan for all behind it. Once the component is linked, the scan goes
// on past free voices, so that one to take over may be found behind them, and the last free one is
// taken.
int CSampler::findVoice(CSound* sound, unsigned char group, CVoice*& previous) {
    int found = -1;
    for (int i = 0; i < voiceCount; i++) {
        CVoice& v = voices[i];
        if (v.state != CVoice::sounding) {
            found = i;
            if (group == 0 && listKind == listNone) return found;
            continue;
        }
        if (v.tail > 0) return found;
        if (v.sound == sound) previous = &v;
        if (v.sound == sound && sound->mode == soundMono) return i;
        if (group != 0 && v.group == group) return i;
    }
    return found;
}

CVoice* CSampler::addVoice(CSound* sound, int midiData, unsigned char group) {
    CVoice* previous = nullptr;
    const int index = findVoice(sound, group, previous);
    if (index < 0) return nullptr;
    CVoice& v = voices[index];
    if (v.state == CVoice::sounding && v.sound == sound && sound->mode == soundMono) {
        legato(&v, asByte1(midiData));
        return nullptr;
    }
    v.previous = previous;
    startVoice(&v, sound, midiData, group);
    return &v;
}

void CSampler::legato(CVoice* v, int note) {
    v->note = note;
    v->glideLeft = asRound(int(v->sound->glide) * double(float(host->rate)) * 0.001);
    if (v->glideLeft > 0)
        v->glideStep = (float(note) - v->pitch) / float(v->glideLeft);
    else
        v->pitch = float(note);
    if (v->stages[0].stage == phaseRelease) v->sound->initMods(v);
}

void CSampler::startVoice(CVoice* v, CSound* sound, int data, unsigned char group) {
    const float rate = host->rate;
    v->note = asByte1(data);
    v->pitch = float(v->note);
    v->glideLeft = 0;
    if (sound->lastNote != -1.0f) v->glideLeft = asRound(int(sound->glide) * double(rate) * 0.001);
    if (v->glideLeft > 0) {
        v->pitch = sound->lastNote;
        v->glideStep = (float(v->note) - v->pitch) / float(v->glideLeft);
    }
    sound->lastNote = float(v->note);
    v->channel = (unsigned char)chByte(data);
    v->group = group;
    v->velocity = float(asByte2(data)) / 127.0f;
    v->rate = rate;
    v->sound = sound;
    v->tail = 0;
    sound->startVoice(v);
    v->state = CVoice::sounding;
}

void CSampler::allNotesOff() {
    assert(mayRewire());
    for (CVoice& v : voices) endVoice(&v);
    std::memset(held, 0, sizeof held);
    pedal.clear();
}

void CSampler::muteSound(CSound* sound) {
    muteAll(sound);
}

#include "base/Numbers.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/CArp.h"

#include <algorithm>

// What an arpeggiator does in a block.

namespace {

/// Frames by which a step may miss the half of a frame and still count as on it, so that how the
/// signal is cut into blocks does not decide which way it is rounded.
constexpr double halfSlack = 1e-6;

bool isNote(int msg) {
    return noteOn(msg) || noteOff(msg);
}

bool isController(int msg) {
    return statusByte(msg) == midiController;
}

bool silencesAll(const CMIDIBytes* e) {
    return e->kind == eventMidi && isController(e->data) && asByte1(e->data) == ccAllNotesOff;
}

/// Data bytes of a message; what comes from outside may have their upper bit set.
int keyOf(int msg) {
    return asByte1(msg) & 127;
}
int valueOf(int msg) {
    return asByte2(msg) & 127;
}

/// Index of a note in `CArp::through`.
size_t noteIndex(int msg) {
    return size_t(chByte(msg) * 128 + keyOf(msg));
}

int chanceVelocity(const CArpVoice& v, int velocity, double chance) {
    const double rnd = double(v.prog->rndVelocity);
    return asMax(1, asRound((1.0 - rnd + rnd * chance) * velocity));
}

} // namespace

void CArp::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    serveRequests();
    reseed();
    if (wasOn && !enabled) deleteAllVoices();
    wasOn = enabled != 0;
    mergeMIDI(frames);
    CMIDIQ* in = inPort();
    CMIDIQ* out = outPort();
    if (!in || !out) return;
    const bool on = enabled && getProg();
    int offset = 0;
    for (const CMIDIBytes* e = in->first(); e; e = e->next) {
        const bool mapped = on && isMapped(e), panic = silencesAll(e);
        if (mapped || panic) {
            const int at = CMIDIQ::frameOf(e, offset, frames);
            if (at > offset) processBlock(at - offset, offset, out);
            offset = at;
        }
        if (panic) silence();
        if (!mapped || wentThrough(e)) pass(e, out);
        if (mapped) doMapping(e);
    }
    if (offset < frames) processBlock(frames - offset, offset, out);
    show();
}

/// Only what differs from what was told last.
void CArp::show() {
    const CArpProg* prog = getProg();
    const CArpVoice* voice = activeVoice();
    const int keys = prog && voice ? prog->keyCount : 0, taken = voice ? voice->taken : 0;
    const auto same = [](const CArpKey& a, const CArpKey& b) { return a.key == b.key; };
    if (taken == told.taken && keys == told.keyCount &&
        (!keys || std::equal(prog->keys, prog->keys + keys, told.keys, same)))
        return;
    told.taken = taken;
    told.keyCount = keys;
    if (keys) std::copy_n(prog->keys, keys, told.keys);
    sight.draft() = told;
    sight.publish();
}

void CArp::pass(const CMIDIBytes* e, CMIDIQ* out) {
    out->insert(e->time, e->data, e->kind, e->value, e->param, e->owner, e->extra);
    if (e->kind == eventMidi && isNote(e->data)) through.set(noteIndex(e->data), noteOn(e->data));
}

/// Whether an event ends a note that was played through while the arpeggiator was off.
bool CArp::wentThrough(const CMIDIBytes* e) const {
    return noteOff(e->data) && through.test(noteIndex(e->data));
}

/// Lets go of all keys, and ends what sounds with the next frame that is played.
void CArp::silence() {
    deleteAllVoices();
    for (int i = 0; i < noteOffs->count; i++) noteOffs->events[i].time = 0.0;
    through.reset();
}

bool CArp::isMapped(const CMIDIBytes* e) const {
    if (e->kind != eventMidi) return false;
    if (!isController(e->data)) return isNote(e->data);
    const int number = asByte1(e->data);
    return number == ccGate || number == ccSwing;
}

void CArp::doMapping(const CMIDIBytes* e) {
    CArpProg* prog = getProg();
    if (!prog) return;
    if (isController(e->data)) return controlled(e->data);
    CArpVoice* voice = noteOn(e->data) ? keyPressed(e->data) : keyReleased(keyOf(e->data));
    if (voice) voice->prog = prog;
    prog->buildPattern(voice, chance);
}

void CArp::controlled(int msg) {
    const float value = float(valueOf(msg)) / 127.0f;
    if (asByte1(msg) == ccGate) getProg()->setGate(value);
    if (asByte1(msg) == ccSwing) getProg()->setSwing(value);
}

CArpVoice* CArp::keyPressed(int msg) {
    CArpProg* prog = getProg();
    const int note = keyOf(msg);
    const bool newChord = latch && prog->latchHeld < 1;
    const double grid = getSync();
    if (newChord && prog->keyCount > 0) deleteAllVoices();
    if (CArpKey* held = prog->getkeyPressed(note)) {
        held->down = true;
        return nullptr;
    }
    CArpVoice* voice = addVoice(note, chByte(msg));
    if (newChord && voice) voice->nextTick = swing[0] * grid;
    prog->addKey(note, valueOf(msg));
    if (latch) prog->latchHeld++;
    return voice;
}

CArpVoice* CArp::keyReleased(int note) {
    CArpProg* prog = getProg();
    if (latch) {
        if (CArpKey* held = prog->getkeyPressed(note)) held->down = false;
        prog->latchHeld = prog->keyCount < 1 ? 0 : asMax(0, prog->latchHeld - 1);
        return nullptr;
    }
    // Another program may have been current when the key was pressed.
    for (auto* p : programs()) p->removeKey(note);
    CArpVoice* voice = activeVoice();
    if (!voice || prog->keyCount > 0) return voice;
    voice->active = false;
    return nullptr;
}

void CArp::releaseLatched() {
    for (auto* p : programs()) p->removeLatched();
    CArpProg* prog = getProg();
    if (!prog || prog->keyCount < 1) return deleteAllVoices();
    prog->buildPattern(activeVoice(), chance);
}

CArpVoice* CArp::activeVoice() {
    for (CArpVoice& v : voices)
        if (v.active) return &v;
    return nullptr;
}

CArpVoice* CArp::addVoice(int note, int channel) {
    if (CArpVoice* running = activeVoice()) return running;
    CArpVoice& v = voices[0];
    v.note = note;
    v.channel = channel;
    v.active = true;
    v.nextTick = 0.0;
    v.count = v.step = v.swingPhase = v.played = v.octave = v.taken = 0;
    v.octaveDir = 1;
    v.prog = getProg();
    v.swing = v.prog->getSwing();
    return &v;
}

void CArp::deleteAllVoices() {
    for (CArpVoice& v : voices) {
        v.active = false;
        v.prog = nullptr;
    }
    for (auto* prog : programs()) prog->removeAllKeys();
}

double CArp::getSync() {
    const CArpVoice* v = activeVoice();
    return v ? v->nextTick : 0.0;
}

int CArp::frameOf(double ticks) const {
    return asRound(ticks / host->ticksPerFrame() + halfSlack);
}

void CArp::processBlock(int frames, int offset, CMIDIQ* out) {
    if (enabled) {
        for (CArpVoice& v : voices)
            if (v.active) runVoice(v, frames, offset, out);
    }
    playNoteOffs(frames, offset, out);
}

void CArp::runVoice(CArpVoice& v, int frames, int offset, CMIDIQ* out) {
    int at = 0;
    while ((at = frameOf(v.nextTick)) < frames) {
        playStep(v, asMax(at, 0) + offset, out);
        v.advance();
    }
    v.nextTick -= frames * host->ticksPerFrame();
}

void CArp::playStep(CArpVoice& v, int frame, CMIDIQ* out) {
    const double drawn = chance.unit();
    int first = 0, last = 0;
    if (!v.takeStep(chance, first, last)) return;
    // Each note takes a place now and one at its end, which every pending note-off has kept free.
    const int places = out->count + noteOffs->count + 2 * (last - first + 1);
    if (double(v.prog->prob) < drawn || places > CMIDIQ::maxEvents) return;
    for (int i = first; i <= last; i++) playNote(v, v.pattern[i], drawn, frame, out);
}

void CArp::playNote(const CArpVoice& v, const CArpKey& key, double drawn, int frame, CMIDIQ* out) {
    const int note = key.key + v.octave + CArpKey::middle;
    if (note < 0 || note > 127) return;
    const int velocity = chanceVelocity(v, key.velocity, drawn);
    out->insert(frame, asData(midiNoteOn | v.channel, note, velocity), eventMidi, 0.0f, 0, nullptr,
                nullptr);
    noteOffs->addMidiEvent(v.nextTick + v.gateTicks(drawn),
                           asData(midiNoteOff | v.channel, note, 0));
}

/// A note-off that finds no place waits for the next block.
void CArp::playNoteOffs(int frames, int offset, CMIDIQ* out) {
    const double end = frames * host->ticksPerFrame();
    noteOffsTmp->clear();
    for (const CMIDIBytes* e = noteOffs->first(); e; e = e->next) {
        const int at = frameOf(e->time);
        if (at < frames && out->count < CMIDIQ::maxEvents)
            out->insert(asMax(at, 0) + offset, e->data, eventMidi, 0.0f, 0, nullptr, nullptr);
        else
            noteOffsTmp->addMidiEvent(e->time - end, e->data);
    }
    noteOffs.swap(noteOffsTmp);
}

#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "engine/StripEvents.h"
#include "engine/plan/GraphPlan.h"
#include "plugins/PluginComp.h"
#include "plugins/SteadyClock.h"

#include <algorithm>
#include <cmath>

// The part of a plug-in in a block.

namespace {

enum : int { dozing = 1, awake = 2 };
constexpr double quietPower = 1e-10, dozeSeconds = 2.0;

double power(const float* samples, int frames) {
    double sum = 0.0;
    for (int i = 0; i < frames; i++) sum += double(samples[i]) * double(samples[i]);
    return sum;
}

template <class Channel>
double powerOf(const ListOf<Channel>& channels, int frames) {
    double sum = 0.0;
    for (auto* channel : channels)
        sum += power(channel->bufL, frames) + power(channel->bufR, frames);
    return sum;
}

} // namespace

void PluginComp::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    noteLoad(frames);
    if (!takenIn) takeIn(frames);
    takenIn = false;
    if (playsFrozen(this)) {
        fxDone = true; // the file holds the strips
        return;
    }
    const bool effect = isEffect();
    if (effect && !editorOpen && !wakesUp()) {
        passThrough(frames, 0);
    } else {
        renderPieces(frames);
        if (effect || listKind == listComps) spreadOutputs(frames);
        if (effect) doze(frames);
    }
    if (mine) claim.leave();
    mine = false;
}

/// Of the block before this one.
void PluginComp::noteLoad(int frames) {
    constexpr float seconds = 0.5f;
    const float block = float(frames) / host->rate;
    const float now = float(workNs) * 1e-9f / block, before = workShare;
    workShare = before + (now - before) * std::min(block / seconds, 1.0f);
    workNs = 0;
}

/// All that arrives in a block, up to where the plug-in takes over.
void PluginComp::takeIn(int frames) {
    mergeMIDI(frames);
    if (playsFrozen(this)) return;
    mergeAudio(frames);
    mine = claim.tryRender();
    startTicks = blockStart(frames);
    if (listKind != listNone) foldInputs(frames);
}

/// Only whole blocks: where parameters cut one, its pieces follow each other.
void PluginComp::beginAhead(int frames) {
    if (processed || busy || !elsewhere) return;
    takeIn(frames);
    takenIn = true;
    if (isEffect() && !editorOpen && !wakesUp()) return;
    bool whole = enabled && mine && running;
    eachOwnEvent(
        this, inPort(), frames, [](int, int) {}, [&whole](const CMIDIBytes*) { whole = false; });
    if (!whole) return;
    takePiece(frames, 0);
    rendering = true;
    plugin->begin(pins.in(), frames);
    rendering = false;
    begun = true;
}

/// A channel of one pin hears both sides of what is cabled to it.
void PluginComp::foldInputs(int frames) const {
    for (auto* channel : inputs) {
        if (channel->channels != 1) continue;
        for (int i = 0; i < frames; i++)
            channel->bufL[i] = (channel->bufL[i] + channel->bufR[i]) * 0.5f;
    }
}

void PluginComp::spreadOutputs(int frames) const {
    for (auto* channel : outputs)
        if (channel->channels == 1) std::copy_n(channel->bufL, frames, channel->bufR);
}

bool PluginComp::wakesUp() {
    if (idleState != dozing) return true;
    if (powerOf<CInputChannel>(inputs, host->frames) <= quietPower) return false;
    idleState = awake;
    silence = 0;
    return true;
}

/// An effect that has been silent for a while costs nothing until something comes in.
void PluginComp::doze(int frames) {
    if (powerOf<COutputChannel>(outputs, frames) >= quietPower) {
        silence = 0;
        return;
    }
    silence += frames;
    if (silence >= asInt(double(host->rate) * dozeSeconds)) idleState = dozing;
}

void PluginComp::renderPieces(int frames) {
    eachOwnEvent(
        this, inPort(), frames, [this](int count, int offset) { subProcess(count, offset); },
        [this](const CMIDIBytes* e) { doMapping(e); });
}

void PluginComp::subProcess(int frames, int offset) {
    const bool runs = begun || (enabled && mine && plugin && running);
    if (runs && runPlugin(frames, offset)) return;
    if (!enabled || !playsNotes) passThrough(frames, offset);
}

void PluginComp::takePiece(int frames, int offset) {
    pieceStart = offset;
    for (auto* port : outPorts)
        if (offset == 0) port->clear();
    pins.take(inputs, frames, offset);
    pins.clearOutputs(frames);
    addNotes(frames, offset);
}

/// False where nothing of its output can be used.
bool PluginComp::runPlugin(int frames, int offset) {
    if (!begun) takePiece(frames, offset);
    begun = false;
    rendering = true;
    const int64_t from = steadyNs();
    const bool whole = plugin->process(pins.in(), pins.out(), frames);
    const int64_t worked = plugin->workedNs();
    workNs += worked >= 0 ? worked : steadyNs() - from;
    rendering = false;
    const bool numbers = pins.mendOutputs(frames);
    if ((!whole && !plugin->missedBlock()) || !numbers) faults.fetchAdd(1);
    if (whole) pins.give(outputs, frames, offset);
    return whole;
}

/// Of a send bus nothing is passed on: what it was sent is heard elsewhere already.
void PluginComp::passThrough(int frames, int offset) const {
    const auto* in = inputs.items(0);
    auto* out = outputs.items(0);
    if (listKind == listSends || !in || !out) return;
    std::copy_n(in->bufL + offset, frames, out->bufL + offset);
    std::copy_n((in->channels == 1 ? in->bufL : in->bufR) + offset, frames, out->bufR + offset);
}

void PluginComp::addNotes(int frames, int offset) {
    CMIDIQ* port = inPort();
    const int heard = mch;
    for (const CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
        const int at = asRound(e->time) - offset;
        const bool ours = e->kind == eventMidi && (!e->owner || e->owner == port);
        if (!ours || at < 0 || at >= frames) continue;
        if (heard == -1 || heard == chByte(e->data)) plugin->addMidi(at, e->data);
    }
}

void PluginComp::doMapping(const CMIDIBytes* event) {
    if (event->param == paramPower)
        CComp::enable(asRound(double(event->value)) > 0);
    else if (event->param == paramWet)
        setParam(paramWet, event->value);
    else if (mine)
        setParam(event->param, event->value);
}

// Where the song is.

/// Ticks of the first frame that it works on: what comes late from others is earlier in the song.
/// Another sequencer than the song's may have been through the block already.
double PluginComp::blockStart(int frames) const {
    CComp* song = sourceSeq;
    if (!song || song == host->masterSeq) return std::max(host->plans->timeOf(this).ticks, 0.0);
    const double at = song->getPos();
    if (!host->playing || !song->processed) return at;
    const double before = at - host->framesToTicks(frames);
    int from = 0, to = 0;
    song->getLoopSection(from, to);
    const bool wrapped = song->getLoop() && to > from && at >= from && before < from &&
                         startTicks >= from && !host->positionJumped;
    return std::max(wrapped ? before + to - from : before, 0.0);
}

PluginTime PluginComp::songTime() const {
    constexpr double beat = 960.0;
    CComp* song = sourceSeq ? sourceSeq.load() : host->masterSeq.load();
    int from = host->loopStart, to = host->loopEnd;
    PluginTime now;
    if (song) {
        song->getTimeSig(now.numerator, now.denominator);
        song->getLoopSection(from, to);
    }
    const double place = song ? song->getPos() : double(host->pos);
    now.beats = (rendering ? double(startTicks) : place) / beat;
    const double bar = 4.0 * now.numerator / std::max(now.denominator, 1);
    if (bar > 0.0) now.barStart = std::floor(now.beats / bar) * bar;
    now.looping = (song ? song->getLoop() : int(host->loop)) != 0;
    now.loopStart = from / beat;
    now.loopEnd = to / beat;
    now.frames = double(host->framesPlayed.load());
    now.rate = sampleRate();
    now.tempo = double(host->tempoNow);
    now.playing = host->playing;
    now.recording = host->recording;
    now.jumped = rendering && host->positionJumped;
    return now;
}

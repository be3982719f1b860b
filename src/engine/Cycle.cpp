#include "engine/Cycle.h"

#include "base/Denormals.h"
#include "base/Futex.h"
#include "base/GraphMark.h"
#include "base/Numbers.h"
#include "engine/CClick.h"
#include "engine/CPreviewBase.h"
#include "engine/CQV.h"
#include "engine/DeviceComps.h"
#include "engine/DeviceMidi.h"
#include "engine/ObjectKinds.h"
#include "engine/SongClock.h"
#include "engine/SpectrumTap.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include "driver/libaam.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

namespace {

thread_local bool inCallback = false;

/// The buffers of one call of the driver, and the part of them that is worked out.
struct DeviceBlock {
    float** ins;
    float** outs;
    long numIns, numOuts;
    int whole;                    ///< frames of the call
    std::span<const AamEvent> in; ///< MIDI
    std::span<AamEvent> room;     ///< for MIDI that goes out
    int frames = 0, from = 0;     ///< of the part
    size_t sent = 0;              ///< events of `room` that are filled
};

/// The graph belongs to an operation that leaves nothing of what sounds now.
bool offline() {
    return qv->audioSuspended || qv->renderMode == 1;
}

/// Waits for an interface that has the graph for a moment, a quarter of the block at most: a block
/// that is left out is heard.
bool takeGraph(long frames) {
    const double mostNs = 1e9 * double(frames) / double(qv->rate) / 4;
    StopWatch watch;
    for (double waited = 0; !qv->tryHold(GraphOwner::audio); waited += watch.lap()) {
        if (waited > mostNs || offline()) return false;
        spinPause();
    }
    return true;
}

/// The audio thread's turn on the graph.
class CallbackTurn {
public:
    explicit CallbackTurn(long frames) : ok(takeGraph(frames)) {
        if (ok) mark.emplace(qv);
        inCallback = ok;
    }
    ~CallbackTurn() {
        inCallback = false;
        mark.reset();
        if (ok) qv->releaseHold();
    }
    CallbackTurn(const CallbackTurn&) = delete;
    CallbackTurn& operator=(const CallbackTurn&) = delete;

    const bool ok;

private:
    std::optional<GraphMark> mark;
};

void receive(CMIDIIn* c, const DeviceBlock& block) {
    CMIDIQ* port = c->outPort();
    if (!port) return;
    const int device = c->device, reserved = qv->deviceMidi->controlIn;
    for (const AamEvent& e : block.in) {
        if (isClockMessage(e.data) || (reserved >= 0 && e.device == reserved) ||
            (device != -1 && e.device != device))
            continue;
        const int frame = std::clamp(e.frame, 0, block.whole - 1) - block.from;
        if (frame < 0 || frame >= block.frames) continue;
        port->insert(frame, e.data, eventMidi, 0.0f, 0, nullptr, nullptr);
    }
}

void receive(CAudioIn* c, const DeviceBlock& block) {
    COutputChannel* ch = c->output();
    if (!ch || c->chs < 1) return;
    const int first = c->dev0, second = c->chs == 1 ? c->dev0 : c->dev1;
    if (first < 0 || first >= block.numIns || second < 0 || second >= block.numIns) return;
    std::copy_n(block.ins[first] + block.from, block.frames, ch->bufL);
    std::copy_n(block.ins[second] + block.from, block.frames, ch->bufR);
}

float deviceSample(float value) {
    if (!(std::fabs(value) <= std::numeric_limits<float>::max())) return 0.0f;
    return std::clamp(value, -1.0f, 1.0f);
}

/// out = (out + in) * g, within -1 to 1.
void add(float* out, const float* in, float g, int frames) {
    for (int i = 0; i < frames; ++i) out[i] = deviceSample((out[i] + in[i]) * g);
}

void send(CAudioOut* c, const DeviceBlock& block, float g) {
    const COutputChannel* ch = c->output();
    if (!ch || c->chs < 1) return;
    const int first = c->dev0, second = c->dev1;
    if (first < 0 || first >= block.numOuts) return;
    if (c->chs == 1) {
        float* out = block.outs[first] + block.from;
        for (int i = 0; i < block.frames; ++i)
            out[i] = deviceSample((out[i] + (ch->bufL[i] + ch->bufR[i]) * 0.5f) * g);
        return;
    }
    if (second < 0 || second >= block.numOuts) return;
    add(block.outs[first] + block.from, ch->bufL, g, block.frames);
    add(block.outs[second] + block.from, ch->bufR, g, block.frames);
}

void send(CMIDIOut* c, DeviceBlock& block) {
    CMIDIQ* port = c->inPort();
    const int device = c->device;
    for (const CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
        if (e->kind != eventMidi) continue;
        if (block.sent == block.room.size()) break;
        const int frame = std::clamp(asInt(e->time), 0, block.frames - 1);
        block.room[block.sent++] = {e->data, int8_t(device), {}, block.from + frame};
    }
}

void receiveAll(const DeviceBlock& block) {
    for (CComp* c : qv->comps) {
        if (auto* midi = compAs<CMIDIIn>(c)) receive(midi, block);
        if (auto* audio = compAs<CAudioIn>(c)) receive(audio, block);
    }
}

void sendAll(DeviceBlock& block) {
    const float g = qv->listenVolume * qv->listenVolume;
    if (block.from == 0) block.sent = size_t(qv->deviceMidi->endNotes(block.room));
    const size_t ended = block.sent;
    if (block.from == 0)
        block.sent += size_t(qv->deviceMidi->sendOutside(block.room.subspan(ended)));
    for (CComp* c : qv->comps) {
        if (auto* audio = compAs<CAudioOut>(c)) send(audio, block, g);
        if (auto* midi = compAs<CMIDIOut>(c)) send(midi, block);
    }
    qv->deviceMidi->follow(block.room.subspan(ended, block.sent - ended));
}

/// Most frames of the next part of a block: a stride of the song, and a count-in, end with one.
int mostOfPart() {
    const int room = qv->clock->room(), countIn = qv->click->countIn;
    return countIn > 0 ? std::min(room, countIn) : room;
}

/// Hands in the clock and the time code of others where the part begins. Frames to its next
/// message, at which a part ends: most of a block without one.
int followClock(const DeviceBlock& block) {
    MidiClockIn& clock = qv->deviceMidi->clockIn;
    TimeCodeIn& code = qv->deviceMidi->codeIn;
    int next = block.whole;
    if (clock.device == noClockDevice && code.device == noClockDevice)
        return code.most(next - block.from);
    for (const AamEvent& e : block.in) {
        const int frame = std::clamp(e.frame, 0, block.whole - 1);
        const bool beats = clock.follows(e);
        if ((!beats && !code.follows(e)) || frame < block.from) continue;
        if (frame > block.from)
            next = std::min(next, frame);
        else if (beats)
            clock.take(e.data);
        else
            code.take(e.data);
    }
    return code.most(next - block.from);
}

double songPosition() {
    CComp* song = qv->getMasterSeq();
    return song ? song->getPos() : double(qv->pos);
}

/// The clock and the time code for others, of the part that was worked out; `ticks` is where it
/// began.
void sendClock(DeviceBlock& block, double ticks) {
    const MidiClockOut::Part part{qv->playing != 0, ticks, qv->ticksPerFrame(), block.from,
                                  block.frames};
    block.sent += qv->deviceMidi->clockOut.write(part, block.room.subspan(block.sent));
    block.sent += qv->deviceMidi->codeOut.write(part, block.room.subspan(block.sent));
}

/// Works out the next part of a block; false when the graph went to an operation that leaves
/// nothing of what sounds.
bool runPart(DeviceBlock& block) {
    qv->serveTransport();
    const int untilClock = followClock(block);
    block.frames = std::min({block.whole - block.from, mostOfPart(), untilClock});
    qv->prepare(block.frames);
    receiveAll(block);
    const double began = songPosition();
    qv->process(block.frames);
    if (offline()) return false;
    sendAll(block);
    sendClock(block, began);
    qv->deviceMidi->clockIn.advance(block.frames);
    qv->deviceMidi->codeIn.advance(block.frames);
    block.from += block.frames;
    return true;
}

unsigned ofWholeBlock(unsigned ns, int frames) {
    return unsigned(
        std::min(uint64_t(ns) * uint64_t(qv->frames) / uint64_t(frames), uint64_t(~0u)));
}

long endOutside(std::span<AamEvent> room) {
    qv->deviceMidi->forgetKept();
    return qv->deviceMidi->endNotes(room);
}

} // namespace

CallbackMark::CallbackMark() {
    inCallback = true;
}

CallbackMark::~CallbackMark() {
    inCallback = false;
}

bool insideCallback() {
    return inCallback;
}

long libio(float** ins, float** outs, long numIns, long numOuts, long frames, void* events,
           int numEvents) {
    for (long i = 0; i < numOuts; ++i) std::fill_n(outs[i], std::max(frames, 0l), 0.0f);
    const std::span room(static_cast<AamEvent*>(events), events ? size_t(aamMaxEvents) : 0);
    const std::span in = room.first(size_t(std::clamp(numEvents, 0, int(room.size()))));
    qv->deviceMidi->calls.fetchAdd(1);
    if (offline()) return endOutside(room);
    StopWatch watch;
    const CallbackTurn turn(frames);
    if (!turn.ok || offline() || qv->busy || frames < 1 || frames > qv->frames) {
        qv->deviceMidi->keep(in);
        return qv->deviceMidi->endNotes(room);
    }
    DeviceBlock block{ins, outs, numIns, numOuts, int(frames), qv->deviceMidi->take(in), room};
    if (!block.in.empty()) qv->midiActivity = 1.0f;
    while (block.from < block.whole)
        if (!runPart(block)) break;
    qv->workers->calls.note(ofWholeBlock(watch.lap(), block.whole));
    return block.from < block.whole ? 0 : long(block.sent);
}

void CQV::process(int n) {
    serveTransport();
    const bool counting = recording && click->countIn >= 1;
    if (!counting && (clock->due() || !playing)) tempoNow = tempo;
    if (busy) return;
    busy = true;
    flushDenormals();
    if (!insideCallback()) plans->refresh();
    assert(plans->current().fresh());
    plans->followLatency(bool(hostNotices.take(HostNotice::delays)));
    if (!processed) runBlock(n);
    busy = false;
}

void CQV::runBlock(int n) {
    ++blocks;
    if (transportChanged) {
        transportChanged = false;
        positionJumped = true;
    }
    if (recording && !playing && click->countIn == 0 && sync == 0) {
        startNow();
        tempoNow = tempo;
    }
    if (clock->due()) clock->begin();
    handleMIDIIn();
    plans->noteTime(n);
    plans->current().run(n);
    if (playing) advance(n);
    if (spectrumOn) spectrum->leave(getAudioOut(), n);
    plans->current().runLate(n);
    if (auto* out = compAs<CAudioOut>(getAudioOut()); out && renderMode == 0) out->playListened(n);
    tasks->exec(false);
    if (renderPending) {
        renderPending = false;
        renderMode = 1;
    }
    runPreview(n);
    if (renderMode == 0) click->render(n);
    clock->advance(n);
    positionJumped = false;
    processed = true;
}

void CQV::runPreview(int n) {
    CPreviewBase* first = renderMode == 1 ? nullptr : preview.loadAcquire();
    CComp* out = first ? getAudioOut() : nullptr;
    COutputChannel* ch = out ? out->output() : nullptr;
    if (!ch) return;
    for (CPreviewBase* p = first; p; p = p->next.loadAcquire())
        if (p->getPlaying())
            p->process(ch->bufL, ch->bufR, scratch().left.data(), scratch().right.data(), n);
}

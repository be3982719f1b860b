#include "engine/Cycle.h"

#include "base/Denormals.h"
#include "base/GraphMark.h"
#include "base/Numbers.h"
#include "engine/CClick.h"
#include "engine/CPreviewBase.h"
#include "engine/CQV.h"
#include "engine/DeviceComps.h"
#include "engine/DeviceMidi.h"
#include "engine/SpectrumTap.h"
#include "engine/TransportRing.h"
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

/// The buffers of one call of the driver.
struct DeviceBlock {
    float** ins;
    float** outs;
    long numIns, numOuts;
    int frames;
    std::span<const AamEvent> in; ///< MIDI; void as soon as `room` is written to
    std::span<AamEvent> room;     ///< for MIDI that goes out
};

/// The audio thread's turn on the graph.
class CallbackTurn {
public:
    CallbackTurn() : ok(qv->tryHold(GraphOwner::audio)) {
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

/// The graph belongs to an operation that leaves nothing of what sounds now.
bool offline() {
    return qv->audioSuspended || qv->renderMode == 1;
}

void receive(CMIDIIn* c, const DeviceBlock& block) {
    CMIDIQ* port = c->outPort();
    if (!port) return;
    const int device = c->device;
    for (const AamEvent& e : block.in) {
        if (device != -1 && e.device != device) continue;
        port->insert(std::clamp(e.frame, 0, block.frames - 1), e.data, eventMidi, 0.0f, 0, nullptr,
                     nullptr);
    }
}

void receive(CAudioIn* c, const DeviceBlock& block) {
    COutputChannel* ch = c->output();
    if (!ch || c->chs < 1) return;
    const int first = c->dev0, second = c->chs == 1 ? c->dev0 : c->dev1;
    if (first < 0 || first >= block.numIns || second < 0 || second >= block.numIns) return;
    std::memcpy(ch->bufL, block.ins[first], sizeof(float) * size_t(block.frames));
    std::memcpy(ch->bufR, block.ins[second], sizeof(float) * size_t(block.frames));
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
        float* out = block.outs[first];
        for (int i = 0; i < block.frames; ++i)
            out[i] = deviceSample((out[i] + (ch->bufL[i] + ch->bufR[i]) * 0.5f) * g);
        return;
    }
    if (second < 0 || second >= block.numOuts) return;
    add(block.outs[first], ch->bufL, g, block.frames);
    add(block.outs[second], ch->bufR, g, block.frames);
}

/// Returns the count of records, from `sent` on.
size_t send(CMIDIOut* c, const DeviceBlock& block, size_t sent) {
    CMIDIQ* port = c->inPort();
    const int device = c->device;
    for (const CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
        if (e->kind != eventMidi) continue;
        if (sent == block.room.size()) break;
        const int frame = std::clamp(asInt(e->time), 0, block.frames - 1);
        block.room[sent++] = {e->data, int8_t(device), {}, frame};
    }
    return sent;
}

void receiveAll(const DeviceBlock& block) {
    for (CComp* c : each<CComp>(qv->comps)) {
        if (c->type == compMIDIIn) receive(static_cast<CMIDIIn*>(c), block);
        if (c->type == compAudioIn) receive(static_cast<CAudioIn*>(c), block);
    }
}

long sendAll(const DeviceBlock& block) {
    const float g = qv->listenVolume * qv->listenVolume;
    const size_t ended = size_t(qv->deviceMidi->endNotes(block.room));
    size_t sent = ended + size_t(qv->deviceMidi->sendOutside(block.room.subspan(ended)));
    for (CComp* c : each<CComp>(qv->comps)) {
        if (c->type == compAudioOut) send(static_cast<CAudioOut*>(c), block, g);
        if (c->type == compMIDIOut) sent = send(static_cast<CMIDIOut*>(c), block, sent);
    }
    qv->deviceMidi->follow(block.room.subspan(ended, sent - ended));
    return long(sent);
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
    const CallbackTurn turn;
    if (!turn.ok || offline() || qv->busy || frames < 1 || frames > qv->frames) {
        qv->deviceMidi->keep(in);
        return qv->deviceMidi->endNotes(room);
    }
    const DeviceBlock block{ins, outs, numIns, numOuts, int(frames), qv->deviceMidi->take(in),
                            room};
    qv->prepare(block.frames);
    if (!block.in.empty()) qv->midiActivity = 1.0f;
    receiveAll(block);
    qv->process(block.frames);
    const long sent = offline() ? 0 : sendAll(block);
    qv->workers->calls.note(ofWholeBlock(watch.lap(), block.frames));
    return sent;
}

void CQV::process(int n) {
    assert(heldByThread());
    transport->drain();
    const bool counting = recording && click->countIn >= 1;
    if (!counting) tempoNow = tempo;
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
    if (recording && !playing && click->countIn == 0 && sync == 0) startNow();
    handleMIDIIn();
    plans->noteTime(n);
    plans->current().run(n);
    if (playing) advance(n);
    if (spectrumOn) spectrum->leave(getAudioOut(), n);
    plans->current().runLate(n);
    if (auto* out = static_cast<CAudioOut*>(getAudioOut()); out && renderMode == 0)
        out->playListened(n);
    tasks->exec(false);
    if (renderPending) {
        renderPending = false;
        renderMode = 1;
    }
    runPreview(n);
    if (renderMode == 0) click->render(n);
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

void CQV::advance(int n) {
    framesPlayed = framesPlayed + n;
    double at = pos + framesToTicks(n);
    const int from = loopStart, end = loopEnd;
    if (sync == 1 && loop && end > from && at >= end) at = from + std::fmod(at - from, end - from);
    pos = at;
}

#include "engine/CQV.h"

#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "base/Delegates.h"
#include "base/GraphMark.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "common/fx/CDFT.h"
#include "engine/CAAM.h"
#include "engine/CClick.h"
#include "engine/CFileMapperBase.h"
#include "engine/CMap.h"
#include "engine/CPreviewBase.h"
#include "engine/CUndo.h"
#include "engine/Cycle.h"
#include "engine/DeviceChannels.h"
#include "engine/DeviceComps.h"
#include "engine/DeviceMidi.h"
#include "engine/EditorHooks.h"
#include "engine/Solo.h"
#include "engine/SongClock.h"
#include "engine/SpectrumTap.h"
#include "engine/ValueDoor.h"
#include "engine/Workers.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>
#include <cassert>
#include <utility>

CQV* qv = nullptr;

namespace {

constexpr float activityFall = 0.33f;
/// A take changes parts and the pool.

} // namespace

CQV::CQV()
    : CComp(this), Transport(this), UndoHost(this), SamplePool(this),
      values(std::make_unique<ValueDoor>(this)), deviceMidi(std::make_unique<DeviceMidi>(this)),
      clock(std::make_unique<SongClock>()), plans(std::make_unique<GraphPlans>(this)),
      workers(std::make_unique<GraphWorkers>(this)) {
    type = compQV;
    id = "sondrava";
    tasks = new CTasks(this);
    spectrum = new SpectrumTap;
    spectrum->setFrames(frames);
    dft = new CDFT;
    click = new CClick(this);
    inQueue = new CMIDIQ(nullptr);
    const GraphMark mark(this);
    plans->refresh();
    diskThread = new CDiskThread(this);
    diskThread->start();
    diskThread->setPriority(CDiskThread::priority);
    peakThread = new CPeakThread(this);
    peakThread->start();
    peakThread->setPriority(CPeakThread::priority);
}

CQV::~CQV() {
    writeSettings();
    diskThread->finish();
    peakThread->finish();
    for (CThread* thread : threads) thread->finish();
    CQV::clear();
    delete click;
    delete tasks;
    delete diskThread;
    delete peakThread;
    delete preview.load();
    deleteAll(threads);
    deleteAll(stretchers);
    delete inQueue;
    delete renderCallback;
    delete spectrum;
    delete dft;
}

GraphScratch& CQV::scratch() const {
    return workers->scratch();
}

bool CQV::tryHold(GraphOwner who) {
    if (who == GraphOwner::audio && interfaceInsists) return false;
    GraphOwner expected = GraphOwner::free;
    if (!owner.compare_exchange_strong(expected, who, std::memory_order_acquire,
                                       std::memory_order_relaxed))
        return false;
    if (who == GraphOwner::interface) interfaceInsists = false;
    return true;
}

void CQV::releaseHold() {
    owner.store(GraphOwner::free, std::memory_order_release);
}

void CQV::parkWorkers() {
    diskThread->park();
    peakThread->park();
    for (CThread* thread : threads) thread->park();
}

void CQV::unparkWorkers() {
    for (CThread* thread : threads) thread->unpark();
    peakThread->unpark();
    diskThread->unpark();
}

void CQV::addThread(CThread* thread) {
    threads.add(thread);
}

void CQV::updatePeaks() {
    peakThread->resume();
}

// The cycle's part of a component.

void CQV::prepare(int n) {
    assert(heldByThread());
    if (!insideCallback()) plans->refresh();
    CComp::prepare(n);
    spreadSolo(this);
    plans->current().keepChannels();
    CComp* first = nullptr;
    for (CComp* c : comps) {
        c->listKind = listComps;
        c->prepare(n);
        if (!first && c->type == compSeq) first = c;
    }
    masterSeq = first;
    for (CComp* c : sends) {
        c->listKind = listSends;
        c->prepare(n);
    }
    plans->current().endKeeping();
    plans->current().prepareLeaving(n);
}

void CQV::setFrames(int n) {
    if (n == frames || n < 1) return;
    const GraphHold hold(this);
    frames = n;
    workers->makeScratch();
    spectrum->setFrames(n);
    CComp::setFrames(n);
    for (CComp* c : comps) c->setFrames(n);
    for (CComp* c : sends) c->setFrames(n);
    setHeldFrames(n);
    deleteAll(stretchers);
}

bool CQV::makeStretcher() {
    if (stretchers.getCount() >= stretcherCount) return false;
    stretchers.add(new CElastiqueRender(frames, rate));
    return true;
}

void CQV::setRate(double hz) {
    if (!(hz >= minRate) || float(hz) == rate) return;
    const GraphHold hold(this);
    setClockRate(hz);
    CComp::setRate(hz);
    for (CComp* c : comps) c->setRate(hz);
    for (CComp* c : sends) c->setRate(hz);
    setHeldRate(hz);
    deleteAll(stretchers);
}

CStr CQV::getName(CObject* io) {
    if (io == this) return "Master";
    const int in = inputs.indexed(io), out = outputs.indexed(io);
    if (in >= 0) return "Out " + asStr(in + 1);
    if (out >= 0) return "In " + asStr(out + 1);
    return id;
}

// Steps.

void CQV::perform(CUndoItem* item, int op) {
    for (CComp* c : comps)
        if (c->type == compSeq) c->perform(item, op);
}

bool CQV::takesWhole(const CUndoItem* item) {
    for (CComp* c : comps)
        if (c->type == compSeq && c->takesWhole(item)) return true;
    return false;
}

void CQV::planStep(UndoPlan& plan, CUndo* step) {
    for (CComp* c : comps)
        if (c->type == compSeq) c->planStep(plan, step);
}

void CQV::performPlan() {
    for (CComp* c : comps)
        if (c->type == compSeq) c->performPlan();
}

// The transport.

void CQV::start() {
    askStart();
}

void CQV::stop() {
    askStop();
}

void CQV::rec() {
    askRec();
}

void CQV::setPos(double ticks) {
    askPos(ticks);
}

void CQV::setLoop(ToStore<int> on) {
    loop = on;
}

double CQV::ticksPerFrame() const {
    return clock->exact(framesToTicks(1.0));
}

void CQV::createTempoMap() {
    inQueue->clear();
    if (masterSeq) masterSeq->getTempoMap(inQueue);
}

// The interface tick.

void CQV::idle() {
    if (idling) return;
    idling = true;
    CComp::idle();
    for (CPreviewBase* p = preview; p; p = p->next) p->idle();
    values->idle(asTimeInMS());
    plans->idle();
    workers->followPriority();
    idleTake();
    idleRender();
    idleProgramChange();
    idleMessages();
    for (CComp* c : comps) c->idle();
    for (CComp* c : sends) c->idle();
    editorHooks()->mainIdle();
    midiActivity = std::max(midiActivity - activityFall, 0.0f);
    for (CComp* c : comps) c->afteridle();
    for (CComp* c : sends) c->afteridle();
    if (spectrumOn) spectrum->transform(*dft);
    if (aam) {
        aam->idle();
        deviceMidi->idle(*aam);
    }
    tasks->exec(true);
    undoIdle();
    idling = false;
}

void CQV::idleTake() {
    if (recording && !recUndo)
        recUndo = startTakeStep();
    else if (!recording && recUndo)
        finishTake();
}

void CQV::finishTake() {
    // What the take still has in its queues belongs to this step.
    for (CComp* c : comps)
        if (c->type == compSeq) c->idle();
    // A take that begins now has a step of its own.
    undoEnd(std::exchange(recUndo, nullptr), false);
    for (CComp* c : comps) c->afterRec();
}

void CQV::endTake() {
    {
        const GraphHold hold(this);
        recording = 0;
        click->countIn = 0;
        hostNotices.raise(HostNotice::transport);
    }
    if (recUndo) return finishTake();
    for (CComp* c : comps) c->afterRec();
}

void CQV::idleRender() {
    if (renderPending || !renderCallback) return;
    const GraphHold hold(this);
    COnChange* callback = renderCallback;
    renderCallback = nullptr;
    (*callback)(this);
    delete callback;
    renderMode = 0;
}

void CQV::idleProgramChange() {
    const int program = requestedProgram.exchange(-1);
    if (program >= 0 && fileMapper && fileMapper->enabled()) fileMapper->setProgram(program, true);
}

void CQV::idleMessages() {
    if (CSample::notices.exchange(0) & noticeBufferTooSmall)
        showMsg(nullptr, "Error", "getData buffer too small");
    showQueuedMessages();
}

bool CQV::addTask(COnChange* delegate, CObject* arg) {
    return tasks->add(delegate, arg);
}

void CQV::setRenderCallback(COnChange* callback) {
    if (renderCallback) {
        delete callback;
        return;
    }
    renderCallback = callback;
    renderPending = true;
}

void CQV::aamChanged(CObject*) {
    setFrames(aam->frames);
    setRate(double(aam->rate));
    hostNotices.raise(HostNotice::devices);
}

// A project's beginning and end.

void CQV::init() {
    const Standstill still(this);
    destroyBuffers();
    projectFile = "";
    readSettings();
    sampleManager.emptyTrash();
    for (Shared<int>* binding : {&ctrlStart, &ctrlStop, &ctrlRewind, &ctrlRecord, &ctrlTempo})
        *binding = -1;
    loop = 1;

    auto* midiIn = new CMIDIIn(this);
    addDevice(midiIn, midiIn->posX + 64, midiIn->posY);
    addDevice(new CMIDIOut(this), 96, 256);
    followChannels(this);
    maps.add(new CMapProg);
}

void CQV::addDevice(CComp* c, int x, int y) {
    c->posX = x;
    c->posY = y;
    c->init();
    c->createBuffers(frames);
    comps.add(c);
}

void CQV::clear() {
    const Standstill still(this);
    if (playing || recording) stopNow();
    if (recUndo) finishTake();
    settle();
    emptyProject();
    deviceMidi->askSilence(); // the ends of the notes would have come from what is gone
}

void CQV::emptyProject() {
    id = "sondrava";
    audioFolder = "";
    playing = 0;
    damaged = false;
    masterSeq = nullptr;
    setPosNow(0.0);
    undoClear();
    markSaved(saveMark());
    deleteAll(outPorts);
    deleteAll(midiCables);
    deleteAll(inputs);
    deleteAll(outputs);
    deleteAll(audioCables);
    deleteAll(comps);
    deleteAll<CComp>(sends);
    setTempo(usualTempo);
    tempoNow = usualTempo;
    deleteSamples();
    deleteAll(maps);
    curMap = 0;
    editorHooks()->deleteMap(this);
    mapStruct = CEditorStruct();
    mapStruct.width = 384;
    mapStruct.height = 236;
}

// Looking up.

CComp* CQV::firstOfType(int wanted) {
    for (CComp* c : comps)
        if (c->type == wanted) return c;
    return nullptr;
}

CComp* CQV::getAudioOut() {
    return firstOfType(compAudioOut);
}

CComp* CQV::getAudioIn() {
    return firstOfType(compAudioIn);
}

CComp* CQV::getMIDIIn() {
    return firstOfType(compMIDIIn);
}

CComp* CQV::getMIDIOut() {
    return firstOfType(compMIDIOut);
}

CStr CQV::autoNameComp(const CStr& name) {
    const auto taken = [this](const CStr& wanted) {
        for (const CComp* c : comps)
            if (c->id == wanted) return true;
        return false;
    };
    CStr free = name;
    for (int i = 1; taken(free); ++i) free = name + "-" + asStr(i);
    return free;
}

#include "engine/UndoHost.h"

#include "base/Delegates.h"
#include "base/Messages.h"
#include "engine/CQV.h"
#include "engine/EditorHooks.h"
#include "engine/ForgetHooks.h"
#include "engine/ObjectKinds.h"
#include "engine/SendOrder.h"
#include "engine/ValueDoor.h"
#include "engine/plan/GraphPlan.h"

#include <algorithm>
#include <cassert>

namespace {

/// Whether a transition takes the item's object into the graph, or out of it.
bool enters(const CUndoItem* item, bool forward) {
    return item->moves() && (forward ? item->removeFrom : item->addTo) == &item->holding;
}

bool leaves(const CUndoItem* item, bool forward) {
    return enters(item, !forward);
}

/// What a MIDI cable fed must not go on sounding without it.
void silenceFed(CObject* leaving) {
    if (const CMIDICable* cable = asMidiCable(leaving)) cable->toComp->allNotesOff = 1;
}

template <class F>
void eachSequencer(CQV* qv, F&& visit) {
    for (auto* c : qv->comps)
        if (c->type == compSeq) visit(c);
}

} // namespace

UndoHost::UndoHost(CQV* host) : qv(host) {
}

UndoHost::~UndoHost() {
    if (running && !pending) stepPlan.finish();
    stepPlan.leave();
    deleteAll(dying);
    deleteAll(undoList);
}

bool UndoHost::undoBusy() const {
    const int takes = recUndo && openSteps.contains(recUndo) ? 1 : 0;
    return pending.loadAcquire() || openSteps.getCount() > takes;
}

UndoHost::SaveMark UndoHost::saveMark() {
    qv->values->settle();
    const bool inTake = recUndo && !recUndo->items.empty(); // the file has a part of it
    return {inTake ? nowhere : undoIndex, past};
}

void UndoHost::markSaved(const SaveMark& mark) {
    savedIndex = mark.index;
    savedPast = mark.past;
}

bool UndoHost::modified() const {
    if (savedIndex == nowhere || savedPast != past || qv->values->moved()) return true;
    if (recUndo && !recUndo->items.empty()) return true;
    const auto [from, to] = std::minmax(savedIndex, undoIndex);
    for (int i = from + 1; i <= to; ++i)
        if (!undoList.items(i)->viewOnly) return true;
    return false;
}

CUndo* UndoHost::undoStart(const CStr& name, CComp* comp, const StepEffects& effects) {
    qv->values->settle();
    settle();
    auto* u = new CUndo(name, comp ? comp : qv, effects);
    openSteps.add(u);
    return u;
}

CUndo* UndoHost::startTakeStep() {
    return undoStart("Record", qv, {.host = HostNotice::takes | HostNotice::pool});
}

void UndoHost::undoEnd(CUndo* u, bool wait) {
    if (u->items.empty()) {
        openSteps.remove(u);
        tell(u);
        delete u;
        return;
    }
    settle();
    freeSteps(undoIndex + 1); // what this step holds is told as well of what dies
    openSteps.remove(u);
    undoList.addUnique(u);
    undoIndex = undoList.getCount() - 1;
    queue(u, opDone);
    if (wait) settle();
}

void UndoHost::undoClear() {
    qv->values->end();
    settle();
    const bool unsaved = modified();
    if (recUndo) {
        openSteps.remove(recUndo);
        undoList.addUnique(recUndo);
        recUndo = nullptr;
    }
    freeSteps(0);
    {
        const GraphHold hold(qv);
        qv->plans->endFades();
    }
    endFaded();
    undoIndex = -1;
    savedIndex = unsaved ? nowhere : undoIndex;
}

void UndoHost::undoClicked(CObject*) {
    qv->values->end();
    settle();
    if (qv->recording || recUndo || undoIndex < 0) return;
    auto* u = undoList.items(undoIndex--);
    queue(u, opUndone);
}

void UndoHost::redoClicked(CObject*) {
    qv->values->end();
    settle();
    if (qv->recording || recUndo || undoIndex + 1 >= undoList.getCount()) return;
    auto* u = undoList.items(++undoIndex);
    queue(u, opRedone);
}

CStr UndoHost::undoText() {
    const auto* u = undoList.items(undoIndex);
    return u ? u->name : CStr();
}

CStr UndoHost::redoText() {
    const auto* u = undoList.items(undoIndex + 1);
    return u ? u->name : CStr();
}

CObject* UndoHost::objectToOwner(CObject* o, int& index) {
    index = -1;
    if (const COutputChannel* strip = asStrip(o)) {
        index = strip->comp->outputs.indexed(o);
        return strip->comp;
    }
    if (const CSend* send = asSend(o)) {
        COutputChannel* ch = send->channel;
        index = int(std::find(ch->sendLevels, ch->sendLevels + maxSends, o) - ch->sendLevels);
        return ch;
    }
    CComp* insert = asComp(o);
    if (!insert || !insert->ownerChannel) return nullptr;
    index = insert->ownerChannel->inserts.indexed(o);
    return insert->ownerChannel;
}

void UndoHost::settle() {
    while (pending.loadAcquire() && qv->tasks) {
        if (outdated.loadAcquire()) send();
        qv->tasks->pump();
        if (pending.loadAcquire()) pumpIdle();
    }
    undoIdle();
}

void UndoHost::undoIdle() {
    settleStep();
    endFaded();
}

void UndoHost::settleStep() {
    if (!running) return;
    if (outdated.loadAcquire()) send();
    if (pending.loadAcquire()) return;
    CUndo* u = running;
    running = nullptr;
    stepPlan.finish();
    qv->plans->settle();
    if (u->effects.song) eachSequencer(qv, [](CComp* seq) { seq->doUpdate(CComp::updateSong); });
    for (auto* item : u->items) {
        settleComp(item, runningOp != opUndone);
        if (runningOp == opRedone) item->exchangeNotes();
    }
    if (runningOp != opUndone) return;
    for (CUndoItem* item = u->lastItem; item; item = item->previous) item->exchangeNotes();
}

void UndoHost::settleComp(CUndoItem* item, bool forward) {
    CComp* c = asComp(item->object);
    if (!c) return;
    if (leaves(item, forward)) {
        tired.push_back(c);
        item->editorShown = editorHooks()->editorVisible(c);
        editorHooks()->hideEditors(c);
    } else if (enters(item, forward) && item->editorShown) {
        editorHooks()->showEditor(c, true);
        item->editorShown = false;
    }
}

void UndoHost::setHeldFrames(int frames) {
    eachHeld([frames](CObject* object) {
        if (CComp* c = asComp(object)) c->setFrames(frames);
        if (CInputChannel* input = asInput(object)) input->createBuffers(frames);
        if (COutputChannel* strip = asStrip(object)) strip->setFrames(frames);
    });
}

void UndoHost::setHeldRate(double rate) {
    eachHeld([rate](CObject* object) {
        if (CComp* c = asComp(object)) c->setRate(rate);
        if (COutputChannel* strip = asStrip(object)) strip->setRate(rate);
    });
}

void UndoHost::eachHeld(const std::function<void(CObject*)>& visit) {
    for (const auto* steps : listsOf(undoList, openSteps, dying))
        for (auto* u : *steps)
            for (auto* item : u->items) {
                for (auto* object : item->holding) visit(object);
                if (item->replaced) visit(item->replaced);
            }
}

void UndoHost::forgetInSteps(const CObject* object) {
    for (const auto* steps : listsOf(undoList, openSteps, dying))
        for (auto* u : *steps) u->drop(object);
    qv->values->forget(object);
}

void UndoHost::queue(CUndo* u, Op op) {
    qv->countChange();
    reserveSends(u);
    for (auto* item : u->items)
        if (CComp* c = asComp(item->object); c && enters(item, op != opUndone)) wake(c);
    running = u;
    runningOp = op;
    u->busy = true;
    pending = true;
    send();
}

/// Prepares the step on its way, and hands it to the graph.
void UndoHost::send() {
    outdated = false;
    stepPlan.prepare(running, runningOp != opUndone, runningOp == opDone);
    qv->plans->prepare(stepPlan, runningOp == opDone);
    while (qv->tasks->full()) {
        qv->tasks->pump();
        pumpIdle();
    }
    qv->addTask(new _COnChange<UndoHost>(this, &UndoHost::doStep), running);
}

// A task may not allocate the records itself. Channels that enter within the same step count too.
void UndoHost::reserveSends(CUndo* u) {
    for (auto* item : u->items) {
        if (!item->touches(&qv->sends) || !item->reorder.empty()) continue;
        for (const auto* list : listsOf(qv->comps, qv->sends))
            for (auto* c : *list) c->copySendData(&item->reorder);
        for (auto* other : u->items) {
            if (!other->held()) continue;
            if (CComp* c = asComp(other->object)) c->copySendData(&item->reorder);
            if (COutputChannel* strip = asStrip(other->object))
                item->reorder.add(new CSendRecord(strip));
        }
    }
}

void UndoHost::wake(CComp* c) {
    std::erase(tired, c);
    c->sleep(0);
}

/// Frees all steps but the first `keep`, the latest first, and what they hold.
void UndoHost::freeSteps(int keep) {
    if (savedIndex >= keep) savedIndex = nowhere;
    while (undoList.getCount() > keep) dying.add(undoList.pop());
    endFaded();
}

/// What has left goes to rest, or dies, where a plan without it has taken over.
void UndoHost::endFaded() {
    if ((tired.empty() && dying.empty()) || running) return;
    qv->plans->idle();
    if (qv->plans->fading()) return;
    for (CComp* c : std::exchange(tired, {})) c->sleep(1);
    freeDying();
}

void UndoHost::freeDying() {
    if (dying.empty()) return;
    ForgetSet gone;
    for (auto* step : dying)
        for (auto* item : step->items) {
            if (item->held()) gone.add(item->object);
            if (item->replaced) gone.add(item->replaced);
        }
    qv->parkWorkers();
    forgetObjects(qv, gone);
    while (auto* step = dying.first()) {
        dying.del(0);
        delete step;
    }
    qv->unparkWorkers();
}

void UndoHost::doStep(CObject* step) {
    assert(qv->heldByThread());
    auto* u = static_cast<CUndo*>(step);
    if (!stepPlan.carryOut()) return outdated.storeRelease(true);
    for (CUndoItem* item : stepPlan.rest()) {
        if (runningOp != opDone) item->exchangeValues();
        carryOut(u, item);
    }
    u->comp->performPlan();
    qv->plans->adopt();
    handleUpdate(u);
    u->busy = false;
    pending.storeRelease(false);
}

void UndoHost::carryOut(CUndo* u, CUndoItem* item) {
    if (item->moves()) relocate(item);
    changing(u, item);
}

void UndoHost::relocate(CUndoItem* item) {
    const bool forward = runningOp != opUndone;
    CList* from = forward ? item->removeFrom : item->addTo;
    CList* to = forward ? item->addTo : item->removeFrom;
    const int old = from->indexed(item->object);
    if (old < 0) return;
    // Channels have no level for one bus more: it stays where it is.
    if (to == &qv->sends && from != to && to->getCount() >= maxSends) return;
    if (from == to) {
        // The user's index counts with the object in the list, a stored one without it.
        const int target = item->index - (runningOp == opDone && item->index > old ? 1 : 0);
        item->holding.move(from, item->object, 0);
        to->move(&item->holding, item->object, target);
    } else {
        to->move(from, item->object, item->index);
    }
    item->index = old;
    if (!item->touches(&qv->sends)) return;
    const int left = from == &qv->sends ? old : -1;
    const int arrived = to == &qv->sends ? to->indexed(item->object) : -1;
    reorderSends(item, left, arrived);
}

void UndoHost::changing(CUndo* u, CUndoItem* item) {
    // An integer may be what switches an insert on.
    if (item->moves() || item->intField) qv->hostNotices.raise(HostNotice::delays);
    if (asComp(item->object) && item->touches(&qv->comps))
        eachSequencer(qv, [](CComp* seq) { seq->raiseSong(SeqNotice::tracks); });
    if (leaves(item, runningOp != opUndone)) {
        silenceFed(item->object);
        forgetMaps(qv, item->object);
    }
    u->comp->perform(item, runningOp);
}

void UndoHost::handleUpdate(const CUndo* u) {
    tell(u);
    qv->hostNotices.raise(HostNotice::step);
    if (u->effects.graph) qv->hostNotices.raise(HostNotice::graph | HostNotice::cables);
}

void UndoHost::tell(const CUndo* u) {
    u->comp->notices.raise(u->effects.comp);
    u->comp->raiseSong(u->effects.seq);
    qv->hostNotices.raise(u->effects.host);
}

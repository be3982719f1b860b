#include "engine/CMap.h"

#include "engine/CComp.h"
#include "engine/ControlSource.h"
#include "engine/MidiBytes.h"
#include "engine/ObjectKinds.h"
#include "engine/StoredValue.h"

namespace {

constexpr int fineController = 32; ///< above the controller that it makes finer

} // namespace

CMapProg::~CMapProg() {
    deleteAll(items);
}

bool CMap::learn(const ControlMove& move) {
    if (choosesNumber(move.source)) return false;
    const bool finer = fresh && move.source == firstFineSource + cc;
    if (!learning && !finer) {
        fresh = fresh && move.source == cc + fineController;
        return false;
    }
    fresh = learning;
    learning = false;
    cc = move.source;
    return true;
}

void CMap::takeRow(const CMap& row) {
    cc = row.cc;
    min = row.min;
    max = row.max;
    mode = row.mode;
    learning = row.learning || row.cc == 0;
}

void CMap::serve(CMIDIQ* queue, const ControlMove& move, double frame) {
    TakeOver way{mode, float(min), float(max), lastValue, left, waiting};
    if (way.last == move.value && !way.steps()) return;
    const float share = way.take(move.value, mode == mapJump ? 0.0f : paramShare(target, param));
    lastValue = way.last;
    left = way.left;
    waiting = way.waiting;
    if (share == TakeOver::none) return;
    changed = true;
    queue->insert(frame, 0, eventParam, share, param, target, nullptr);
}

bool CMap::forget(const CObject* gone) {
    const bool held = gone == static_cast<CObject*>(comp) || gone == static_cast<CObject*>(owner);
    if (!gone || (gone != target && !held)) return false;
    target = nullptr;
    comp = nullptr;
    owner = nullptr;
    return true;
}

namespace {

/// The channels of a sequencer's tracks belong to the sequencer, their events to the track.
CMIDIQ* queueOfChannel(COutputChannel* ch) {
    CComp* c = ch->comp;
    if (c && c->type == compSeq) c = c->getComp(ch);
    return c ? c->inPort() : nullptr;
}

} // namespace

CMIDIQ* queueOfTarget(CObject* target) {
    if (CComp* c = asComp(target)) {
        if (c->listKind == listInsert && c->ownerChannel) return queueOfChannel(c->ownerChannel);
        return c->inPort();
    }
    if (COutputChannel* strip = asStrip(target)) return queueOfChannel(strip);
    if (const CSend* send = asSend(target)) return queueOfChannel(send->channel);
    return nullptr;
}

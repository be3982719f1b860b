#include "engine/CMap.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/MidiBytes.h"

CMapProg::~CMapProg() {
    deleteAll<CMap>(items);
}

bool CMap::learn(const CMIDIBytes* e) {
    if (!learning) return false;
    learning = false;
    cc = asByte1(e->data);
    return true;
}

void CMap::serve(CMIDIQ* queue, const CMIDIBytes* e) {
    constexpr float step = 0.007874016f; // 1 / 127
    const int v = asByte2(e->data);
    if (lastValue == v) return;
    lastValue = v;
    changed = true;
    const float low = float(min), high = float(max);
    const float value = fLimit((low + float(v) * step * (high - low)) * step, 0.0f, 1.0f);
    queue->insert(e->time, 0, eventParam, value, param, target, nullptr);
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
    if (!target) return nullptr;
    if (target->category == categoryComp) {
        auto* c = static_cast<CComp*>(target);
        if (c->listKind == listInsert && c->ownerChannel) return queueOfChannel(c->ownerChannel);
        return c->inPort();
    }
    if (target->asType(categoryChannel, channelOutput))
        return queueOfChannel(static_cast<COutputChannel*>(target));
    if (target->asType(0, typeSend)) return queueOfChannel(static_cast<CSend*>(target)->channel);
    return nullptr;
}

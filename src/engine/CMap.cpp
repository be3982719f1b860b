#include "engine/CMap.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/ControlSource.h"
#include "engine/MidiBytes.h"
#include "engine/ObjectKinds.h"
#include "engine/StoredValue.h"

#include <cmath>

namespace {

constexpr float mapStep = 0.007874016f; ///< 1 / 127
constexpr int fineController = 32;      ///< above the controller that it makes finer

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

float CMap::shareOf(float value) const {
    const float low = float(min), high = float(max);
    return fLimit((low + value * mapStep * (high - low)) * mapStep, 0.0f, 1.0f);
}

void CMap::serve(CMIDIQ* queue, const ControlMove& move, double frame) {
    const bool steps = mode == mapRelative || mode == mapOffset;
    if (lastValue == move.value && !steps) return;
    const float value = follow(move.value);
    lastValue = move.value;
    if (value == none) return;
    changed = true;
    left = value;
    queue->insert(frame, 0, eventParam, value, param, target, nullptr);
}

float CMap::follow(float value) {
    if (mode == mapJump) return shareOf(value);
    const float now = paramShare(target, param);
    if (mode == mapPickup) return pickedUp(value, now);
    return mode == mapScale ? scaled(value, now) : stepped(value, now);
}

/// Also when it has been moved by somebody else meanwhile.
float CMap::pickedUp(float value, float now) {
    constexpr float near = 1.5f * mapStep;
    const float wanted = shareOf(value);
    const bool held = left != none && std::fabs(now - left) <= near;
    const bool passes = lastValue >= 0 && (shareOf(lastValue) - now) * (wanted - now) <= 0.0f;
    waiting = !held && !passes && std::fabs(wanted - now) > near;
    return waiting ? none : wanted;
}

float CMap::scaled(float value, float now) const {
    constexpr float highest = 127.0f;
    const float before = lastValue;
    if (before < 0) return none;
    const float end = shareOf(value > before ? highest : 0.0f);
    const float room = value > before ? highest - before : before;
    return room <= 0.0f ? now : now + (end - now) * std::fabs(value - before) / room;
}

float CMap::stepped(float value, float now) const {
    constexpr float middle = 64.0f, around = 128.0f;
    const float by = mode == mapOffset ? value - middle : value < middle ? value : value - around;
    const float low = shareOf(0.0f), high = shareOf(around - 1.0f);
    const float to = now + (max < min ? -by : by) * mapStep;
    return fLimit(to, std::min(low, high), std::max(low, high));
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

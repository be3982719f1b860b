#include "engine/CQV.h"
#include "engine/KeyInput.h"
#include "engine/plan/PlanBuilder.h"
#include "engine/plan/Upstream.h"

#include <algorithm>

// Keys of side chains, and how they become part of a plan.

namespace {

bool holds(const std::vector<CComp*>& list, const CComp* c) {
    return std::ranges::find(list, c) != list.end();
}

} // namespace

/// Such a key would wait for itself. A loop is one thing with all that its members make.
bool PlanBuilder::waitsFor(const Upstream& key, const CComp* c, const CComp* keyed) const {
    if (c == keyed ? key.hasWork(c) : key.hasStrip(c)) return true;
    CComp* const whole = wholeOf(const_cast<CComp*>(c));
    if (!ringOf.contains(whole)) return false;
    return std::ranges::any_of(key.allWorks(),
                               [&](const CComp* work) { return sameRing(work, whole); });
}

const Upstream& PlanBuilder::upstreamOf(CComp* strip) {
    return upstreams.try_emplace(strip, strip, reader()).first->second;
}

/// Those of the inserts of `c`, or of its parts, are needed.
void PlanBuilder::needKeys(CComp* c) {
    const size_t before = plan->steps.size();
    for (const auto* strip : contents(c->outputs))
        for (CComp* insert : contents(strip->inserts)) needKey(stripOwner(strip), insert);
    if (plan->steps.size() != before) plan->lateness.putLast(place(c).node);
}

/// That of a component, which `c` hears in its next work, is needed.
void PlanBuilder::needKey(CComp* c, CComp* keyed) {
    CKeyInput* key = keyInputOf(keyed);
    if (!key || onlyLeaving) return;
    for (const auto* cable : contents(key->cables)) {
        CComp* const from = stripOwner(cable->fromChannel);
        CComp* const whole = wholeOf(from);
        if ((!holds(comps, whole) && !holds(buses, whole)) || place(from).leftStrip) continue;
        const Upstream& up = upstreamOf(from);
        if (waitsFor(up, c, keyed)) continue;
        const auto open = [&](CComp* bus) { return up.hasWork(bus) && !place(bus).rendered; };
        if (std::ranges::any_of(buses, open)) needOthers(c, keyed);
        needStrip(from);
    }
}

void PlanBuilder::needStrip(CComp* c) {
    CComp* const whole = wholeOf(c);
    need(whole);
    if (!place(whole).rendered) return;
    if (whole == c)
        stripsOf(c);
    else
        strip(c);
}

/// What a bus brings is complete only behind all that may send to it. What itself waits for the key
/// comes too late for the bus.
void PlanBuilder::needOthers(const CComp* c, const CComp* keyed) {
    for (CComp* other : comps) {
        if (other->type == compAudioOut || place(other).busy) continue;
        for (const auto* channel : contents(other->outputs)) {
            CComp* const owner = stripOwner(channel);
            if (!waitsFor(upstreamOf(owner), c, keyed)) needStrip(owner);
        }
    }
}

void PlanBuilder::takeKeys(CComp* c) {
    for (const auto* strip : contents(c->outputs))
        if (const PlanOrigin* origin = plan->lateness.originOf(strip))
            for (const PlanInsert& insert : origin->inserts)
                if (!insert.leaving) takeKey(c, insert.comp, &insert); // it may be freed soon
}

/// One whose source is not worked out before brings nothing.
void PlanBuilder::takeKey(CComp* c, CComp* keyed, const PlanInsert* insert) {
    CKeyInput* key = keyInputOf(keyed);
    if (!key) return;
    for (const auto* cable : contents(key->cables)) {
        CComp* const from = stripOwner(cable->fromChannel);
        PlanArrival arrival{PlanArrival::key, cable};
        arrival.at = place(c).node;
        arrival.insert = insert;
        const auto source = places.find(from);
        if (source != places.end() && source->second.leftStrip) {
            arrival.tap = tapOf(*source->second.node, cable->fromChannel);
            place(c).reads.push_back(cable->fromChannel);
        } else {
            arrival.leaving = arrival.ended = true;
        }
        place(c).node->keys.push_back(std::move(arrival));
    }
}

CInputChannel* PlanBuilder::tapOf(PlanNode& from, const COutputChannel* strip) const {
    for (const KeyTap& tap : from.taps)
        if (tap.strip == strip) return tap.sound.get();
    KeyTap& made = from.taps.emplace_back(strip, std::make_unique<CInputChannel>(nullptr));
    made.sound->createBuffers(host->frames);
    return made.sound.get();
}

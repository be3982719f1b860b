#include "engine/plan/Upstream.h"

#include "engine/CComp.h"
#include "engine/KeyInput.h"
#include "engine/plan/PlanLists.h"

#include <utility>

ListReader::ListReader() : contents([](const CList& list) { return PlanLists().of(list); }) {
}

CComp* stripOwner(const COutputChannel* strip) {
    CComp* part = strip->comp->getComp(const_cast<COutputChannel*>(strip));
    return part ? part : strip->comp;
}

CComp* wholeOf(CComp* c) {
    const COutputChannel* strip = c->output();
    return strip && strip->comp ? strip->comp : c;
}

Upstream::Upstream(CComp* strip, ListReader reader) : read(std::move(reader)) {
    addStrip(strip);
    while (!waiting.empty()) {
        const Step step = waiting.back();
        waiting.pop_back();
        step.strip ? followStrip(step.comp) : followWork(step.comp);
    }
}

void Upstream::addStrip(CComp* c) {
    if (c && strips.insert(c).second) waiting.push_back({c, true});
}

void Upstream::addWork(CComp* c) {
    if (c && works.insert(c).second) waiting.push_back({c, false});
}

void Upstream::followStrip(const CComp* c) {
    addWork(wholeOf(const_cast<CComp*>(c)));
    for (const auto* strip : read(c->outputs))
        for (CComp* insert : read(strip->inserts)) followKey(insert);
}

void Upstream::followKey(CComp* keyed) {
    CKeyInput* key = keyInputOf(keyed);
    if (!key) return;
    for (const auto* cable : read(key->cables)) addStrip(stripOwner(cable->fromChannel));
}

void Upstream::followMidi(const CComp* c) {
    for (const auto* cable : read(c->midiCables)) addWork(cable->fromComp);
}

void Upstream::followWork(CComp* c) {
    for (const auto* cable : read(c->audioCables))
        if (cable->fromChannel) addStrip(stripOwner(cable->fromChannel));
    followMidi(c);
    followKey(c);
    for (auto* strip : read(c->outputs))
        if (const CComp* part = c->getComp(strip)) followMidi(part);
}

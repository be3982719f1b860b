#include "engine/plan/Upstream.h"

#include "engine/CComp.h"
#include "engine/KeyInput.h"

#include <utility>

std::vector<CObject*> listContents(const CList& list) {
    std::vector<CObject*> objects;
    for (CObject* object : each<CObject>(list)) objects.push_back(object);
    return objects;
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
    for (CObject* strip : read(c->outputs))
        for (CObject* insert : read(static_cast<COutputChannel*>(strip)->inserts))
            followKey(static_cast<CComp*>(insert));
}

void Upstream::followKey(CComp* keyed) {
    CKeyInput* key = keyInputOf(keyed);
    if (!key) return;
    for (CObject* cable : read(key->cables))
        addStrip(stripOwner(static_cast<CAudioCable*>(cable)->fromChannel));
}

void Upstream::followMidi(const CComp* c) {
    for (CObject* cable : read(c->midiCables)) addWork(static_cast<CMIDICable*>(cable)->fromComp);
}

void Upstream::followWork(CComp* c) {
    for (CObject* cable : read(c->audioCables))
        if (const auto* from = static_cast<CAudioCable*>(cable)->fromChannel)
            addStrip(stripOwner(from));
    followMidi(c);
    followKey(c);
    for (CObject* strip : read(c->outputs))
        if (const CComp* part = c->getComp(strip)) followMidi(part);
}

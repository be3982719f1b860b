#include "engine/CFreezeItem.h"

#include "audiofiles/CSample.h"
#include "engine/CQV.h"

CFreezeItem::~CFreezeItem() {
    delete sample;
}

void CFreezeItem::setSample(CSample* s) {
    sample = s;
    start = 0;
    end = s->getFrames() - 1;
}

bool playsFrozen(const CComp* comp) {
    if (comp->host->renderMode) return false;
    for (auto* cable : comp->midiCables) {
        const auto* items = cable->fromPort ? cable->fromPort->freezeItems : nullptr;
        if (!items) continue;
        for (auto* item : *items)
            if (item->comp == comp && item->sample) return true;
    }
    return false;
}

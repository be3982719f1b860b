#include "instruments/CLayer.h"

#include "instruments/CSound.h"

CLayer::CLayer(CSynthProg* owner) : prog(owner) {
    id = "Layer";
    category = categorySampler;
    type = typeLayer;
}

CLayer::~CLayer() {
    deleteAll(sounds);
}

bool CLayer::soundMuted(CSound* s) {
    if (s->mute) return true;
    if (s->solo) return false;
    for (CSound* other : sounds)
        if (other->solo) return true;
    return false;
}

void CLayer::addSound(CSound* s) {
    sounds.add(s);
    sound = s;
}

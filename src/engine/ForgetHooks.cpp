#include "engine/ForgetHooks.h"

#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr int maxHooks = 16;
ForgetHook hooks[maxHooks] = {};
int numHooks = 0;

} // namespace

void enterForgetHook(ForgetHook hook) {
    if (std::find(hooks, hooks + numHooks, hook) != hooks + numHooks) return;
    assert(numHooks < maxHooks);
    hooks[numHooks++] = hook;
}

void forgetMaps(CQV* host, const CObject* object) {
    bool changed = false;
    for (auto* prog : each<CMapProg>(host->maps))
        for (auto* map : each<CMap>(prog->items))
            if (map->forget(object)) changed = true;
    if (changed) host->update(updateMaps);
}

void forgetObject(CQV* host, CObject* object) {
    forgetMaps(host, object);
    dropCables(host, object);
    host->values->forget(object);
    for (int i = 0; i < numHooks; ++i) hooks[i](host, object);
}

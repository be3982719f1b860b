#include "engine/ForgetHooks.h"

#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/DeviceComps.h"
#include "engine/ObjectKinds.h"
#include "engine/ValueDoor.h"
#include "engine/plan/GraphPlan.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr int maxHooks = 16;
ForgetHook hooks[maxHooks] = {};
int numHooks = 0;

/// `forgets` tells whether a map had to.
template <class F>
void forgetInMaps(CQV* host, F forgets) {
    bool changed = false;
    for (auto* prog : host->maps)
        for (auto* map : prog->items)
            if (forgets(map)) changed = true;
    if (changed) host->notices.raise(CompNotice::maps);
}

} // namespace

void enterForgetHook(ForgetHook hook) {
    if (std::find(hooks, hooks + numHooks, hook) != hooks + numHooks) return;
    assert(numHooks < maxHooks);
    hooks[numHooks++] = hook;
}

void forgetMaps(CQV* host, const CObject* object) {
    assert(host->heldByThread());
    forgetInMaps(host, [object](CMap* map) { return map->forget(object); });
}

void forgetObjects(CQV* host, const ForgetSet& gone) {
    if (gone.empty()) return;
    {
        const GraphHold hold(host);
        forgetInMaps(host, [&gone](CMap* map) {
            for (const CObject* end : {static_cast<const CObject*>(map->target.load()),
                                       static_cast<const CObject*>(map->comp.load()),
                                       static_cast<const CObject*>(map->owner.load())})
                if (gone.has(end)) return map->forget(end);
            return false;
        });
        dropCables(host, gone);
        host->plans->forget(gone);
        for (auto* c : host->comps)
            if (auto* out = compAs<CAudioOut>(c)) out->forget(gone);
    }
    for (const CObject* object : gone.all()) host->values->forget(object);
    for (int i = 0; i < numHooks; ++i) hooks[i](host, gone);
}

void forgetObject(CQV* host, CObject* object) {
    forgetObjects(host, ForgetSet(object));
}

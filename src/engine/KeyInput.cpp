#include "engine/KeyInput.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/plan/Upstream.h"

namespace {

/// The component whose strip, or whose own work, waits for the key.
CComp* waitingFor(CComp* keyed) {
    const COutputChannel* strip = keyed->ownerChannel;
    return strip ? stripOwner(strip) : keyed;
}

/// The strips of single drums are worked out by their track, which knows no keys.
bool standsInPlan(const CComp* comp) {
    const COutputChannel* strip = comp->ownerChannel;
    return !strip || (strip->comp && stripOwner(strip)->outputs.contains(strip));
}

bool closesCircle(CComp* keyed, COutputChannel* from) {
    const Upstream up(stripOwner(from), ListReader());
    CComp* const c = waitingFor(keyed);
    return keyed == c ? up.hasWork(c) : up.hasStrip(c);
}

} // namespace

CKeyInput::~CKeyInput() {
    deleteAll(cables);
}

COutputChannel* CKeyInput::source() const {
    const auto* cable = cables.getFirst();
    return cable ? cable->fromChannel : nullptr;
}

CKeyInput* keyInputOf(CComp* comp) {
    auto* keyed = dynamic_cast<Keyed*>(comp);
    return keyed ? &keyed->keyInput() : nullptr;
}

CKeyInput* keyOf(const CIO* input) {
    CKeyInput* key = input ? keyInputOf(input->comp) : nullptr;
    return key && &key->channel == input ? key : nullptr;
}

bool offersKey(CComp* comp) {
    const auto* keyed = dynamic_cast<Keyed*>(comp);
    return keyed && standsInPlan(comp) && (keyed->followsKey() || keyInputOf(comp)->source());
}

CAudioCable* makeKeyCable(CComp* keyed, COutputChannel* from) {
    return createAudioCable(keyed, from, &keyInputOf(keyed)->channel);
}

void copyKeys(CComp* source, CComp* copy,
              const std::function<COutputChannel*(COutputChannel*)>& twin) {
    const auto keyed = [](CComp* of) {
        std::vector<CComp*> all{of};
        of->eachInsert([&all](CComp* insert) { all.push_back(insert); });
        return all;
    };
    const std::vector<CComp*> from = keyed(source), to = keyed(copy);
    for (size_t i = 0; i < from.size() && from.size() == to.size(); i++) {
        CKeyInput *key = keyInputOf(from[i]), *own = keyInputOf(to[i]);
        COutputChannel* strip = key && own ? key->source() : nullptr;
        if (!strip) continue;
        COutputChannel* other = twin ? twin(strip) : nullptr;
        own->cables.add(makeKeyCable(to[i], other ? other : strip));
    }
}

bool setKey(CComp* keyed, COutputChannel* from) {
    CKeyInput* key = keyInputOf(keyed);
    if (!key || key->source() == from) return false;
    CUndo* step = keyed->host->undoStart("Side chain", keyed->host, {.graph = true});
    for (auto* cable : key->cables) step->asRemove(cable, &key->cables);
    if (from) step->asAdd(makeKeyCable(keyed, from), &key->cables);
    keyed->host->undoEnd(step, true);
    return true;
}

std::vector<COutputChannel*> keySources(CComp* keyed) {
    std::vector<COutputChannel*> all;
    CQV* host = keyed->host;
    for (const auto* list : listsOf(host->comps, host->sends))
        for (auto* c : *list)
            for (auto* strip : c->outputs)
                if (mayKey(keyed, strip)) all.push_back(strip);
    return all;
}

bool mayKey(CComp* keyed, COutputChannel* strip) {
    return strip->comp->type != compAudioOut && !closesCircle(keyed, strip);
}

bool keyWaitsForItself(CComp* keyed) {
    const CKeyInput* key = keyInputOf(keyed);
    return key && key->source() && closesCircle(keyed, key->source());
}

CStr stripName(const COutputChannel* strip) {
    const CComp* owner = stripOwner(strip);
    const CList& all = owner->outputs;
    return all.getCount() > 1 ? owner->id + " " + asStr(all.indexed(strip) + 1) : owner->id;
}

void eachKeyed(CQV* host, const std::function<void(CComp*, CKeyInput&)>& visit) {
    const auto look = [&visit](CComp* c) {
        if (CKeyInput* key = keyInputOf(c)) visit(c, *key);
    };
    for (const auto* list : listsOf(host->comps, host->sends))
        for (auto* c : *list) {
            look(c);
            c->eachInsert(look);
        }
}

void removeKeys(CQV* host, CUndo* undo, const std::function<bool(COutputChannel*)>& goes) {
    eachKeyed(host, [&](CComp*, CKeyInput& key) {
        for (auto* cable : key.cables)
            if (goes(cable->fromChannel)) undo->asRemove(cable, &key.cables);
    });
}

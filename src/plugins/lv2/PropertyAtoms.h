#pragma once

#include "base/Atomic.h"
#include "plugins/lv2/Lv2Ports.h"

#include <cmath>
#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <utility>
#include <vector>

/// The parameters of an LV2 plug-in that are no ports but properties: messages set them, and by
/// messages it tells of them. Whoever renders, but for its making and beginning.
class PropertyAtoms {
public:
    explicit PropertyAtoms(UridMap& urids);

    /// Of a new instance, which begins with the usual values; it is asked for those it really has.
    void begin(const Lv2Ports& ports, UridMap& urids);
    /// Calls `send(atom)` for each that is to be another than the plug-in knows.
    template <class F>
    void give(const std::vector<Shared<float>>& wanted, F&& send) {
        if (std::exchange(asks, false)) send(question());
        for (Property& p : properties)
            if (const float value = wanted[size_t(p.index)]; value != p.known) {
                p.known = value;
                send(setting(p));
            }
    }
    /// Calls `tell(index, before, value)` for each that a message names, as far as it is sound.
    template <class F>
    void take(const LV2_Atom* atom, F&& tell) {
        const auto* object = reinterpret_cast<const LV2_Atom_Object*>(atom);
        if (atom->type != forge.Object || atom->size < sizeof object->body) return;
        const LV2_Atom *key = nullptr, *value = nullptr, *body = nullptr;
        lv2_atom_object_get(object, keys.property, &key, keys.value, &value, keys.body, &body, 0);
        if (object->body.otype == keys.set && key && value && key->type == forge.URID)
            note(reinterpret_cast<const LV2_Atom_URID*>(key)->body, value, tell);
        if (object->body.otype != keys.put || !body || body->type != forge.Object) return;
        LV2_ATOM_OBJECT_FOREACH(reinterpret_cast<const LV2_Atom_Object*>(body), one)
        note(one->key, &one->value, tell);
    }

private:
    struct Property {
        int index; ///< of the parameter
        LV2_URID key;
        LV2_URID type;
        float known; ///< that the plug-in has, as far as is known
    };
    struct Keys {
        LV2_URID set, get, put, property, value, body;
    };

    const LV2_Atom* question();
    const LV2_Atom* setting(const Property& p);
    float number(const LV2_Atom* value) const; ///< not a number for what is none
    template <class F>
    void note(LV2_URID key, const LV2_Atom* value, F&& tell) {
        const float now = number(value);
        for (Property& p : properties)
            if (p.key == key && std::isfinite(now)) tell(p.index, std::exchange(p.known, now), now);
    }

    LV2_Atom_Forge forge{};
    const Keys keys;
    std::vector<Property> properties;
    bool asks = false;
    uint64_t room[32] = {};
};

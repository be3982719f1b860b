#pragma once

#include "base/Atomic.h"
#include "plugins/lv2/Lv2Ports.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <string_view>
#include <utility>
#include <vector>

/// The parameters of an LV2 plug-in that are no ports but properties: messages set them, and by
/// messages it tells of them; and the files that it works with. Whoever renders, but for its making
/// and beginning.
class PropertyAtoms {
public:
    static constexpr size_t longestPath = 4096; ///< bytes

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
    /// The message that gives it one of its files, until the next call.
    const LV2_Atom* fileSetting(size_t index, const std::string& path);
    /// Calls `tell(index, before, value)` for each that a message names, as far as it is sound, and
    /// `tellFile(index, path)` for files.
    template <class F, class G>
    void take(const LV2_Atom* atom, F&& tell, G&& tellFile) {
        const auto* object = reinterpret_cast<const LV2_Atom_Object*>(atom);
        if (atom->type != forge.Object || atom->size < sizeof object->body) return;
        const LV2_Atom *key = nullptr, *value = nullptr, *body = nullptr;
        lv2_atom_object_get(object, keys.property, &key, keys.value, &value, keys.body, &body, 0);
        if (object->body.otype == keys.set && key && value && key->type == forge.URID)
            note(reinterpret_cast<const LV2_Atom_URID*>(key)->body, value, tell, tellFile);
        if (object->body.otype != keys.put || !body || body->type != forge.Object) return;
        LV2_ATOM_OBJECT_FOREACH(reinterpret_cast<const LV2_Atom_Object*>(body), one)
        note(one->key, &one->value, tell, tellFile);
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
    template <class F>
    const LV2_Atom* message(LV2_URID key, F&& value);
    float number(const LV2_Atom* value) const; ///< not a number for what is none
    template <class F, class G>
    void note(LV2_URID key, const LV2_Atom* value, F&& tell, G&& tellFile) {
        if (value->type == forge.Path) {
            const auto* path = reinterpret_cast<const char*>(value + 1);
            const auto at = std::find(files.begin(), files.end(), key);
            if (at != files.end())
                tellFile(size_t(at - files.begin()),
                         std::string_view(path, strnlen(path, value->size)));
            return;
        }
        const float now = number(value);
        for (Property& p : properties)
            if (p.key == key && std::isfinite(now)) tell(p.index, std::exchange(p.known, now), now);
    }

    LV2_Atom_Forge forge{};
    const Keys keys;
    std::vector<Property> properties;
    std::vector<LV2_URID> files;
    bool asks = false;
    std::vector<uint64_t> room; ///< for a message
};

#include "plugins/lv2/PropertyAtoms.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <lv2/patch/patch.h>

PropertyAtoms::PropertyAtoms(UridMap& urids)
    : keys{urids.number(LV2_PATCH__Set),   urids.number(LV2_PATCH__Get),
           urids.number(LV2_PATCH__Put),   urids.number(LV2_PATCH__property),
           urids.number(LV2_PATCH__value), urids.number(LV2_PATCH__body)} {
    lv2_atom_forge_init(&forge, &urids.map);
}

void PropertyAtoms::begin(const Lv2Ports& ports, UridMap& urids) {
    properties.clear();
    for (size_t i = 0; i < ports.params.size(); i++) {
        const Lv2Ports::Param& p = ports.params[i];
        if (!p.type.empty())
            properties.push_back(
                {int(i), urids.number(p.symbol.c_str()), urids.number(p.type.c_str()), p.usual});
    }
    asks = !properties.empty();
}

const LV2_Atom* PropertyAtoms::question() {
    lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(room), sizeof room);
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&forge, &object, 0, keys.get);
    lv2_atom_forge_pop(&forge, &object);
    return reinterpret_cast<const LV2_Atom*>(room);
}

const LV2_Atom* PropertyAtoms::setting(const Property& p) {
    lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(room), sizeof room);
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&forge, &object, 0, keys.set);
    lv2_atom_forge_key(&forge, keys.property);
    lv2_atom_forge_urid(&forge, p.key);
    lv2_atom_forge_key(&forge, keys.value);
    if (p.type == forge.Bool)
        lv2_atom_forge_bool(&forge, p.known > 0.0f);
    else if (p.type == forge.Int)
        lv2_atom_forge_int(&forge, int32_t(std::lround(p.known)));
    else if (p.type == forge.Long)
        lv2_atom_forge_long(&forge, std::lround(p.known));
    else if (p.type == forge.Double)
        lv2_atom_forge_double(&forge, double(p.known));
    else
        lv2_atom_forge_float(&forge, p.known);
    lv2_atom_forge_pop(&forge, &object);
    return reinterpret_cast<const LV2_Atom*>(room);
}

float PropertyAtoms::number(const LV2_Atom* value) const {
    const auto as = [value]<class T>(T found) {
        if (value->size != sizeof found) return std::numeric_limits<float>::quiet_NaN();
        std::memcpy(&found, value + 1, sizeof found);
        return float(found);
    };
    if (value->type == forge.Float) return as(0.0f);
    if (value->type == forge.Double) return as(0.0);
    if (value->type == forge.Int || value->type == forge.Bool) return as(int32_t(0));
    if (value->type == forge.Long) return as(int64_t(0));
    return std::numeric_limits<float>::quiet_NaN();
}

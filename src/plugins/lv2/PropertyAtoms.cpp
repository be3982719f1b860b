#include "plugins/lv2/PropertyAtoms.h"

#include <cmath>
#include <limits>
#include <lv2/patch/patch.h>

namespace {

constexpr size_t messageBytes = 256; ///< that names one property, besides its value

} // namespace

PropertyAtoms::PropertyAtoms(UridMap& urids)
    : keys{urids.number(LV2_PATCH__Set),   urids.number(LV2_PATCH__Get),
           urids.number(LV2_PATCH__Put),   urids.number(LV2_PATCH__property),
           urids.number(LV2_PATCH__value), urids.number(LV2_PATCH__body)},
      room((longestPath + messageBytes) / sizeof(uint64_t)) {
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
    files.clear();
    for (const Lv2Ports::File& f : ports.files) files.push_back(urids.number(f.uri.c_str()));
    asks = !properties.empty() || !files.empty();
}

const LV2_Atom* PropertyAtoms::question() {
    lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(room.data()),
                              room.size() * sizeof room[0]);
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&forge, &object, 0, keys.get);
    lv2_atom_forge_pop(&forge, &object);
    return reinterpret_cast<const LV2_Atom*>(room.data());
}

/// That sets a property to what `value` writes.
template <class F>
const LV2_Atom* PropertyAtoms::message(LV2_URID key, F&& value) {
    lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(room.data()),
                              room.size() * sizeof room[0]);
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&forge, &object, 0, keys.set);
    lv2_atom_forge_key(&forge, keys.property);
    lv2_atom_forge_urid(&forge, key);
    lv2_atom_forge_key(&forge, keys.value);
    value();
    lv2_atom_forge_pop(&forge, &object);
    return reinterpret_cast<const LV2_Atom*>(room.data());
}

const LV2_Atom* PropertyAtoms::setting(const Property& p) {
    return message(p.key, [&] {
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
    });
}

const LV2_Atom* PropertyAtoms::fileSetting(size_t index, const std::string& path) {
    return message(files[index], [&] {
        lv2_atom_forge_path(&forge, path.c_str(), uint32_t(std::min(path.size(), longestPath)));
    });
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

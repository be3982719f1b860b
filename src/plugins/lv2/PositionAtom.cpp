#include "plugins/lv2/PositionAtom.h"

#include "plugins/Plugin.h"

#include <algorithm>
#include <cmath>
#include <lv2/time/time.h>

PositionAtom::PositionAtom(UridMap& urids)
    : position(urids.number(LV2_TIME__Position)), frame(urids.number(LV2_TIME__frame)),
      speed(urids.number(LV2_TIME__speed)), bar(urids.number(LV2_TIME__bar)),
      barBeat(urids.number(LV2_TIME__barBeat)), beatUnit(urids.number(LV2_TIME__beatUnit)),
      beatsPerBar(urids.number(LV2_TIME__beatsPerBar)),
      beatsPerMinute(urids.number(LV2_TIME__beatsPerMinute)) {
    lv2_atom_forge_init(&forge, &urids.map);
}

const LV2_Atom* PositionAtom::write(const PluginTime& now) {
    const int unit = std::max(now.denominator, 1);
    const double barQuarters = 4.0 * std::max(now.numerator, 1) / unit;
    lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(room), sizeof room);
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&forge, &object, 0, position);
    lv2_atom_forge_key(&forge, frame);
    lv2_atom_forge_long(&forge, int64_t(now.frames));
    lv2_atom_forge_key(&forge, speed);
    lv2_atom_forge_float(&forge, now.playing ? 1.0f : 0.0f);
    lv2_atom_forge_key(&forge, bar);
    lv2_atom_forge_long(&forge, int64_t(std::llround(now.barStart / barQuarters)));
    lv2_atom_forge_key(&forge, barBeat);
    lv2_atom_forge_float(&forge, float((now.beats - now.barStart) * unit / 4.0));
    lv2_atom_forge_key(&forge, beatUnit);
    lv2_atom_forge_int(&forge, unit);
    lv2_atom_forge_key(&forge, beatsPerBar);
    lv2_atom_forge_float(&forge, float(now.numerator));
    lv2_atom_forge_key(&forge, beatsPerMinute);
    lv2_atom_forge_float(&forge, float(now.tempo));
    lv2_atom_forge_pop(&forge, &object);
    return reinterpret_cast<const LV2_Atom*>(room);
}

#pragma once

#include "plugins/lv2/UridMap.h"

#include <lv2/atom/forge.h>

struct PluginTime;

/// Where the song is, in the words of LV2. Whoever renders, but for its making.
class PositionAtom {
public:
    explicit PositionAtom(UridMap& urids);

    /// Valid until the next one.
    const LV2_Atom* write(const PluginTime& now);

private:
    LV2_Atom_Forge forge{};
    LV2_URID position, frame, speed, bar, barBeat, beatUnit, beatsPerBar, beatsPerMinute;
    uint64_t room[64] = {};
};

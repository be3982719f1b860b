#pragma once

#include "engine/Setting.h"

class CSound;

/// How far the modulators of a sound move one of its settings, in the setting's own unit, and where
/// it is in the voice that sounded last. The amp envelope, which every note has, is left out.
struct ModulatedValue {
    bool moved = false; ///< else there is nothing more to tell
    double low = 0.0, high = 0.0;
    bool sounding = false;
    double now = 0.0; ///< while it sounds
    bool operator==(const ModulatedValue&) const = default;
};

/// Interface thread.
ModulatedValue modulationOf(const CSound& sound, const Setting& setting);

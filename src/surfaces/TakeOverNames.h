#pragma once

#include "engine/TakeOver.h"

/// MapMode in words.
constexpr const char* takeOverNames[mapModes] = {"Jump", "Pickup", "Scale", "Relative",
                                                 "Relative 64"};
constexpr const char* takeOverHint =
    "Jump: it takes each value. Pickup: it waits until the controller is where it is. Scale: it "
    "comes nearer at each turn. Relative: for knobs without an end";

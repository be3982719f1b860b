#pragma once

#include "instruments/CArpProg.h"

#include <vector>

/// What views are told of the arpeggiator that plays: the keys that it plays with, in their order,
/// and how many steps it has taken since the first of them.
struct ArpSight {
    int keyCount = 0;
    CArpKey keys[CArpProg::maxKeys];
    int taken = 0; ///< 0: nothing has sounded yet
};

/// A step as it sounds where chance leaves it alone.
struct ArpStep {
    double tick = 0.0; ///< from the first step
    int ticks = 0;     ///< until its notes end
    std::vector<CArpKey> notes;
};

/// What a program makes of keys that are held: its first steps.
std::vector<ArpStep> arpSteps(const CArpProg& prog, const std::vector<CArpKey>& keys, int count);
/// After how many steps they repeat.
int arpPeriod(const CArpProg& prog, const std::vector<CArpKey>& keys);

#pragma once

#include <string>
#include <vector>

class CEffect;

// Chains of effects as data, named by what they are used for.

namespace presets {

/// A setting by the name and the group that a panel shows it under, in its own unit. "Dry" is how
/// much of what comes to the effect goes on; behind others echoes and rooms let all of it through.
struct Knob {
    const char *group, *name;
    double value;
};

/// One effect (FxKind) of a chain; what it leaves out is as in a new one.
struct Unit {
    int kind;
    std::vector<Knob> knobs;
};

struct RackPreset {
    const char* use; ///< the folder it lies in
    const char* name;
    std::vector<Unit> chain;
};

std::vector<RackPreset> rackPresets();

/// Fills a rack that nothing plays yet with that chain as its only program. Interface thread.
/// Gives the first knob that no effect has, "Group / Name"; empty when all were found.
std::string fillRack(CEffect* rack, const RackPreset& preset);

} // namespace presets

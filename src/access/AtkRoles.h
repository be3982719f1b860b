#pragma once

#include "gui/access/Accessible.h"

#include <atk/atk.h>

AtkRole atkRole(Role role);
/// The bits of a description as the library's; those of a window included.
void addStates(AtkStateSet* set, const Description& description);

/// A bit of ours and what says the same there.
struct StateName {
    AccessState ours;
    AtkStateType theirs;
};
/// Those whose change is told, ended by `ATK_STATE_INVALID`.
extern const StateName stateNames[];

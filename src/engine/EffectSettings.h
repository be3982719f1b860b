#pragma once

#include "engine/Setting.h"

class CFX;

/// What is set of an effect and stored with it: power first, then its gains, unless its sound does
/// not depend on them, then its own. Empty for a kind that this program cannot make.
Settings settingsOf(const CFX& fx);

const Setting& effectPower(); ///< of every kind

#pragma once

#include "gui/access/Accessible.h"

#include <atk/atk.h>

/// Tells the listeners of an object what is another now.
void tellChange(AtkObject* object, const Description& before, const Description& now);

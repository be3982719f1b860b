#pragma once

#include "driver/libaam.h"

/// Asks the driver module that the bridge has loaded; -1 when there is none. Interface thread.
intptr_t askModule(AamOp op, intptr_t argument);

/// Counted since the device was opened; zeros without a module.
AamStatistics askStatistics();

#pragma once

#include "base/CObject.h"

/// Base of every entry of a component's program list: an object with a name.
class CProgram : public CObject {};

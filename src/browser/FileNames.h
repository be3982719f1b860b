#pragma once

#include "base/CStr.h"

class CQV;

/// Gives a file another name in its folder; a sample of the project that stands on it goes along.
/// Why it cannot, for the user; empty when it has been done, or the name is the same. Interface
/// thread.
CStr renameFile(CQV* host, const CStr& path, const CStr& name);

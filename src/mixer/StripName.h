#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"

class CGraphic;

/// The name of a strip in a box of two small lines' height: in bold letters where these have room,
/// else in small ones, on two lines if need be, broken at a blank where there is one. Only what is
/// longer than that is cut short.
void paintStripName(CGraphic* g, int colour, const CStr& name, CRect box);

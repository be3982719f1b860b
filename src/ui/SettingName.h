#pragma once

#include "base/CStr.h"

struct CPalette;
class CGraphic;

constexpr int settingNameHeight = 14; ///< of the line over a control that tells what it sets

/// That line, over a control of that width.
void paintSettingName(CGraphic* g, const CPalette& colours, const CStr& name, int width);

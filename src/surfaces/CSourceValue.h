#pragma once

#include "engine/ControlSource.h"
#include "gui/controls/CValue.h"

/// Shows what a device sends in words.
class CSourceValue : public CValue {
public:
    CSourceValue(CWin* owner, const CStr& name, int l, int t, int w, int h)
        : CValue(owner, name, l, t, w, h) {
        max = mostSource;
    }
    CStr getText() const override { return controlSourceText(value); }
};

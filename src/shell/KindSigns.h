#pragma once

#include "ui/Signs.h"

/// Signs of the kinds of projects. Interface thread.
class KindSigns {
public:
    static constexpr int side = 24;

    KindSigns();
    /// `kind` is a ProjectKind, `kindFile` and `kindDemo` too.
    void draw(CGraphic* g, int kind, CPoint at, int color, int ground);

private:
    SignSet set;
};

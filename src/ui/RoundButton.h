#pragma once

#include "gui/controls/CButton.h"

/// A small button, for a switch or a slot among others: its corners are rounder than a frame of the
/// items can be.
class RoundButton : public CButton {
public:
    using CButton::CButton;

    void paint(CGraphic* g, CRect rect) override;

protected:
    /// The face alone; false where the skin is an image, and all has been painted.
    bool paintRound(CGraphic* g, CRect rect);
};

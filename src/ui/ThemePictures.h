#pragma once

#include "gui/CCtrl.h"

/// The fields of a theme's picture of the transport, from left to right, all of the same width.
enum TransportField : int { fieldRewind, fieldStop, fieldPlay, fieldRecord, fieldLoop, fieldCount };

/// Draws a field in the middle of a rectangle, cut to it, out of the picture of `clTransporter`, or
/// of `clTransporterPushed` for what is pushed or on. False, and nothing is drawn, where the theme
/// has no picture.
bool drawTransport(CGraphic* g, TransportField field, CRect rect, bool on);

/// The picture of `clLogo`. Without one it has no height.
class CLogo : public CCtrl {
public:
    CLogo(CWin* owner, int left, int top);
    void paint(CGraphic* g, CRect rect) override;
    static int pictureHeight(); ///< 0 without a picture; at most `mostHeight`

private:
    static constexpr int mostHeight = 160, mostWidth = 496;
};

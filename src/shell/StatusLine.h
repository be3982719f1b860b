#pragma once

#include "gui/CCtrl.h"

/// The line at the bottom: a hint or message at the left, the state of the device at the right.
class StatusLine : public CCtrl {
public:
    static constexpr int lineHeight = 24;

    StatusLine(CWin* win, int top, int width);
    void paint(CGraphic* g, CRect rect) override;
    void setText(const CStr& text);
    /// `warns`: nothing can be heard.
    void setDevice(const CStr& text, bool warns);

private:
    CStr text, device;
    bool warning = false;
};

#pragma once

#include "gui/CCtrl.h"

class CQV;

/// The line at the bottom: a hint or message at the left, the state of the device at the right.
class StatusLine : public CCtrl {
public:
    static constexpr int lineHeight = 24;

    StatusLine(CWin* win, CQV* host, int top, int width);
    void paint(CGraphic* g, CRect rect) override;
    void setText(const CStr& text);
    /// Brings the device up to date. Interface tick.
    void refresh();
    void devicesChanged(); ///< may have another name
    void describe(Description& d, int part) const override;

private:
    /// What is told of the device; -1 none.
    struct DeviceState {
        int device = -1, frames = 0;
        float rate = 0.0f;
        bool operator==(const DeviceState&) const = default;
    };
    static constexpr DeviceState nothingTold{-2, 0, 0.0f};

    CStr deviceText() const;

    CQV* qv;
    DeviceState shown = nothingTold;
    CStr text, device;
    bool warning = false; ///< nothing can be heard
};

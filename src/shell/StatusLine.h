#pragma once

#include "gui/CGroup.h"

class CButton;
class COnChange;
class CQV;
class LoadDisplay;

/// The line at the bottom: a hint or message at the left, at the right what the work costs and the
/// state of the device, both of which can be pressed.
class StatusLine : public CGroup {
public:
    static constexpr int lineHeight = 24;

    /// `devicePressed` is taken over.
    StatusLine(CWin* win, CQV* host, int top, int width, COnChange* devicePressed);
    void paint(CGraphic* g, CRect rect) override;
    void resized() override; ///< the load is told where there is room beside a message
    void setText(const CStr& text);
    /// Brings load and device up to date. Interface tick.
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
    void followDevice();
    void placeButtons();
    void paintDevice(CObject* sender, CGraphic* g, CRect rect);

    CQV* qv;
    LoadDisplay* load;
    CButton* deviceButton;
    DeviceState shown = nothingTold;
    CStr text, device;
    bool warning = false; ///< nothing can be heard
};

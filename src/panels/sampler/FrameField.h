#pragma once

#include "ui/CStoredCtrl.h"

#include <functional>

class CSampleClip;

/// A place of a sample as a number of frames, its name above: dragged, typed, turned as a knob is.
/// Interface thread.
class FrameField : public CStoredCtrl {
public:
    static constexpr int usualWidth = 96, usualHeight = 44;

    /// `mark` is a SampleMark; the sample is only touched while it is `alive`.
    FrameField(CWin* win, ValueDoor* door, CSampleClip* clip, int mark,
               std::function<bool()> alive);

    void paint(CGraphic* g, CRect rect) override;
    bool refresh() override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;

    CSampleClip* clip;
    const int mark;
    std::function<bool()> alive;
};

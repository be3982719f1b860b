#pragma once

#include "ui/CStoredCtrl.h"
#include "ui/SettingPlace.h"

/// A setting as a knob, its name above and its number below. Drags up and to the right turn it to
/// the right. Around it an arc shows how far modulators move it, with a dot where it is now.
class SettingKnob : public CStoredCtrl {
public:
    static constexpr int usualWidth = 64, usualHeight = 64;

    SettingKnob(CWin* win, ValueDoor* door, const SettingPlace& place);

    void paint(CGraphic* g, CRect rect) override;
    bool refresh() override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;

    SettingPlace place;
    ModulatedValue moved;
};

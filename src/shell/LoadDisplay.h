#pragma once

#include "gui/controls/CButton.h"

class CQV;

/// How much of a block's time its work takes, in the mean and at worst, and how much of the time
/// the disk is read for what plays. A press forgets the worst. Interface thread.
class LoadDisplay : public CButton {
public:
    static int displayWidth(); ///< pixels that it needs at most

    LoadDisplay(CWin* win, CQV* host);
    void paint(CGraphic* g, CRect rect) override;
    void click() override;
    void describe(Description& d, int part) const override;
    void refresh(); ///< interface tick

private:
    /// Percent.
    struct Load {
        int mean = 0, worst = 0, disk = 0;
        bool operator==(const Load&) const = default;
    };
    static CStr textOf(const Load& load);
    Load present() const;
    void show(const Load& load);

    CQV* qv;
    Load shown;
    int ticks = 0; ///< to the next look
};

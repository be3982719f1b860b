#pragma once

#include "gui/CWin.h"
#include "mixer/StripModel.h"

#include <array>

class CButton;
class CDropdown;
class CEqView;
class CQV;
class ValueBar;

/// The equaliser of a strip, large: its curve with handles to drag, and for each band a switch, its
/// form, frequency, gain and width. Interface thread.
class CEqWin : public CWin {
public:
    CEqWin(CWin* owner, CQV* host);

    void open(const MixerStrip& strip); ///< shows it, in place of the one before
    const MixerStrip& shown() const { return strip; }
    void refresh(); ///< follows the bands

private:
    struct Band {
        CButton* power = nullptr;
        CDropdown* form = nullptr;
        std::array<ValueBar*, 3> values{};
    };
    void makeBand(int index);
    void curveChanged(CObject* sender);
    void powerClicked(CObject* sender);
    void formChosen(CObject* sender);

    CQV* qv;
    MixerStrip strip{};
    CEqView* view;
    std::array<Band, 4> bands;
};

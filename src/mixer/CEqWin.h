#pragma once

#include "gui/CWin.h"
#include "mixer/StripModel.h"

#include <array>
#include <functional>

class CButton;
class CDropdown;
class CEqView;
class CQV;
class ValueBar;

/// The equaliser of a strip, large: its curve with handles to drag, and for each band a switch, its
/// form, frequency, gain and width. Interface thread.
class CEqWin : public CWin {
public:
    /// `follow` is called before anything is done: it may hide the window, as the strip has gone.
    CEqWin(CWin* owner, CQV* host, const std::function<void()>& follow);

    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;

    void open(const MixerStrip& strip); ///< shows it, in place of the one before
    const MixerStrip& shown() const { return strip; }
    void refresh();       ///< follows the bands and the sound; interface tick
    void hide() override; ///< lets go of the strip, which is still there

private:
    struct Band {
        CButton* power = nullptr;
        CDropdown* form = nullptr;
        std::array<ValueBar*, 3> values{};
    };
    void makeBand(int index);
    void curveChanged(CObject* sender);
    void powerClicked(CObject* sender);
    void formChosen(CDropdown* form);

    CQV* qv;
    const std::function<void()> followStrips;
    MixerStrip strip{};
    CEqView* view;
    std::array<Band, 4> bands;
};

#pragma once

#include "gui/CCtrl.h"
#include "mixer/EqCurve.h"

#include <array>

class CMixerStrip;

/// The curve of a strip's equaliser, small. A press opens it large, the right button and Control
/// with Return switch all of its bands.
class EqSection : public CCtrl {
public:
    explicit EqSection(CMixerStrip& strip);

    void paint(CGraphic* g, CRect rect) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    bool refresh();

private:
    struct Band {
        double gain = 0, frequency = 0, q = 0;
        int form = 0;
        bool on = false;
        bool operator==(const Band&) const = default;
    };
    void toggleAll();

    CMixerStrip& owner;
    EqCurve curve;
    std::array<Band, EqCurve::numHandles> shown{};
    int curveWidth = 0, curveHeight = 0; ///< that the curve was made for
};

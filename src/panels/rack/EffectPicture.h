#pragma once

#include "gui/CCtrl.h"
#include "panels/rack/EffectShape.h"

#include <functional>

class CFX;

/// What an effect does, drawn; it follows the settings. Interface thread.
class EffectPicture : public CCtrl {
public:
    static constexpr int usualWidth = 184, usualHeight = 88;

    /// The effect is only touched while it is `alive`; `tempo` in beats a minute.
    EffectPicture(CWin* win, CFX* fx, std::function<bool()> alive, std::function<double()> tempo);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< takes the present settings; whether that shows
    bool empty() const { return shape.empty(); }

private:
    std::vector<double> numbers() const;

    CFX* fx;
    std::function<bool()> alive;
    std::function<double()> tempo;
    EffectShaper shaper;
    EffectShape shape;
    std::vector<double> shown; ///< the settings that it shows
};

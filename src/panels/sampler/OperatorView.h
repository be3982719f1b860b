#pragma once

#include "gui/CCtrl.h"

#include <array>
#include <functional>
#include <vector>

class COSCSound;

/// The waves of a sound's two operators, which follow the settings. Interface thread.
class OperatorView : public CCtrl {
public:
    static constexpr int usualHeight = 88;

    /// The sound is only touched while it is `alive`.
    OperatorView(CWin* win, const COSCSound* sound, std::function<bool()> alive);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< takes the present settings; whether that shows

private:
    void paintWave(CGraphic* g, const CRect& at, const char* title,
                   const std::vector<float>& wave) const;

    const COSCSound* sound;
    std::function<bool()> alive;
    std::array<float, 7> shown{-1.0f}; ///< the settings that they are of; none yet
    std::vector<float> modulator, carrier;
};

#pragma once

#include "base/CStr.h"
#include "gui/CCtrl.h"
#include "sequencer/PartRange.h"

#include <vector>

class CSample;
class WaveState;

/// The line below a wave that tells where the range is, how long and how loud. Interface thread.
class WaveInfo : public CCtrl {
public:
    static constexpr int infoHeight = 22;

    WaveInfo(CWin* win, WaveState& state);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    void refresh(); ///< follows the range

private:
    WaveState& state;
    CStr place, level;
};

/// The spectrum of what is selected: how loud which frequencies are, from low to high ones on a
/// scale of octaves. Interface thread.
class RangeSpectrum : public CCtrl {
public:
    static constexpr int usualHeight = 110;

    RangeSpectrum(CWin* win, WaveState& state);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    void refresh(); ///< follows the range while it is seen

private:
    double xOf(double hz) const;
    double yOf(double db) const;
    double loudest() const; ///< Hz, 0 without a spectrum

    WaveState& state;
    const CSample* shownSample = nullptr; ///< only to be compared
    FrameRange shownRange;
    std::vector<float> levels; ///< dB of each band
};

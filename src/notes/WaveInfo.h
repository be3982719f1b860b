#pragma once

#include "base/CStr.h"
#include "gui/CCtrl.h"
#include "sequencer/edit/PartRange.h"

#include <vector>

class WaveState;

/// What was looked at last.
class MeasuredRange {
public:
    bool follow(const WaveState& state); ///< whether it is another range, or file

private:
    FrameRange range, chosen;
    int version = -1;
};

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
    MeasuredRange measured;
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
    MeasuredRange measured;
    std::vector<float> levels; ///< dB of each band
};

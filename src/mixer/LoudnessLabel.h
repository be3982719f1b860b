#pragma once

#include "common/Loudness.h"
#include "gui/CCtrl.h"

class CMixerStrip;

/// How loud a strip is, after EBU R 128: of all since the last reset, or its true peak. The hint
/// tells the rest; a press resets what both tell.
class LoudnessLabel : public CCtrl {
public:
    enum Kind { integrated, truePeak };

    LoudnessLabel(CMixerStrip& strip, Kind what);

    void paint(CGraphic* g, CRect rect) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override; ///< Return and Delete reset
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    bool show(const Loudness::Levels& now); ///< whether that is something else

private:
    CStr told() const;

    CMixerStrip& owner;
    const Kind kind;
    CStr shown;
    bool over = false; ///< the peak lies over 0 dB
};

#pragma once

#include "gui/CCtrl.h"

class WaveState;

/// The bars of the song above a wave, and below them the time of the sample, from its first frame
/// on; the stretch that the part plays is marked. A press moves the play position, the wheel zooms.
/// Interface thread.
class WaveRuler : public CCtrl {
public:
    static constexpr int rulerHeight = 34;

    WaveRuler(CWin* win, WaveState& state);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;

private:
    void jumpTo(int x);
    void paintTimes(CGraphic* g, CRect asked) const;

    WaveState& state;
};

/// Levels of a channel beside its wave, in dB below full scale; the wheel shows them larger.
class LevelScale : public CCtrl {
public:
    static constexpr int scaleWidth = 34;

    LevelScale(CWin* win, WaveState& state);

    void paint(CGraphic* g, CRect rect) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;

private:
    WaveState& state;
};

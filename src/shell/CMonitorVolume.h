#pragma once

#include "gui/CCtrl.h"
#include "gui/TypedText.h"

class CQV;

/// How loud the devices play, whatever the song's own level: a bar that is dragged, or turned with
/// the wheel, between its name and its gain. A double click gives full volume.
class CMonitorVolume : public CCtrl {
public:
    static constexpr int full = 100;

    CMonitorVolume(CWin* win, int left, int top, int width, int height, CQV* host);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    /// Arrows step it, Page Up and Down by more; Home and End are its ends, Delete gives full
    /// volume, and a percentage can be typed.
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void refresh(); ///< somebody else may have changed it
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;
    int getPercent() const;
    void setPercent(int percent); ///< clamped to 0 to `full`

private:
    bool stepKey(int key);
    CRect track() const; ///< of the bar
    CStr gainText() const;

    CQV* qv;
    TypedText typed;
    int shownPercent = full;
};

#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

#include <functional>

class ArrangeState;
class CGraphic;
class CPopup;
class CSeq;
class CStr;

/// Bars or the clock along the song, and above them the stretch between the locators. A press takes
/// the position there; so do Left and Right by a beat, Page Up and Down by a bar, Home and End. In
/// the band above the numbers a drag moves the loop, one of its ends, or draws another, and a click
/// on it switches it. Alt or a double click adds a marker. Interface thread.
class TimeRuler : public CCtrl, private DragHandler {
public:
    static constexpr int barHeight = 20;

    bool clock = false;                    ///< minutes and seconds in place of bars
    std::function<void(CPopup*)> fillMenu; ///< of the right button

    TimeRuler(CWin* win, ArrangeState& state);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;

    bool refresh(); ///< follows the loop; whether that shows

private:
    struct Loop {
        int from = 0, to = 0, on = 0;
        bool operator==(const Loop&) const = default;
    };
    enum class Zone { none, start, end, body, fresh };

    Loop loopNow() const;
    Zone zoneAt(int x, int y) const;
    int tickAt(int x, int btn) const;
    void paintBars(CGraphic* g, CSeq* seq, CRect asked);
    void paintClock(CGraphic* g, CSeq* seq, CRect asked);
    void paintNumber(CGraphic* g, int x, const CStr& text);
    void paintLoop(CGraphic* g);
    void jumpTo(int x);
    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    void dragClick(const DragPoint& point) override;

    ArrangeState& state;
    Loop loop, before; ///< as it is shown, and as it was at the press
    Zone held = Zone::none;
};

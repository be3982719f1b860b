#pragma once

#include "engine/StoredValue.h"
#include "gui/CCtrl.h"
#include "gui/CDrag.h"
#include "gui/TypedText.h"

#include <functional>
#include <optional>
#include <vector>

class CPopup;
class ValueDoor;

/// Shows the first number of a stored value and sets it, along with the same value of others: a
/// slider, a fader, a knob. A drag moves all by as much, until the first of them is at its end,
/// with Shift a tenth of that, and is one step that Escape takes back; so is a number that is
/// typed, which all take. The wheel turns it while Control is held, with Shift finely. A double
/// click and Delete give the usual value, Page Up and Page Down step it, Home and End are its ends.
/// Where it has a menu, the right button and the keys for menus open it. Interface thread.
class CStoredCtrl : public CCtrl, private DragHandler {
public:
    double least = 0.0, most = 1.0, usual = 1.0;
    double origin = 0.0;       ///< where what shows of it begins
    bool proportional = false; ///< several keep their ratio, as gains their distance in decibels
    /// Equal ways are equal ratios, as those of frequencies; `least` is above 0.
    bool logarithmic = false;
    bool whole = false; ///< whole numbers: keys and the wheel move by one at least
    std::function<std::optional<StoredValue>()> value; ///< that is shown; none: it shows nothing
    std::function<std::vector<StoredValue>()> values;  ///< that a gesture moves; empty: that one
    std::function<CStr()> text;                        ///< of what is shown, with its unit
    std::function<double(double)> typedValue;          ///< of a number that was typed
    std::function<void(const CStr& shown)> onTold;     ///< during a gesture
    std::function<void()> onSet;                       ///< a value has been set, maybe in a drag
    std::function<void(CPopup* popup)> menu; ///< adds entries to its own; empty: it has no menu

    CStoredCtrl(CWin* win, const CStr& name, ValueDoor* door, int left, int top, int width,
                int height);

    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool contextMenu() override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

    virtual bool refresh();  ///< takes the present value; whether that shows
    void setAll(double to);  ///< all take this number, as one step
    void moveAll(double by); ///< all move by as much of the scale, as a drag would

protected:
    /// By how many pixels the pointer has gone towards `most`, and how many are from end to end.
    virtual double along(const DragPoint& point) const = 0;
    virtual double travel() const = 0;

    bool empty() const { return nothing; }
    double shownValue() const { return shown; }
    double shareOf(double number) const; ///< 0 to 1 of the way from `least` to `most`
    const CStr& told() const { return toldText; }
    bool held() const; ///< or the pointer is over it
    bool typing() const { return typed.typing(); }
    /// In place of what it shows, or of what it shows there.
    void paintTyping(CGraphic* g) const { paintTyping(g, clientRect()); }
    void paintTyping(CGraphic* g, const CRect& at) const;

private:
    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    void collect();
    void tell(); ///< what has been set
    void moveCollected(double by);
    double moved(double from, double by) const;
    bool stepKey(int key, int mods);
    double present() const;
    double toScale(double number) const;
    double fromScale(double place) const;
    double span() const;                         ///< of the scale
    double stepOf(double share, int mods) const; ///< of the scale

    ValueDoor* door;
    TypedText typed;
    std::vector<StoredValue> taken; ///< by the gesture, the one that is shown first
    std::vector<StoredValue::Numbers> before;
    double shown = 0.0;
    CStr toldText;
    bool nothing = true; ///< there is nothing to show
};

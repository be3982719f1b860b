#pragma once

#include "engine/StoredValue.h"
#include "gui/CCtrl.h"
#include "gui/CDrag.h"
#include "gui/TypedText.h"

#include <functional>
#include <optional>
#include <vector>

class ValueDoor;

/// A slider that lies on its side and shows the first number of a stored value. A drag moves it by
/// as much as the pointer, with Shift a tenth of that, and is one step that Escape takes back; so
/// is a number that is typed. A double click and Delete give the usual value, Page Up and Page Down
/// step it, Home and End are its ends. Interface thread.
class CStoredSlider : public CCtrl, private DragHandler {
public:
    double least = 0.0, most = 1.0, usual = 1.0;
    double origin = 0.0;                               ///< where the bar begins
    std::function<std::optional<StoredValue>()> value; ///< that is shown; none: it shows nothing
    std::function<std::vector<StoredValue>()> values;  ///< that a gesture moves by as much
    std::function<CStr()> text;                        ///< of what is shown, with its unit
    std::function<double(double)> typedValue;          ///< of a number that was typed
    std::function<void(const CStr& shown)> onTold;     ///< during a drag

    CStoredSlider(CWin* win, const CStr& name, ValueDoor* door, int left, int top, int width,
                  int height);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

    bool refresh(); ///< takes the present value; whether that shows
    /// All that `values` tells take this number, as one step.
    void setAll(double to);

private:
    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    bool stepKey(int key);
    double present() const;
    int xOf(double value) const;

    ValueDoor* door;
    TypedText typed;
    std::vector<StoredValue> moved; ///< by the drag
    std::vector<StoredValue::Numbers> before;
    double shown = 0.0;
    bool empty = true; ///< there is nothing to show
};

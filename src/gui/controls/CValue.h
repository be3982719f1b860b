#pragma once

#include "gui/controls/CEdit.h"

#include <optional>

/// A whole number that is dragged up and right, turned with the wheel while Control is held, nudged
/// by right clicks on its halves, or typed after a double click. With the focus Up, Down and the
/// Page keys step it, and as long as nothing has been typed Home and End go to its ends and Delete
/// to `resetValue`. Every change calls `onChange`.
class CValue : public CEdit {
public:
    int value = 0, min = 0, max = 100;
    int sensitivity = 3;    ///< pixels of a drag for half a step; 1 or above
    int step = 1;           ///< of a drag; 0 cannot be dragged
    int displayOffset = 0;  ///< added to what is shown and typed
    bool liveUpdate = true; ///< reports each change of a drag, not only its end
    int multiplier = 1;
    std::optional<int> resetValue; ///< none: Delete only empties the field

    CValue(CWin* win, const CStr& name, int left, int top, int width, int height);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;
    bool enterText(const std::string& to) override;
    virtual void changing(); ///< the value has changed: tells the owner
    virtual CStr getText() const;

    /// Clamps, and reports a change while `liveUpdate` is on.
    void setValue(int v);
    void setPos(int v) { setValue(v); }
    /// Shows a value that the owner already knows: clamps, without a report.
    void showValue(int v);

protected:
    CStr shownText() const override { return getText(); }
    /// What was typed as a value; the present one when it is no number.
    virtual int parse(const CStr& typed) const;
    virtual double unit() const { return 1.0; } ///< what one more of `value` is to the user

private:
    bool beginsTyping(int btn) const;
    void beginDrag();
    void nudge(int by);
    bool untouched() const;
    bool stepKey(int key);

    int dragStartX = 0, dragStartY = 0, dragStartValue = 0;
    bool typing = false; ///< the press went to the text field
};

/// A value in units of 10 to the power of -`decimals`.
class CDecimalValue : public CValue {
public:
    int decimals = 1;

    using CValue::CValue;
    CStr getText() const override;
    double getValue() const; ///< with its decimals, without `displayOffset`

protected:
    int parse(const CStr& typed) const override;
    double unit() const override;
};

#pragma once

#include "gui/controls/CButton.h"

/// A button that shows a colour, and asks for another one when it is clicked: `onChange` then tells
/// of it. With the right button, or by `replace`, it asks for a colour to come in place of this one
/// wherever it is used: `onReplace` tells of that.
class CColorButton : public CButton {
public:
    int colour;                     ///< pixel value
    int replacement = 0;            ///< the other colour, while `onReplace` is called
    COnChange* onReplace = nullptr; ///< owned

    CColorButton(CWin* win, const CStr& name, int colour, int left, int top, int width, int height);
    ~CColorButton() override;
    CColorButton(const CColorButton&) = delete;
    CColorButton& operator=(const CColorButton&) = delete;

    void paint(CGraphic* g, CRect rect) override;
    void mouseUp(int x, int y, int btn) override;
    void click() override;
    void describe(Description& d, int part) const override;
    void replace();

private:
    bool ask(const CStr& title, int& chosen);
};

#pragma once

#include "gui/CCtrl.h"

struct CGuiItem2;

/// A push button. With `onPaint` it shows what that draws on its face, in `faceColour`, instead of
/// the text.
class CButton : public CCtrl {
public:
    CStr text;
    bool lit = false;                   ///< shows that what it stands for is on
    int litCol = -1;                    ///< fill while lit; -1 the accent colour
    const CGuiItem2* skin;              ///< never null; "button" at first
    const CGuiItem2* litSkin = nullptr; ///< its look while lit, in place of `litCol`

    CButton(CWin* win, const CStr& name, const CStr& text, int left, int top, int width,
            int height);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    /// A left release inside the button clicks.
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override; ///< Return and Space click
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    /// Calls `onChange`; without one tells the owners by `_changed` and by the button's name.
    virtual void click();
    void setText(const CStr& newText);
    void setLit(bool on);
    void setEnabled(bool on);

    int fillColour() const; ///< of the face in its present state
    int faceColour() const; ///< that text and glyph have on it

protected:
    void paintFace(CGraphic* g, CRect rect) const;
    const CGuiItem2& present() const; ///< the look of its state
    /// Marks the button that has the focus: its frame, or on the fill of a lit one a line inside.
    void paintFocus(CGraphic* g, CRect rect, int fill) const;
};

/// A box with a tick, its text beside it.
class CCheckbox : public CButton {
public:
    bool checked = false;

    using CButton::CButton;
    void paint(CGraphic* g, CRect rect) override;
    void click() override; ///< toggles it first
    void describe(Description& d, int part) const override;
    void setChecked(bool on);
};

/// A button in the caption of a window.
class CWindowButton : public CButton {
public:
    enum Kind : int { close = 1, maximize = 2, minimize = 3 };

    int kind;
    CWin* targetWin;

    CWindowButton(CWin* win, int kind, int left, int top, int width, int height);
    void paint(CGraphic* g, CRect rect) override;
    void click() override;
    void describe(Description& d, int part) const override;
};

#pragma once

#include "gui/CWin.h"

class CButton;

/// A modal window with a row of buttons at its lower right. Made on the stack, shown with
/// `showModal`, and asked for its `result` when that returns.
///
/// All keys are its own: the program's shortcuts do not act behind it. Tab and Shift-Tab walk
/// through all fields, Return presses the button that has the focus, else the first of the row,
/// Escape and the close button close it without a result.
class CDialogWin : public CWin {
public:
    static constexpr int dialogStyle = winCaption | winCentre | winEscape | winSizable;
    static constexpr int margin = 12, gap = 8; ///< around the content and between its parts
    static constexpr int fieldHeight = 24, buttonWidth = 88;

    bool result = false; ///< it was closed by `accept`

    /// `owner` is never null. The size is that of the content, without border and caption, as far
    /// as the screen has room; a sizable one gets no smaller.
    CDialogWin(CWin* owner, const CStr& title, int contentWidth, int contentHeight,
               int bits = dialogStyle)
        : CDialogWin(owner->app, owner, title, contentWidth, contentHeight, bits) {}
    /// The same with an owner that may be null.
    CDialogWin(CApp* dialogApp, CWin* owner, const CStr& title, int contentWidth, int contentHeight,
               int bits);

    void showModal() override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    std::vector<CCtrl*> tabStops() override; ///< the row of buttons comes last
    void describe(Description& d, int part) const override;

    /// Closes it with a result. An heir first checks what was entered, and may stay open.
    virtual void accept();

protected:
    /// Adds to the row of buttons, which stays at the lower right; the first one is pressed by
    /// Return. The delegate is owned by the button, null calls `accept`.
    CButton* addButton(const CStr& text, COnChange* clicked = nullptr);
    void addOkCancel(const CStr& okText);
    /// The height of the content above the row of buttons.
    int contentBottom() const;

    CButton* firstButton = nullptr; ///< one of `buttons`
    CCtrl* startCtrl = nullptr;     ///< has the focus first; null is the first field

    CGroup* buttons; ///< in the client area

private:
    void acceptClicked(CObject* sender);
    void cancelClicked(CObject* sender);
};

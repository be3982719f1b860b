#pragma once

#include "gui/CCtrl.h"

/// A text field of one line. What is typed counts when the focus leaves it: then `onChange` is
/// called, unless Escape gave back the former text. "*" cannot be typed. Letters beyond ASCII take
/// several bytes, which the caret passes at once. What the mouse or keys select is offered to other
/// programs, and the middle button puts in what they offer.
class CEdit : public CCtrl {
public:
    int cursor = -1;   ///< index of the last byte before the caret; -1 at the start
    int anchor = -1;   ///< where the selection began, as `cursor`
    int selLength = 0; ///< characters selected from the anchor on, negative to the left
    CStr oldText;      ///< when the focus came
    CStr text;
    bool selectOnFocus = false;
    bool notifyAlways = false; ///< `onChange` also when the text is the former one
    bool commitOnEnter = false;
    bool upperCase = false;
    bool cancelled = false;    ///< by Escape
    COnKey* onInput = nullptr; ///< owned; may change the character, to 0 or below to refuse it

    CEdit(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CEdit() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void setText(const CStr& newText);
    void describe(Description& d, int part) const override;
    /// As if it had been typed and left.
    bool enterText(const std::string& to) override;

    void selectAll();
    CStr selection() const;
    /// Caret place nearest to a pixel, as `cursor`.
    int XToPos(int x) const;

protected:
    static constexpr int textMargin = 4;

    virtual CStr shownText() const { return text; }
    void setCursor(int place, bool extend);
    bool deleteSelection();

private:
    void pasteSelected(int x);
    bool editKey(int key, int mods);
    bool commandKey(int key);
    bool moveKey(int key, int mods);
    void eraseBack(bool word);
    void insertText(const CStr& piece);
    bool typeKey(int key);
    void cancel();
    int priorPlace(int place) const;
    int nextPlace(int place) const;
    int priorSpace(int place) const;
    int nextSpace(int place) const;
    void selectWord(int place);
    int pixelOf(int place) const;
    int firstPixel() const;
};

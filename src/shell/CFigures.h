#pragma once

#include "gui/CCtrl.h"
#include "gui/TypedText.h"
#include "ui/Digits.h"

class CQV;

/// What the transport's displays have in common: a title over large figures in a sunken field,
/// painted anew only when the figures change.
///
/// With the focus the value is typed, stepped with Up and Down, by ten with Page Up and Page Down,
/// taken to its ends with Home and End, and reset with Delete. Figures that have several parts, as
/// bar, beat and ticks, mark the one that is stepped; Left and Right go to the next. What is typed
/// counts with Return or the loss of the focus, not with Escape.
class CFigures : public CCtrl {
public:
    /// `room` characters can be typed.
    CFigures(CWin* win, const CStr& name, const CStr& title, int left, int width, int room,
             CQV* host);

    void paint(CGraphic* g, CRect rect) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    /// Asks for a repaint if the figures have changed; whether they have.
    bool refresh();
    void describe(Description& d, int part) const override;
    bool enterText(const std::string& to) override; ///< as if it were typed

protected:
    static constexpr int tens = 10;

    virtual CStr figures() const = 0;
    virtual void accept(const CStr& text) = 0; ///< it was typed; what makes no sense is ignored
    virtual void stepBy(int by, int mods) = 0; ///< the marked part; 10 and -10 by Page Up and Down
    virtual void toEnd(bool last) = 0;
    virtual void reset() = 0;
    void endTyping(bool take);

    CQV* qv;
    CStr title;
    TypedText typed;
    int part = 0; ///< that is stepped

private:
    bool stepKey(int key, int mods);
    bool walkParts(int by);
    void markPart(CGraphic* g, CRect field) const;

    Digits digits;
    CStr shownText;
};

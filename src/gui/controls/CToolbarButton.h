#pragma once

#include "gui/controls/CButton.h"

class CBitmap;
struct CGuiItem2;

/// A flat button: it has a face only while it is lit, pushed, or under the pointer. It shows its
/// text, or what `onPaint` draws in `symbolColour`.
class CToolbarButton : public CButton {
public:
    using CButton::CButton;
    void paint(CGraphic* g, CRect rect) override;
    int symbolColour() const; ///< of text and glyph in its present state

protected:
    virtual void paintContent(CGraphic* g, CRect rect);

private:
    const CGuiItem2* look() const;
};

/// A flat button that shows a picture in its middle.
class CImageButton : public CToolbarButton {
public:
    CBitmap* image = nullptr;    ///< not owned; null shows the text
    CBitmap* litImage = nullptr; ///< while lit or pushed; not owned, null is `image`

    using CToolbarButton::CToolbarButton;

protected:
    void paintContent(CGraphic* g, CRect rect) override;
};

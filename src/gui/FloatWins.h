#pragma once

#include "gui/CWin.h"

/// A window without border that shows a line of text and fits itself to it.
class CTextFloat : public CWin {
public:
    CTextFloat(CApp* app, CWin* owner, int width, int height, int style);
    void setText(const CStr& text);
    const CStr& getText() const { return text; }
    void show(bool activate) override;

protected:
    virtual int wantedHeight() const = 0;
    virtual void drawText(CGraphic* g, CRect rect) = 0;

private:
    void paintText(CObject* sender, CGraphic* g, CRect rect);

    CStr text;
    bool fitted = false; ///< since it was shown
};

/// What follows the pointer during a drag.
class CDragWin : public CTextFloat {
public:
    CDragWin(CApp* app, CWin* owner);

protected:
    int wantedHeight() const override;
    void drawText(CGraphic* g, CRect rect) override;
};

/// A hint beside the pointer; to be installed as `CApp::hintWin`. Its timer shows it.
class CHintWin : public CTextFloat {
public:
    CHintWin(CApp* app, CWin* owner);
    void onTimer() override;

protected:
    int wantedHeight() const override;
    void drawText(CGraphic* g, CRect rect) override;
};

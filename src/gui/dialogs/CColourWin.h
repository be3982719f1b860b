#pragma once

#include "gui/dialogs/CDialogWin.h"

class CColourField;
class CEdit;
class CSwatches;
class CValue;

/// Asks for a colour: by a square of saturation and brightness with a strip of hues, by red, green
/// and blue, by its code, or from the palette.
class CColourWin : public CDialogWin {
public:
    int colour; ///< pixel value; changed only with a result

    /// `owner` is never null.
    CColourWin(CWin* owner, const CStr& title, int colour);

    bool keyDown(int key, int mods) override;
    void accept() override;

private:
    void makeValues(int x, int y);
    void makeCode(int x, int y);
    void choose(int pixel, const CObject* from);
    void fieldChanged(CObject* sender);
    void valueChanged(CObject* sender);
    void codeChanged(CObject* sender);
    void swatchChanged(CObject* sender);
    void paintSample(CObject* sender, CGraphic* g, CRect rect);

    int present; ///< that is shown
    CColourField* field;
    CSwatches* swatches;
    CCtrl* sample;            ///< the former colour and the present one
    CValue* channels[3] = {}; ///< red, green, blue
    CEdit* code = nullptr;
};

#pragma once

#include "gui/dialogs/CDialogWin.h"

class CColourField;
class CEdit;
class CValue;

/// Asks for a colour: by a square of saturation and brightness with a strip of hues, by red, green
/// and blue, by its code, or from a palette of even lightness.
class CColourWin : public CDialogWin {
public:
    int colour; ///< pixel value; changed only with a result

    /// `owner` is never null.
    CColourWin(CWin* owner, const CStr& title, int colour);

    void accept() override;

private:
    void makeField(int x, int y);
    void makeValues(int x, int y);
    void makeSwatches(int x, int y);
    /// Shows a colour in all fields but the one that it came from.
    void choose(int pixel, const CObject* from);
    void fieldChanged(CObject* sender);
    void valueChanged(CObject* sender);
    void codeChanged(CObject* sender);
    void swatchClicked(CObject* sender);
    void paintSample(CObject* sender, CGraphic* g, CRect rect);
    void paintSwatch(CObject* sender, CGraphic* g, CRect rect);

    int present; ///< that is shown
    CColourField* field = nullptr;
    CValue* channels[3] = {}; ///< red, green, blue
    CEdit* code = nullptr;
    CCtrl* sample = nullptr;
};

/// Sixteen hues of even lightness, for tracks and parts; the index wraps.
int paletteColour(int index);

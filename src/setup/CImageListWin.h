#pragma once

#include "gui/dialogs/CDialogWin.h"

class CGui;
class CImageChunk;
class CListbox;

/// Asks for one of the images of a theme; further ones can be added from PNG files.
class CImageListWin : public CDialogWin {
public:
    CImageChunk* image; ///< the one chosen, the theme's; null for none

    /// `chosen` is the image that is marked at first, or null. The theme outlives the window.
    CImageListWin(CWin* owner, CGui* theme, CImageChunk* chosen);
    ~CImageListWin() override;
    CImageListWin(const CImageListWin&) = delete;
    CImageListWin& operator=(const CImageListWin&) = delete;

    void accept() override;

private:
    void fill();
    void mark(CImageChunk* wanted);
    void addClicked(CObject* sender);
    void listChanged(CObject* sender);
    void opened(CObject* sender);
    void paintPreview(CObject* sender, CGraphic* g, CRect rect);

    CGui* gui;
    CImageChunk* shown = nullptr; ///< in the preview
    CStr folder;                  ///< of the file dialog
    CListbox* list;               ///< the first line is "None"
    CCtrl* preview;
};

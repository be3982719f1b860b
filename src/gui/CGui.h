#pragma once

#include "base/CObject.h"
#include "base/Geometry.h"

class CGraphic;

/// The colours that a look is made of, as pixel values.
struct CPalette {
    int window, panel, raised, frame, text, dimText, accent, record, solo, mute;
    int meter[3]; ///< safe, high, over
};
CPalette darkPalette();
CPalette lightPalette();

/// What of its look an item uses; bits of `CGuiItem2::caps`.
enum GuiCaps : int {
    capShape = 1,
    capFrame = 2,
    capFill = 4,
    capText = 32,
    capSymbol = 64,
    capSep = 128,
    capImageOnly = 256,
};

enum GuiFill : int { fillNone = 0, fillSolid = 1, fillShaded = 2 };
enum GuiTexture : int { textureGlossy = 0, textureGradient = 1 };

/// The look of one kind of thing, in the table of `CGui`. Colours are pixel values.
struct CGuiItem2 {
    CStr id;      ///< key in files
    int caps = 0; ///< GuiCaps
    int mode = 0;
    int width = 0, height = 0; ///< pixels; 0 is free
    int shape = 0;             ///< 0 square, 1 rounded
    int frame = 0;             ///< 1 a one-pixel frame
    int frameCol = 0;
    int fill = fillSolid; ///< GuiFill
    int fillTex = textureGlossy;
    int fillCol = 0, fillCol2 = 0;
    int fillAlign = 2;       ///< direction of a gradient, as `drawGradient`
    float fillEffect = 0.5f; ///< strength of the gloss
    int textCol = 0;
    int symbolCol = 0; ///< of glyphs drawn on the item
    int sep = 0, sepCol = 0, sepSize = 0;
};

constexpr int guiNoFill = -2;

void setGuiFill(CGuiItem2& item, int color); ///< `guiNoFill` lets the parent show through
void setGuiFrame(CGuiItem2& item, int style, int color);
void setGuiShape(CGuiItem2& item, int shape);
void setGuiText(CGuiItem2& item, int color);
void setGuiSymbol(CGuiItem2& item, int color);
void setGuiSep(CGuiItem2& item, int style, int color, int size);
void setGuiGradient(CGuiItem2& item, int from, int to, int direction);
void setGuiGlossy(CGuiItem2& item, int color, float effect);

/// The theme: the table of all items, and the colours of the present look. Interface thread; items
/// change only between paints.
class CGui : public CObject {
public:
    static constexpr int maxItems = 127;

    CPalette palette; ///< of the look last set

    CGui();
    /// Fills the table with the toolkit's items in their default state. An heir adds its own.
    virtual void init();
    /// Called when the look has changed.
    virtual void changed() {}

    /// Resets the item and enters it; ignored when the table is full.
    void addItem(const char* key, CGuiItem2* item, int caps, int width = 0, int height = 0);
    int numItems() const { return count; }
    CGuiItem2* getItem(int index) const; ///< null outside the table
    /// Runs `init` and gives the toolkit's items their colours.
    void setPalette(const CPalette& colours);

protected:
    void clearItems() { count = 0; }

private:
    CGuiItem2* items[maxItems] = {}; ///< globals, not owned
    int count = 0;
};

enum DrawItemFlag : int { drawWhole = 0, drawBackground = 2, drawFrame = 4 };

/// Paints the fill (unless `flags` has `drawFrame`) and the frame (unless `drawBackground`).
void drawGuiItem(CGraphic* g, CRect rect, const CGuiItem2* item, int flags = drawWhole);

/// The items of the toolkit.
extern CGuiItem2 clWinBkgnd, clWinClose, clWinCloseMouseOver, clWinMin, clWinMinMouseOver, clWinMax,
    clWinMaxMouseOver, clCaption, clMenuBar, clMenuBarSelected, clMenu, clMenuSelected, clRibbon,
    clRibbonBar, clToolbar, clToolbarControls, clToolbarControlsPushed, clPanel, clButton,
    clSpeedButton, clSpeedButtonPushed, clSpeedButtonMouseOver, clDropdown, clDropdownMenu,
    clDropdownMenuSelected, clListbox, clListboxSelected, clTabs, clTabsSelected, clTree,
    clTreeSelected, clValue, clScrollbarHorz, clScrollbarVert, clScrollbarHorzThumb,
    clScrollbarVertThumb, clScrollbarButtonLeft, clScrollbarButtonUp, clScrollbarButtonRight,
    clScrollbarButtonDown;

/// Heights and widths in pixels; a theme may change them.
extern int borderSize, captionHeight, menuHeight, toolbarHeight, buttonHeight;

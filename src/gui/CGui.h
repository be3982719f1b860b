#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "gui/GuiItem.h"
#include "gui/Palette.h"

#include <vector>

class CImageChunk;
struct ItemLook;

/// The theme: the table of all items, and the colours of the present look. The items are globals
/// that every paint reads, so there is one theme at a time. Interface thread; items change only
/// between paints.
class CGui : public CObject {
public:
    static constexpr int maxItems = 127;

    CPalette palette;           ///< of the present look
    CStr fileName;              ///< of the theme file last opened or saved; empty for a palette
    std::vector<int> colors;    ///< the different colours in use
    ListOf<CImageChunk> images; ///< owned

    CGui();
    ~CGui() override;
    CGui(const CGui&) = delete;
    CGui& operator=(const CGui&) = delete;

    /// Empties the table, `colors` and `images`, then enters the toolkit's items in their default
    /// state. An heir adds its own.
    virtual void init();
    /// Called when the look has changed.
    virtual void changed() {}

    /// Resets the item and enters it; ignored when the table is full.
    void addItem(const char* key, CGuiItem2* item, int caps, int width = 0, int height = 0);
    int numItems() const { return count; }
    CGuiItem2* getItem(int index) const;        ///< null outside the table
    CGuiItem2* findItem(const CStr& key) const; ///< null without one
    void addImage(CImageChunk* image);          ///< adopts it
    int numColors() const { return int(colors.size()); }
    void addColor(int color); ///< unless it is there

    /// Runs `init` and gives all items the colours of a palette.
    void setPalette(const CPalette& skin);
    /// Replaces the look by that of a theme file; what the file does not tell is as in the dark
    /// look. A damaged file counts up to the damage. False, and nothing happens, without the file.
    bool open(const CStr& file);
    /// False when the file cannot be written; one that was there then stays.
    bool save(const CStr& file);

    /// Carries out what was changed in the fields of an item: takes over a link, renders the
    /// bitmap, notes the colours.
    void updateGuiItem(CGuiItem2* item);
    void updateAll(); ///< the same for all items, and `palette` follows them
    /// In all items and in `colors`; then updates all.
    void colorReplace(int from, int to);

protected:
    /// Enters a table of items, which has to stay; `setPalette` will find them.
    void addItems(const ItemLook* rows, int rowCount);
    /// Takes the palette from the items, for controls that paint by it.
    virtual void readPalette();

private:
    struct Table {
        const ItemLook* rows;
        int count;
    };

    void setColours(const CPalette& skin);
    void settleItem(CGuiItem2* item);
    int64_t roomFor(const CGuiItem2* item) const;
    void renderImages();

    CGuiItem2* items[maxItems] = {}; ///< globals, not owned
    int count = 0;
    std::vector<Table> tables;
};

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

#include "gui/CGui.h"

#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"

CGuiItem2 clWinBkgnd, clWinClose, clWinCloseMouseOver, clWinMin, clWinMinMouseOver, clWinMax,
    clWinMaxMouseOver, clCaption, clMenuBar, clMenuBarSelected, clMenu, clMenuSelected, clRibbon,
    clRibbonBar, clToolbar, clToolbarControls, clToolbarControlsPushed, clPanel, clButton,
    clSpeedButton, clSpeedButtonPushed, clSpeedButtonMouseOver, clDropdown, clDropdownMenu,
    clDropdownMenuSelected, clListbox, clListboxSelected, clTabs, clTabsSelected, clTree,
    clTreeSelected, clValue, clScrollbarHorz, clScrollbarVert, clScrollbarHorzThumb,
    clScrollbarVertThumb, clScrollbarButtonLeft, clScrollbarButtonUp, clScrollbarButtonRight,
    clScrollbarButtonDown;

int borderSize = 3, captionHeight = 20, menuHeight = 20, toolbarHeight = 22, buttonHeight = 24;

namespace {

constexpr int thickness = 16; // of scroll bars and their arrows
constexpr int treeRow = 18;

using Colour = int CPalette::*;

/// How an item takes its colours from the palette; null leaves the fill or frame out. Where
/// `onFill` is set the text and the symbol are white or black, whichever reads on the fill.
struct ItemLook {
    const char* key;
    CGuiItem2* item;
    int caps, width, height;
    Colour fill, frame, text, symbol;
    bool onFill = false;
};

constexpr Colour none = nullptr;

const ItemLook* toolkitItems(int& count) {
    using P = CPalette;
    constexpr Colour window = &P::window, panel = &P::panel, raised = &P::raised, edge = &P::frame,
                     text = &P::text, dim = &P::dimText, accent = &P::accent, record = &P::record;
    static const ItemLook table[] = {
        {"winbkgnd", &clWinBkgnd, 47, 0, 0, window, edge, text, dim},
        {"winclose", &clWinClose, 86, 0, 0, none, none, dim, dim},
        {"winclosemouseover", &clWinCloseMouseOver, 86, 0, 0, record, none, text, text, true},
        {"winmin", &clWinMin, 86, 0, 0, none, none, dim, dim},
        {"winminmouseover", &clWinMinMouseOver, 86, 0, 0, edge, none, text, text},
        {"winmax", &clWinMax, 86, 0, 0, none, none, dim, dim},
        {"winmaxmouseover", &clWinMaxMouseOver, 86, 0, 0, edge, none, text, text},
        {"caption", &clCaption, 55, 0, captionHeight, raised, none, text, dim},
        {"menubar", &clMenuBar, 183, 0, menuHeight, window, none, text, dim},
        {"menubarsel", &clMenuBarSelected, 39, 0, 0, raised, none, text, text},
        {"menu", &clMenu, 103, 0, 0, panel, edge, text, dim},
        {"menusel", &clMenuSelected, 103, 0, 0, accent, none, text, text, true},
        {"ribbon", &clRibbon, 119, 0, 0, window, none, text, dim},
        {"ribbonbar", &clRibbonBar, 247, 0, 0, window, none, text, dim},
        {"toolbar", &clToolbar, 7, 0, toolbarHeight, panel, none, text, text},
        {"toolbarcontrols", &clToolbarControls, 119, 0, 0, raised, edge, text, text},
        {"toolbarcontrolspushed", &clToolbarControlsPushed, 64, 0, 0, accent, edge, text, text,
         true},
        {"panel", &clPanel, 15, 0, 0, panel, edge, text, dim},
        {"button", &clButton, 39, 0, 0, raised, edge, text, text},
        {"speedbutton", &clSpeedButton, 119, 0, 0, none, none, text, dim},
        {"speedbuttonpushed", &clSpeedButtonPushed, 119, 0, 0, accent, none, text, text, true},
        {"speedbuttonmouseover", &clSpeedButtonMouseOver, 23, 0, 0, raised, edge, text, text},
        {"dropdown", &clDropdown, 119, 0, 0, raised, edge, text, dim},
        {"dropdownmenu", &clDropdownMenu, 39, 0, 0, panel, edge, text, dim},
        {"dropdownmenuselected", &clDropdownMenuSelected, 39, 0, 0, accent, none, text, text, true},
        {"listbox", &clListbox, 39, 0, 0, panel, edge, text, dim},
        {"listboxsel", &clListboxSelected, 39, 0, 0, accent, none, text, text, true},
        {"tabs", &clTabs, 55, 0, 0, window, edge, dim, dim},
        {"tabssel", &clTabsSelected, 39, 0, 0, raised, edge, text, text},
        {"tree", &clTree, 102, 0, 0, panel, edge, text, dim},
        {"treesel", &clTreeSelected, 103, 0, treeRow, accent, none, text, text, true},
        {"value", &clValue, 39, 0, 0, panel, edge, text, dim},
        {"scrollbarhorz", &clScrollbarHorz, 4, 0, thickness, window, none, text, dim},
        {"scrollbarvert", &clScrollbarVert, 4, thickness, 0, window, none, text, dim},
        {"scrollbarhorzthumb", &clScrollbarHorzThumb, 7, 0, thickness, raised, edge, text, dim},
        {"scrollbarvertthumb", &clScrollbarVertThumb, 7, thickness, 0, raised, edge, text, dim},
        {"scrollbarleft", &clScrollbarButtonLeft, 71, thickness, thickness, window, none, dim, dim},
        {"scrollbarup", &clScrollbarButtonUp, 71, thickness, thickness, window, none, dim, dim},
        {"scrollbarright", &clScrollbarButtonRight, 71, thickness, thickness, window, none, dim,
         dim},
        {"scrollbardown", &clScrollbarButtonDown, 71, thickness, thickness, window, none, dim, dim},
    };
    count = int(sizeof table / sizeof table[0]);
    return table;
}

void applyLook(const ItemLook& look, const CPalette& colours) {
    CGuiItem2& item = *look.item;
    setGuiFill(item, look.fill ? colours.*look.fill : guiNoFill);
    setGuiFrame(item, look.frame ? 1 : 0, look.frame ? colours.*look.frame : 0);
    const int on = look.onFill ? textOn(item.fillCol) : 0;
    setGuiText(item, look.onFill ? on : colours.*look.text);
    setGuiSymbol(item, look.onFill ? on : colours.*look.symbol);
}

void drawRoundedGradient(CGraphic* g, CRect r, const CGuiItem2& item) {
    const bool across = item.fillAlign == gradientAcross || item.fillAlign == gradientAcrossTo;
    const bool back = item.fillAlign == gradientDownUp || item.fillAlign == gradientAcrossTo;
    const int last = back ? item.fillCol : item.fillCol2;
    if (across) {
        g->fillRect(item.fillCol, asRect(r.left, r.top + 1, r.left + 1, r.bottom - 1));
        g->fillRect(last, asRect(r.right - 1, r.top + 1, r.right, r.bottom - 1));
        r = sizeRect(r, 1, 0, -1, 0);
    } else {
        g->fillRect(item.fillCol, asRect(r.left + 1, r.top, r.right - 1, r.top + 1));
        g->fillRect(last, asRect(r.left + 1, r.bottom - 1, r.right - 1, r.bottom));
        r = sizeRect(r, 0, 1, 0, -1);
    }
    drawGradient(g, r, item.fillCol, item.fillCol2, item.fillAlign);
}

void drawOutline(CGraphic* g, CRect rect, int shape, int color) {
    if (shape == 1)
        roundFrame(g, color, rect);
    else
        g->frameRect(color, rect);
}

void drawFill(CGraphic* g, CRect rect, const CGuiItem2& item) {
    if (item.fill == fillSolid) {
        if (item.shape == 1)
            roundRect(g, item.fillCol, rect);
        else
            g->fillRect(item.fillCol, rect);
    } else if (item.fill == fillShaded && item.fillTex == textureGradient) {
        if (item.shape == 1)
            drawRoundedGradient(g, rect, item);
        else
            drawGradient(g, rect, item.fillCol, item.fillCol2, item.fillAlign);
    } else if (item.fill == fillShaded) {
        drawGlossy(g, sizeRect(rect, 1, 0, -1, 0), item.fillCol, item.fillEffect, 0);
        drawOutline(g, rect, item.shape, item.fillCol);
    }
}

} // namespace

CPalette darkPalette() {
    return {hexColor(0x23262b),
            hexColor(0x2b2f36),
            hexColor(0x31363f),
            hexColor(0x15171a),
            hexColor(0xe6e8eb),
            hexColor(0xa3aab4),
            hexColor(0x58a9ff),
            hexColor(0xe5484d),
            hexColor(0xf0b429),
            hexColor(0x8b6fd6),
            {hexColor(0x3fbf7f), hexColor(0xe5c07b), hexColor(0xe5484d)}};
}

CPalette lightPalette() {
    return {hexColor(0xeceef1),
            hexColor(0xf7f8fa),
            hexColor(0xffffff),
            hexColor(0xc3c8d0),
            hexColor(0x1c1f23),
            hexColor(0x5c6470),
            hexColor(0x0b66c3),
            hexColor(0xb4232a),
            hexColor(0x8a5a00),
            hexColor(0x6a4bc0),
            {hexColor(0x1d7a4c), hexColor(0x8a5a00), hexColor(0xb4232a)}};
}

void setGuiFill(CGuiItem2& item, int color) {
    item.fill = color == guiNoFill ? fillNone : fillSolid;
    if (item.fill == fillSolid) item.fillCol = color;
}

void setGuiFrame(CGuiItem2& item, int style, int color) {
    item.frame = style;
    item.frameCol = color;
}

void setGuiShape(CGuiItem2& item, int shape) {
    item.shape = shape;
}

void setGuiText(CGuiItem2& item, int color) {
    item.textCol = color;
}

void setGuiSymbol(CGuiItem2& item, int color) {
    item.symbolCol = color;
}

void setGuiSep(CGuiItem2& item, int style, int color, int size) {
    item.sep = style;
    item.sepCol = color;
    item.sepSize = size;
}

void setGuiGradient(CGuiItem2& item, int from, int to, int direction) {
    item.fill = fillShaded;
    item.fillTex = textureGradient;
    item.fillCol = from;
    item.fillCol2 = to;
    item.fillAlign = direction;
}

void setGuiGlossy(CGuiItem2& item, int color, float effect) {
    item.fill = fillShaded;
    item.fillTex = textureGlossy;
    item.fillCol = color;
    item.fillEffect = effect;
}

CGui::CGui() : palette(darkPalette()) {
}

void CGui::init() {
    clearItems();
    int rows = 0;
    const ItemLook* table = toolkitItems(rows);
    for (int i = 0; i < rows; i++)
        addItem(table[i].key, table[i].item, table[i].caps, table[i].width, table[i].height);
}

void CGui::addItem(const char* key, CGuiItem2* item, int caps, int width, int height) {
    if (count >= maxItems) return;
    *item = CGuiItem2();
    item->id = key;
    item->caps = caps;
    item->width = width;
    item->height = height;
    items[count++] = item;
}

CGuiItem2* CGui::getItem(int index) const {
    return index >= 0 && index < count ? items[index] : nullptr;
}

void CGui::setPalette(const CPalette& colours) {
    palette = colours;
    init();
    int rows = 0;
    const ItemLook* table = toolkitItems(rows);
    for (int i = 0; i < rows; i++) applyLook(table[i], colours);
    changed();
}

void drawGuiItem(CGraphic* g, CRect rect, const CGuiItem2* item, int flags) {
    if (!(flags & drawFrame)) drawFill(g, rect, *item);
    if (item->frame == 1 && !(flags & drawBackground))
        drawOutline(g, rect, item->shape, item->frameCol);
}

#include "gui/CGui.h"
#include "gui/Colours.h"
#include "gui/ItemLook.h"

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
constexpr PaletteColour none = nullptr;

} // namespace

const ItemLook* toolkitItems(int& count) {
    using P = CPalette;
    constexpr PaletteColour window = &P::window, panel = &P::panel, raised = &P::raised,
                            edge = &P::frame, text = &P::text, dim = &P::dimText,
                            accent = &P::accent, record = &P::record;
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
        {"ribbon", &clRibbon, 119, 0, 0, window, none, text, dim, false, &clMenuBar},
        {"ribbonbar", &clRibbonBar, 247, 0, 0, window, none, text, dim, false, &clMenuBar},
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
    if (item.linkTo) return;
    setGuiFill(item,
               look.fill ? fadeCol(colours.*look.fill, colours.accent, look.tint) : guiNoFill);
    setGuiFrame(item, look.frame ? 1 : 0, look.frame ? colours.*look.frame : 0);
    const int on = look.onFill ? textOn(item.fillCol) : 0;
    setGuiText(item, look.onFill ? on : colours.*look.text);
    setGuiSymbol(item, look.onFill ? on : colours.*look.symbol);
}

#pragma once

#include "gui/CCtrl.h"

class CPopup;

enum MenuItemKind : int { menuCommand, menuSeparator, menuSub, menuRows };

/// One entry of a popup menu. The popup paints it and gives it the mouse; `top` and `height` are
/// its place in the popup. `onChange` is called when it is chosen.
///
/// An entry of kind `menuRows` is a block of `rowCount` rows of equal height: the chosen row comes
/// in `tag`, and `onGetText` tells their texts.
class CMenuItem : public CCtrl {
public:
    CStr text; ///< behind a tab character the shortcut
    int kind;  ///< MenuItemKind
    int rowCount = 0;
    bool checked = false;
    bool keepOpen = false;           ///< Space executes it without closing the menus
    CPopup* subMenu = nullptr;       ///< owned
    COnGetText* onGetText = nullptr; ///< owned; of a block: the text of a row

    /// `owner` is the popup.
    CMenuItem(CPopup* owner, int kind, const CStr& text);
    ~CMenuItem() override;

    bool selectable() const { return kind != menuSeparator && enabled; }
    CStr label() const;    ///< without the shortcut
    CStr shortcut() const; ///< empty without one
    CStr rowText(int row);
};

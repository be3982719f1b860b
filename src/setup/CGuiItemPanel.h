#pragma once

#include "gui/CGroup.h"

#include <vector>

class CButton;
class CColorButton;
class CDropdown;
class CGui;
class CValue;
struct CGuiItem2;
struct CGuiLook;

/// The editor of one item of the theme: a control for each thing that the item's `caps` tell and
/// that its present fill uses. Every change shows at once in all windows. `onChange` tells that
/// there are other controls now, and another height. Interface thread.
class CGuiItemPanel : public CGroup {
public:
    CGuiItemPanel(CWin* win, int left, int top, int width);

    void setItem(CGuiItem2* edited); ///< null shows nothing
    /// Makes the controls anew. Not inside a handler of one of them: `mustUpdate` is for that.
    void setup();
    void onTimer() override;

private:
    using Names = std::vector<const char*>;
    enum class Choice { shape, frame, fill, texture, direction, sep };

    void setupFill();
    void setupShade();
    void addRow(const char* label, CCtrl* field);
    void addChoice(const char* label, Choice choice, const Names& names, int index);
    void addColour(const char* label, int CGuiLook::*field);
    void addStrength();
    void addImage();
    void mustUpdate();
    void apply();
    void setFill(int fill);
    void choiceChanged(CDropdown* field);
    void colourChanged(CColorButton* button);
    void colourReplaced(CColorButton* button);
    void replaceClicked(CCtrl* sender);
    void strengthChanged(CValue* sender);
    void imageClicked(CButton* sender);

    CGui* gui;
    CGuiItem2* item = nullptr;
    int y = 0;                                 ///< where the next row comes
    std::vector<int CGuiLook::*> colourFields; ///< by the `tag` of a colour button
    std::vector<int> fills;                    ///< by the row of the choice of fills
};

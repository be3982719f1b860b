#include "access/AtkRoles.h"

const StateName stateNames[] = {
    {stateEnabled, ATK_STATE_ENABLED},     {stateEnabled, ATK_STATE_SENSITIVE},
    {stateShowing, ATK_STATE_SHOWING},     {stateShowing, ATK_STATE_VISIBLE},
    {stateFocusable, ATK_STATE_FOCUSABLE}, {stateActive, ATK_STATE_ACTIVE},
    {stateModal, ATK_STATE_MODAL},         {stateChecked, ATK_STATE_CHECKED},
    {statePressed, ATK_STATE_PRESSED},     {stateSelectable, ATK_STATE_SELECTABLE},
    {stateSelected, ATK_STATE_SELECTED},   {stateExpandable, ATK_STATE_EXPANDABLE},
    {stateExpanded, ATK_STATE_EXPANDED},   {stateEditable, ATK_STATE_EDITABLE},
    {stateVertical, ATK_STATE_VERTICAL},   {stateEnabled, ATK_STATE_INVALID},
};

AtkRole atkRole(Role role) {
    switch (role) {
    case Role::none:
        return ATK_ROLE_REDUNDANT_OBJECT;
    case Role::application:
        return ATK_ROLE_APPLICATION;
    case Role::window:
        return ATK_ROLE_FRAME;
    case Role::dialog:
        return ATK_ROLE_DIALOG;
    case Role::alert:
        return ATK_ROLE_ALERT;
    case Role::page:
        return ATK_ROLE_INTERNAL_FRAME;
    case Role::toolBar:
        return ATK_ROLE_TOOL_BAR;
    case Role::menuBar:
        return ATK_ROLE_MENU_BAR;
    case Role::menu:
        return ATK_ROLE_MENU;
    case Role::menuEntry:
        return ATK_ROLE_MENU_ITEM;
    case Role::menuCheck:
        return ATK_ROLE_CHECK_MENU_ITEM;
    case Role::separator:
        return ATK_ROLE_SEPARATOR;
    case Role::button:
        return ATK_ROLE_PUSH_BUTTON;
    case Role::toggle:
        return ATK_ROLE_TOGGLE_BUTTON;
    case Role::checkBox:
        return ATK_ROLE_CHECK_BOX;
    case Role::comboBox:
        return ATK_ROLE_COMBO_BOX;
    case Role::textField:
        return ATK_ROLE_ENTRY;
    case Role::passwordField:
        return ATK_ROLE_PASSWORD_TEXT;
    case Role::number:
        return ATK_ROLE_SPIN_BUTTON;
    case Role::slider:
        return ATK_ROLE_SLIDER;
    case Role::scrollBar:
        return ATK_ROLE_SCROLL_BAR;
    case Role::splitter:
        return ATK_ROLE_SPLIT_PANE;
    case Role::progress:
        return ATK_ROLE_PROGRESS_BAR;
    case Role::meter:
        return ATK_ROLE_LEVEL_BAR;
    case Role::label:
        return ATK_ROLE_LABEL;
    case Role::status:
        return ATK_ROLE_STATUSBAR;
    case Role::tabs:
        return ATK_ROLE_PAGE_TAB_LIST;
    case Role::tab:
        return ATK_ROLE_PAGE_TAB;
    case Role::list:
        return ATK_ROLE_LIST;
    case Role::listRow:
        return ATK_ROLE_LIST_ITEM;
    case Role::tree:
        return ATK_ROLE_TREE;
    case Role::treeRow:
        return ATK_ROLE_TREE_ITEM;
    case Role::table:
        return ATK_ROLE_TABLE;
    case Role::group:
        return ATK_ROLE_PANEL;
    case Role::canvas:
        return ATK_ROLE_CANVAS;
    case Role::item:
        return ATK_ROLE_LIST_ITEM;
    case Role::picture:
        return ATK_ROLE_IMAGE;
    }
    return ATK_ROLE_UNKNOWN;
}

void addStates(AtkStateSet* set, const Description& description) {
    for (const StateName* at = stateNames; at->theirs != ATK_STATE_INVALID; ++at)
        if (description.has(at->ours)) atk_state_set_add_state(set, at->theirs);
    if (description.has(stateFocused)) atk_state_set_add_state(set, ATK_STATE_FOCUSED);
    if (description.role == Role::checkBox) atk_state_set_add_state(set, ATK_STATE_CHECKABLE);
    if (description.role == Role::textField) atk_state_set_add_state(set, ATK_STATE_SINGLE_LINE);
}

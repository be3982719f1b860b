#pragma once

#include "base/CStr.h"

#include <initializer_list>

class CMenuItem;
class CPopup;
class Workspace;

/// An entry of a menu that runs an action, with its shortcut, grey or ticked as it stands now.
/// `text` is shown in place of its label, unless empty. Null, and no entry, for an action that the
/// program does not carry out.
CMenuItem* addActionItem(CPopup* popup, Workspace& workspace, const char* name,
                         const CStr& text = "");
/// Several of them behind a line.
void addActionItems(CPopup* popup, Workspace& workspace, std::initializer_list<const char*> names);

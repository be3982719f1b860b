#pragma once

class CApp;
class CStr;
class CWin;

/// Makes `showMsg` of base/Messages.h show windows: modal, as large as the text needs, with a
/// button for each bit of `flags` (MessageButton). The first button is taken by Return, Tab and the
/// arrows move on, a button's first letter presses it; closing and Escape answer as the text of
/// `answerOfEscape` tells. Without an owner the main window counts.
void installMessageBox(CApp* app);

#pragma once

#include "gui/dialogs/CDialogWin.h"

class CEdit;

/// Asks for a line of text, which comes in `text` together with `result`. The title tells for what.
class CTextWin : public CDialogWin {
public:
    CStr text;               ///< at first what is shown; changed only with a result
    bool mayBeEmpty = false; ///< else there is no result while nothing but blanks stands there

    /// `owner` is never null. `label` stands above the field when it is not empty.
    CTextWin(CWin* owner, const CStr& title, const CStr& text, const CStr& label = CStr());

    void accept() override;

private:
    bool editKey(CObject* sender, int& key, int mods);

    CEdit* edit;
};

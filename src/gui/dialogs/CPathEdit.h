#pragma once

#include "base/CStringList.h"
#include "gui/controls/CEdit.h"

/// A text field for a path, which completes the name that is being typed at its end: what it adds
/// is selected, so that typing on replaces it. Tab takes it, or completes when nothing was added.
class CPathEdit : public CEdit {
public:
    enum Completing : int {
        completeFolders, ///< only their names
        completeOnTab,   ///< all, but nothing while typing: for new names
        completeAll,
    };

    CStr base;   ///< folder that a relative path counts from, with a separator at its end
    CStr filter; ///< extensions of the files that are offered, as `readDir` takes them
    Completing completing = completeAll;

    using CEdit::CEdit;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    CStr path() const { return fullPath(text.trim(), base); }

    /// A path as users write it, "~" being the home folder and ".." the folder around, in full.
    static CStr fullPath(const CStr& typed, const CStr& base);

private:
    bool complete(bool withFiles);
    void list(const CStr& folder);

    CStr listed; ///< folder whose names stand in the lists
    CStringList folders, files;
};

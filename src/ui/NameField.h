#pragma once

#include "gui/controls/CEdit.h"

#include <functional>

/// A field in place of a name: Return and leaving it take what was typed over, Escape does not. It
/// hides when it is left, and the keys go back to where they were; the owner deletes
/// it some time after that, by `dropLeft`. Interface thread.
class NameField : public CEdit {
public:
    std::function<void(const CStr& name)> onName; ///< it was left with a name that is not blank

    /// In a group, with all of the name selected; takes the keys. They go back to `former`, null
    /// for the group if they were its own.
    NameField(CGroup* in, CRect box, const CStr& name, const CStr& spoken, CCtrl* former = nullptr);

    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void callOff() { cancelled = true; } ///< what it is about has gone: `onName` is not called
    /// Deletes a field that has been left and makes the pointer null.
    static void dropLeft(NameField*& field);

private:
    CCtrl* back; ///< what had the keys; null for nothing
};

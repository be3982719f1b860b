#pragma once

#include "gui/CGroup.h"
#include "notes/TransformPresets.h"

#include <array>

class CButton;
class CDropdown;
class CUndo;
class CValue;
class NameField;
class NoteState;

/// What is done to the selected notes or hits, or to all, while its numbers are turned: seen and
/// heard at once, and one step in the end. Interface thread.
class TransformBar : public CGroup {
public:
    static constexpr int barHeight = 26;
    COnChange* onClosed = nullptr; ///< owned; it is to be hidden

    TransformBar(CWin* win, NoteState& state);
    ~TransformBar() override;

    void paint(CGraphic* g, CRect rect) override;
    bool keyInside(int key, int mods) override; ///< Escape undoes what was done
    void describe(Description& d, int part) const override;

    CCtrl* firstCtrl(); ///< that takes the keys when it opens
    void open();        ///< does what is chosen
    void keep();        ///< what was done stays, and it has nothing more to do with it
    void dropField();   ///< one that was left

private:
    CButton* addButton(const char* name, const char* hint, int wide,
                       void (TransformBar::*pressed)(CObject*));
    void fillKinds();
    void showValues();
    void kindChosen(CObject*);
    void valueTurned(CObject*);
    void keepClicked(CObject*);
    void cancelClicked(CObject*);
    void saveClicked(CObject*);
    void removeClicked(CObject*);
    void takeBack();
    void apply();
    TransformValues values() const;

    NoteState& state;
    TransformPresets presets;
    int kind = 0;
    CUndo* done = nullptr; ///< the step, in the history while it is the last one there; not owned
    CDropdown* kinds;
    std::array<CValue*, TransformShape::mostValues> fields{};
    CButton *kept, *cancelled, *saved, *removed;
    NameField* naming = nullptr; ///< while a preset is named
    int nextX = 0;
};

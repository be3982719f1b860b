#pragma once

#include "gui/CGroup.h"

#include <vector>

class CButton;
class CEdit;
class CListbox;
class CSampler;
class Workspace;

/// The programs of the factory, of the General MIDI set and of the user's folders of presets, by
/// where they are from, by family and by what is typed, with boxes for favourites. One that is
/// chosen comes in the place of the sampler's current program, as a step, and sounds at once.
/// Interface thread.
class ProgramList : public CGroup {
public:
    ProgramList(CWin* win, Workspace& workspace, CSampler& sampler);
    ~ProgramList() override;

    void fit(int width, int height);
    void refresh(); ///< follows what is typed, and lets go of the note that sounds

private:
    struct Entry {
        CStr name, family, words;
        CStr path;       ///< of a file; empty for the factory's
        int number = -1; ///< of the factory's
        int origin = 0;  ///< of what it is a part
        bool favourite = false;
        CStr key() const { return path.empty() ? name : path; } ///< that favourites are kept by
    };

    void readEntries();
    void readSet();
    void readPresets(const CStr& folder);
    void listFamilies();
    bool take(const Entry& entry);
    void list(); ///< those that family and text leave
    bool fits(const Entry& entry) const;
    void familyChosen(CObject*);
    void programChosen(CObject*);
    void favouriteChanged(CObject*);
    void hearClicked(CObject*);
    void sound(int key); ///< -1 none

    Workspace& workspace;
    CSampler& sampler;
    std::vector<Entry> entries;
    std::vector<int> groups; ///< what the rows of the families stand for
    std::vector<int> shown;  ///< those of the list
    CEdit* text;             ///< among the controls, as the rest
    CButton* hear;
    CListbox *families, *programs;
    CStr shownText;
    int sounding = -1, ticksLeft = 0;
};

#pragma once

#include "gui/CGroup.h"

#include <functional>
#include <vector>

class CButton;
class CLayer;
class CListbox;
class CSampler;
class CSound;
class Workspace;

/// The layers of a sampler's current program with their sounds, of which one is shown, and what
/// adds and removes them. Interface thread.
class SoundList : public CGroup {
public:
    std::function<void()> onChosen; ///< another sound is shown

    SoundList(CWin* win, Workspace& workspace, CSampler& sampler);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void refresh(); ///< follows the program

    CLayer* layer() const; ///< the current one; null without a program
    CSound* sound() const; ///< the current one of that; null without any
    void choose(CSound* sound);

private:
    struct Row {
        CLayer* layer;
        CSound* sound; ///< null for the line of the layer itself
        CStr text;
        bool operator==(const Row& other) const = default;
    };

    std::vector<Row> present() const;
    CButton* addButton(const char* text, const char* use, void (SoundList::*clicked)(CObject*));
    void rowChosen(CObject*);
    void addClicked(CObject*);
    void removeClicked(CObject*);
    void synthChosen(CObject*);
    void sampleChosen(CObject*);
    void layerChosen(CObject*);
    void replaceChosen(CObject*);
    CStr askSample(const char* title) const;

    Workspace& workspace;
    CSampler& sampler;
    CListbox* list;
    CButton *add, *remove;
    std::vector<Row> rows;
};

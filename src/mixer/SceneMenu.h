#pragma once

#include "engine/MixScene.h"

#include <array>

class CMixerPanel;
class CObject;
class CPopup;

/// The scenes of the mixer, what of them is recalled, and two states to compare. Outlives the menus
/// that it has filled. Interface thread.
class SceneMenu {
public:
    explicit SceneMenu(CMixerPanel& of) : panel(of) {}

    void fill(CPopup* popup);
    void recall(int index);
    /// Keeps how the strips are set as the state that was in force, and brings back the other one,
    /// if there has been one: one step.
    void compare(int state);
    int state() const { return present; } ///< 0 or 1
    void follow();                        ///< lets go of strips that are gone

private:
    void recallChosen(CObject* sender);
    void addChosen(CObject* sender);
    void updateChosen(CObject* sender);
    void renameChosen(CObject* sender);
    void deleteChosen(CObject* sender);
    void partChosen(CObject* sender);
    void selectedChosen(CObject* sender);

    CMixerPanel& panel;
    int parts = sceneAll;
    bool selectedOnly = false;
    int present = 0;
    std::array<CMixScene, 2> states;
    std::array<bool, 2> known{};
};

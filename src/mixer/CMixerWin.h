#pragma once

#include "ui/CCompEditor.h"
#include "ui/NoticeRouter.h"
#include "ui/OwnActions.h"

#include <vector>

class CMixer;
class CMixerPanel;
class CPopup;
class MixerBar;
class Workspace;

/// The window of the mixer: a bar, and the strips. Interface thread.
class CMixerWin : public CCompEditor {
public:
    CMixerWin(Workspace& workspace, CMixer& mixer);
    ~CMixerWin() override;

    // Whatever comes in finds the strips that there are.
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void show(bool activate) override;
    void hide() override; ///< nothing is measured any more

    bool canRun(const CAction* action) const override;
    bool isOn(const CAction* action) const override;
    bool onAction(CAction* action) override;
    void mergeMenu(CMenu* bar) override;
    void idle() override;

    CMixerPanel* strips() const { return panel; }

protected:
    /// As the window of another component, without the bar.
    CMixerWin(Workspace& workspace, CMixer& mixer, CComp& edited, const CStr& name);

private:
    CMixerWin(Workspace& workspace, CMixer& mixer, CComp& edited, const CStr& name, bool whole);
    void bindOwn();
    bool runOnStrips(const CStr& name);
    void stepProg(int by);
    void menuClicked(CPopup* sender);
    void sectionsClicked(CPopup* popup);
    void showSectionClicked(CObject* sender);
    void showRowsClicked(CObject* sender);
    void programChanged();

    Workspace& workspace;
    CMixer& mixer;
    CMixerPanel* panel;
    MixerBar* bar; ///< null without one
    OwnActions own;
    std::vector<NoticeLink> links;
};

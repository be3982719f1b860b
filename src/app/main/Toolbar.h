#pragma once

#include "gui/CGroup.h"

#include <vector>

class CButton;
class CFigures;
class CMeter;
class CQV;

/// The transport: buttons, position, time, tempo, and the level of the master output.
class Toolbar : public CGroup {
public:
    static constexpr int barHeight = 56;

    Toolbar(CWin* win, CQV* host, int width);

    void paint(CGraphic* g, CRect rect) override;
    /// Brings the displays up to date. Interface tick.
    void refresh();

    // Commands, also reached by keys.
    void rewind();
    void stop();
    void play(); ///< or stop, while playing
    void toggleLoop();
    void toggleClick();

private:
    struct Command {
        CButton* button;
        void (Toolbar::*run)();
    };
    CButton* addButton(int& left, const char* name, const char* hint, void (Toolbar::*command)());
    void buttonClicked(CObject* sender);
    void paintGlyph(CObject* sender, CGraphic* g, CRect rect);

    CQV* qv;
    CButton *rewindButton, *stopButton, *playButton, *loopButton, *clickButton;
    CFigures* displays[3];
    CMeter* master;
    std::vector<Command> commands;
};

#pragma once

class CAction;
class CMainWin;
class CQV;

/// What the actions of the main window do: transport, history, projects. Interface thread.
class MainActions {
public:
    MainActions(CMainWin* mainWin, CQV* host) : window(mainWin), qv(host) {}

    bool knows(const CAction* action) const;
    bool run(const CAction* action); ///< false for one that it does not know
    /// Whether an action switches something that is on at present; menus tick it.
    bool isOn(const CAction* action) const;

private:
    struct Command {
        const char* name;
        void (MainActions::*run)();
    };
    static const Command commands[];
    static const Command* find(const CAction* action);

    void newProject();
    void open();
    void save();
    void saveAs();
    void openLast();
    void undo();
    void redo();
    void play(); ///< or stop, while playing
    void record();
    void stop();
    void loop();
    void rewind();
    void rewindToPlay();
    void metronome();
    void setup();
    void priorPage();
    void nextPage();

    CMainWin* window;
    CQV* qv;
};

#pragma once

class CAction;
class CMainWin;
class CQV;
class CSeq;

/// The actions that render the song: export, freeze, bounce. Without a song they do nothing.
/// Interface thread.
class RenderActions {
public:
    RenderActions(CMainWin* mainWin, CQV* host) : window(mainWin), qv(host) {}

    bool knows(const CAction* action) const;
    bool run(const CAction* action); ///< false for one that it does not know
    /// Whether a selected track is frozen, so that freezing would end that.
    bool frozen() const;

private:
    struct Command {
        const char* name;
        void (RenderActions::*run)();
    };
    static const Command commands[];
    static const Command* find(const CAction* action);

    CSeq* seq() const; ///< null without a song
    void clearMeters();
    void exportSong();
    void freeze();
    void bounce();

    CMainWin* window;
    CQV* qv;
};

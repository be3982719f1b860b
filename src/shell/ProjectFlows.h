#pragma once

#include "base/Atomic.h"
#include "engine/CMixer.h"
#include "project/AutoSave.h"
#include "project/Project.h"
#include "project/ProjectReader.h"
#include "shell/MainProjectUi.h"
#include "shell/ProjectKinds.h"
#include "shell/RecentFiles.h"

#include <memory>

class CMainWin;
class CObject;
class CQV;

/// How projects come and go: new, open, save, save as, the question about unsaved changes, the
/// choices of the start, the copy that a crash has left. Interface thread.
///
/// A project is not replaced in the middle of something: a request becomes a task of the graph,
/// whose only effect is that the next `tick` loads.
class ProjectFlows {
public:
    static constexpr const char* productName = "Sondrava"; ///< title of the questions

    RecentFiles recent;
    CMixer mixer; ///< what the project keeps of the mixer view

    ProjectFlows(CMainWin* mainWin, CQV* host);
    ~ProjectFlows();
    ProjectFlows(const ProjectFlows&) = delete;
    ProjectFlows& operator=(const ProjectFlows&) = delete;

    /// The project that the program starts with, by the option "startwith". Once, when all stands.
    void start();
    /// The same with a project that the user asks for: `kindFile` with its path, or a new one.
    void startWith(int kind, const CStr& path);
    /// Asks about unsaved changes, then has the project replaced. Ignored while one is loading.
    void newProject(int kind, const CStr& path);
    /// The same for a call from inside the host's idle: the next `tick` asks.
    void requestProject(int kind, const CStr& path);
    /// The share of projects in the window's timer, behind the host's idle.
    void tick();
    bool loading() const { return loadNeeded; }
    /// Another project.
    bool coming() const { return loadNeeded || queued || asking || requested || mustBegin; }

    void newClicked();  ///< the window "Welcome"
    void openClicked(); ///< a file dialog
    void openLast();
    bool saveClicked();   ///< false when nothing was saved
    bool saveAsClicked(); ///< the same
    void setDefaultClicked();
    void collectClicked(); ///< all that the project needs, in one file

    /// Asks whether to save unsaved changes. False when the project has to stay.
    bool mayLeave();
    /// The program ends on purpose: there is nothing to recover.
    void close();

private:
    struct Request {
        int kind;
        CStr path;
    };

    void needLoad(CObject*);
    void load();
    LoadResult open(const CStr& path);
    void create(int kind);
    bool openDefault();
    bool welcomeKey(CObject* sender, int& key, int mods);
    bool wants(const LeftCopy& left);
    LoadResult recover(const LeftCopy& left);
    bool recoverAny();
    void begin();
    CStr beginWith(const Request& wanted);
    void beginWithout(); ///< a copy or a wish
    void beginLast();

    CMainWin* window;
    CQV* qv;
    MainProjectUi ui;
    const Project project;
    AutoSave autoSave;
    std::unique_ptr<Request> requested; ///< not asked about yet
    std::unique_ptr<Request> wish;      ///< what to start with in place of what the settings say
    Request next{kindEmpty, ""};        ///< to be loaded
    Shared<bool> loadNeeded{false};     ///< set by the graph
    bool queued = false;                ///< the task that will set it
    bool asking = false;                ///< about unsaved changes
    bool ticking = false;
    bool recovered = false; ///< what was opened is the copy that a crash has left
    bool mustBegin = false, mustWelcome = false; ///< at the next tick
};

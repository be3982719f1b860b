#pragma once

#include "gui/CGroup.h"
#include "modular/GraphMenus.h"
#include "ui/NoticeRouter.h"
#include "ui/Options.h"
#include "ui/OwnActions.h"

#include <memory>
#include <vector>

class CComp;
class CScrollbar;
class CStr;
class GraphProbe;
class GraphSide;
class Invitation;
class ModularView;
class NameField;
class Workspace;
enum class GraphQuestion;

/// The first page of the main window: the canvas of the graph with its bars, and while there is no
/// song, how to begin one. Interface thread.
class ModularPage : public CGroup {
public:
    ModularPage(CWin* win, Workspace& workspace);
    ~ModularPage() override;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;

    /// Asks about a component, port or cable, and shows the answer beside the canvas.
    void ask(GraphQuestion question, const CObject* about);
    GraphMenus& menus() { return graphMenus; }
    const OwnActions& ownActions() const { return actions; }
    void idle();                      ///< follows what has no notice; interface tick
    void forget();                    ///< the project is about to go
    void opened();                    ///< a project has come
    void takeKeys();                  ///< it has come to the front
    void add(int kind);               ///< a component (CompType), in the middle of what is seen
    void addPlugin(const CStr& path); ///< the same; nothing for what is none, after a message

private:
    void bindActions();
    void bindItem();
    void bindView();
    void updateScrollbars();
    void scrolled(CObject* sender);
    void showInvitation();
    void showMeasured();
    void showKinds();
    void changed();
    void rename();
    void deleteChosen();
    bool canDelete() const;
    CPoint middle() const;
    void show(CComp* added);
    void dropped(CObject* sender, int x, int y, int btn);

    Workspace& workspace;
    ModularView* view;
    CScrollbar *across, *down;
    Invitation* empty;
    GraphSide* side;
    Option sideShown, midiShown, audioShown, otherShown;
    const std::unique_ptr<GraphProbe> probe;
    int ticks = 0;              ///< of the interface, to the next question to the probe
    NameField* field = nullptr; ///< for a name
    bool invites = false;
    bool fitWanted = true; ///< all is to be seen, once it is in front
    GraphMenus graphMenus;
    OwnActions actions;
    std::vector<NoticeLink> links;
};

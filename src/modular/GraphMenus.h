#pragma once

#include "base/CObject.h"
#include "base/Geometry.h"

#include <functional>
#include <span>
#include <vector>

class CComp;
class CMenuItem;
class CPopup;
class ModularView;
class Workspace;
enum class GraphQuestion;

/// A type of component that can be added.
struct AddedKind {
    const char* text;
    int type; ///< CompType
};
std::span<const AddedKind> addedKinds();

/// The context menus of the canvas: what can be added, what can be done with a component, and the
/// cables of a port. Interface thread.
class GraphMenus : public CObject {
public:
    /// Adds what the caption of a component's open window offers; nothing without one.
    std::function<void(CPopup* popup, CComp* comp)> windowMenu;

    std::function<void(GraphQuestion question, CObject* about)> onAsk;

    GraphMenus(Workspace& workspace, ModularView& view);

    /// For a component, port or cable, or null for the canvas; at a point of the graph.
    void show(CPoint at, CObject* item);

private:
    void fillNew(CPopup* popup, CObject* into);
    void fillComp(CPopup* popup, CComp* comp);
    void fillSound(CPopup* popup, CObject* item);
    void fillPorts(CPopup* popup, CComp* comp);
    void fillPort(CPopup* popup, int port);
    void fillCable(CPopup* popup, int cable);
    void fillAsk(CPopup* popup, CObject* about);
    void addAction(CPopup* popup, const char* name);
    CMenuItem* add(CPopup* popup, const CStr& text, std::function<void()> chosen);

    Workspace& workspace;
    ModularView& view;
    CPoint place; ///< of the graph, where the menu was asked for
};

#pragma once

#include "gui/CCanvas.h"
#include "gui/PanZoom.h"
#include "modular/GraphModel.h"
#include "modular/GraphPainter.h"
#include "modular/GraphWatch.h"

#include <functional>
#include <memory>
#include <vector>

class CQV;
class DragHandler;
class GraphProbe;
class Workspace;

constexpr double cableReach = 6; ///< pixels around a cable that count as the cable

/// The canvas of the graph: the components of the host as boxes, and the cables between them.
/// Presses begin a drag, which changes the graph at the release. Interface thread.
class ModularView : public CCanvas, private ZoomView {
public:
    static constexpr double leastZoom = 0.25, mostZoom = 3.0;

    std::function<void()> onRedraw;   ///< more of it looks different
    std::function<void()> onScrolled; ///< another part is seen, or its size
    /// A context menu is asked for, at a point of the graph, for what `itemAt` gives.
    std::function<void(CPoint at, CObject* item)> onMenu;

    ModularView(CWin* win, Workspace& workspace);
    ~ModularView() override;

    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseOver(bool enter, int x, int y) override;
    bool keyDown(int key, int mods) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    bool contextMenu() override;
    bool onFrame() override;
    void setFocus(bool on) override;
    using CCanvas::redraw;
    void redraw() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< boxes, then ports, then cables
    int partAround(int part) const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

    CQV* host() const;
    const GraphModel& graph() const { return model; }
    const GraphShown& shownNow() const { return shown; }
    void rebuild(); ///< after the graph has changed
    void forget();  ///< it is about to be taken down: nothing is shown until the next tick
    void follow();  ///< what changes without a notice; interface tick

    double zoom() const { return shown.zoom; }
    void zoomTo(double factor, CPoint around); ///< what is at a point of the control stays there
    void zoomToFit();                          ///< all of it, at most 100 %
    CRect plain() const;                       ///< of the content at this zoom, and of what is seen
    void scroll(int x, int y);                 ///< as far as there is content
    CPoint scrollBy(CPoint by);                ///< the same; how far it has been
    CPoint toGraph(CPoint inControl) const;
    CPoint toControl(CPoint ofGraph) const;
    void reveal(CRect ofGraph);
    /// The component, port or cable at a point of the graph; null for none.
    CObject* itemAt(CPoint ofGraph) const;

    /// What the keys act on: a component, a port or a cable, null for nothing.
    void setItem(CObject* item);
    CObject* item() const { return shown.focus; }
    /// A component as item, selected alone and in view.
    void goTo(CComp* comp);

    /// Cables of these kinds, and those of what is not selected, are strong or faint.
    void showKinds(bool midi, bool audio, bool others);
    void showMeasured(const GraphProbe& probe); ///< delays on cables, and work in boxes

    // What is watched in the graph: the item of the keys.
    bool canWatch(const CObject* item) const { return GraphWatch::soundOf(item) != nullptr; }
    void listenTo(CObject* item); ///< or no more, where that is what is listened to
    void toggleMeter(CObject* item);
    const GraphWatch& watched() const { return watch; }

    // For drags, which show what their release would do.
    void showLink(int from, int to); ///< ports of a cable that would be made; -1 for none
    void showInto(int cable);
    void showBand(CRect ofGraph); ///< empty for none
    void shiftSelected(CPoint by);
    void tell(const CStr& text); ///< in the status line

protected:
    void paintContent(CGraphic* g, CRect asked) override;

private:
    CPoint panBy(CPoint pixels) override;
    void zoomAt(CPoint at, double factor, bool across) override;
    GraphPainter painter() const;
    CRect modifiedArea() const; ///< of the control
    bool followLevels();
    bool followTags();
    bool followMeters();
    void redrawItem(const CObject* item);
    bool stale() const;
    void take(GraphModel fresh);
    void hover(CPoint at);
    void lightPath(const CObject* from);
    void fadeCables();
    void showLit(std::vector<bool> cables, std::vector<bool> boxes);
    void beginDrag(std::unique_ptr<DragHandler> drag, CPoint at, int btn);
    CRect selectedArea() const;
    bool linkKey(int key, int mods);
    bool itemKey(int key, int mods);
    bool moveKey(int key, int mods);
    CObject* neighbour(int key) const;
    CObject* besidePort(int key) const;
    CObject* otherCable(int by) const;
    void stepLink(int by);
    int portUnder(CPoint ofGraph) const;
    CStr hintOf(const CObject* over) const;
    int partOf(const CObject* item) const; ///< -1 for what is not there
    CObject* itemOf(int part) const;       ///< null outside
    CRect partArea(int part) const;
    CStr spoken(int part) const;

    Workspace& workspace;
    PanZoom panZoom;
    GraphModel model;
    GraphShown shown;
    GraphWatch watch;
    CRect band;                        ///< of the graph; empty without one
    std::unique_ptr<DragHandler> drag; ///< the latest; null before the first
    const CObject* hovered = nullptr;  ///< only to be compared
    bool closed = false;               ///< the graph is being taken down and built
    bool linking = false;              ///< a cable is being led by the keys
    bool modified = false;             ///< as it is told
    bool midiStrong = true, audioStrong = true, othersStrong = true;
};

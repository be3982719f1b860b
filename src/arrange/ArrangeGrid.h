#pragma once

#include "arrange/PartSketch.h"
#include "arrange/ShownParts.h"
#include "gui/CCtrl.h"
#include "gui/PanZoom.h"

#include <memory>
#include <optional>
#include <vector>

class ArrangeGesture;
class ArrangeState;
class DropFiles;
class CGraphic;
class NameField;
class PartPainter;
struct ArrangeRow;

/// The lanes of parts: a row for each track, on the axis of time. Presses begin a gesture, which
/// changes the song at the release. Interface thread.
class ArrangeGrid : public CCtrl, private ZoomView {
public:
    COnChange* onPartsMenu = nullptr; ///< owned; the context menu of what is under the pointer
    const DropFiles* drops = nullptr; ///< that hover over it; not owned

    ArrangeGrid(CWin* win, ArrangeState& state);
    ~ArrangeGrid() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override; ///< arrows walk from part to part
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    bool contextMenu() override;
    using CCtrl::redraw;
    void redraw() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< the parts and points that are in view
    int focusedPart() const override;
    bool pressPart(int part) override; ///< selects it alone

    /// The song has changed: all is painted anew.
    void songChanged();
    bool refresh(); ///< follows the play position; whether that shows
    void idle();    ///< follows what is heard
    /// What was shown has moved by so many pixels: the rest is painted.
    void scrolled(int dx, int dy);
    void gestureDone(); ///< applied or not
    void tagMoved();    ///< what the gesture tells beside the pointer, or the pointer
    /// Opens a field for the value of the selected points; false without any.
    bool typeValue();

private:
    /// What changes without a notice.
    struct Heard {
        std::vector<bool> tracks;
        int loopFrom = 0, loopTo = 0, loop = 0, step = 0;
        bool operator==(const Heard&) const = default;
    };

    CPoint panBy(CPoint pixels) override;
    void zoomAt(CPoint at, double factor, bool across) override;
    Heard heardNow() const;
    void paintGround(CGraphic* g, CRect asked);
    void paintRows(CGraphic* g, CRect asked);
    void paintParts(CGraphic* g, CRect asked);
    void paintPlayLine(CGraphic* g, CRect asked) const;
    void paintTag(CGraphic* g) const;
    int playX() const;
    void namesMoved(int dx);
    const std::vector<ShownPart>& shownParts() const;
    void hover(int x, int y);

    ArrangeState& state;
    PanZoom panZoom;
    PartSketches sketches;
    std::unique_ptr<ArrangeGesture> gesture;              ///< the latest; null before the first
    CRect tagBox;                                         ///< empty while nothing is told there
    Heard heard;                                          ///< as it is shown
    NameField* field = nullptr;                           ///< for a value; owned by the group
    int shownX = -1;                                      ///< of the play position
    mutable std::optional<std::vector<ShownPart>> inView; ///< until something else is shown
};

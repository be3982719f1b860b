#pragma once

#include "gui/CCtrl.h"
#include "gui/PanZoom.h"
#include "ui/NotePlace.h"

#include <memory>
#include <optional>
#include <vector>

class NoteGesture;
class NoteState;
struct CBaseEvent;

/// The notes of a part on the keys, or its hits on the sounds of a kit. Presses begin a gesture,
/// which changes the song at the release. Interface thread.
class NoteGrid : public CCtrl, private ZoomView {
public:
    COnChange* onMenu = nullptr; ///< owned; the context menu

    NoteGrid(CWin* win, NoteState& state);
    ~NoteGrid() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    bool contextMenu() override;
    using CCtrl::redraw;
    void redraw() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< notes and hits in view
    int focusedPart() const override;
    bool pressPart(int part) override; ///< selects it alone

    /// In place of a part while it is dragged; null without, and for others.
    CPart* shownPart(const CPart* of) const;
    bool dragStands() const; ///< the parts have the content that the drag began with
    bool refresh();          ///< follows the play position; whether that shows
    void scrolled(int dx, int dy);

private:
    struct Told {
        CPart* part;
        CBaseEvent* event;
        NoteFacts facts;
        CRect box;
    };

    CPoint panBy(CPoint pixels) override;
    void zoomAt(CPoint at, double factor, bool across) override;
    void paintGround(CGraphic* g, CRect asked) const;
    void paintBounds(CGraphic* g, CRect asked) const;
    void paintOthers(CGraphic* g, CRect asked) const;
    bool pressOther(CPoint at, int btn);
    bool pressRowEnd(CPoint at, int btn);
    void paintStep(CGraphic* g, CRect asked) const;
    void paintNotes(CGraphic* g, CRect asked) const;
    int playX() const;
    void hover(int x, int y);
    const std::vector<Told>& inView() const;

    NoteState& state;
    PanZoom panZoom;
    std::unique_ptr<NoteGesture> gesture; ///< the latest; null before the first
    int shownX = -1;                      ///< of the play position
    mutable std::optional<std::vector<Told>> told;
};

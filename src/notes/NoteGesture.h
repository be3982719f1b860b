#pragma once

#include "ui/NoteMouse.h"
#include "ui/ViewGesture.h"

#include <functional>
#include <memory>

class CGraphic;
class NoteState;

/// What a press over the part's content begins, in the grid and in the lane below it.
class NoteGesture : public ViewGesture {
public:
    bool alongOnly = false; ///< at an edge of the view it scrolls along, and not the rows

    explicit NoteGesture(NoteState& shared) : state(shared) {}

    /// What is shown in place of a part; null for itself.
    virtual CPart* draft(const CPart*) const { return nullptr; }
    /// Whether what it drags was made from the content that the parts have now.
    virtual bool stands() const;
    virtual void paintOverlay(CGraphic*, CRect) const {}

    CPoint dragScroll(CPoint by) override;

protected:
    NoteState& state;

private:
    void finish() override;
};

/// A drag of notes or hits.
class NoteDrag : public NoteGesture {
public:
    NoteDrag(NoteState& shared, std::unique_ptr<NoteMouse> held);

    CPart* draft(const CPart* part) const override;
    bool stands() const override { return mouse->stands(); }
    void dragMove(const DragPoint& point) override;
    bool copying() const { return mouse->copying(); }

private:
    void apply(const DragPoint& point) override;
    void click(const DragPoint& point) override { apply(point); }

    std::unique_ptr<NoteMouse> mouse;
};

/// A rubber band.
class NoteBand : public NoteGesture {
public:
    /// `select` is given the band, in pixels of the view.
    NoteBand(NoteState& shared, std::function<void(CRect)> choose);

    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

private:
    void apply(const DragPoint& point) override;
    void click(const DragPoint& point) override { apply(point); }

    const std::function<void(CRect)> select;
};

/// The right button: it scrolls by hand once it has moved, else `onClick` acts at the release.
class NoteHand : public NoteGesture {
public:
    static constexpr int handRoom = 8; ///< pixels

    NoteHand(NoteState& shared, std::function<void()> clicked);

    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;

private:
    void click(const DragPoint& point) override;

    const std::function<void()> onClick;
    CPoint last{};
};

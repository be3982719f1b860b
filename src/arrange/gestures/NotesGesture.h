#pragma once

#include "arrange/gestures/ArrangeGesture.h"
#include "ui/NoteMouse.h"

#include <memory>

/// Notes or hits that are edited in place.
class NotesGesture : public ArrangeGesture {
public:
    NotesGesture(ArrangeGrid& over, ArrangeState& shared, std::unique_ptr<NoteMouse> pressed);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    /// What is shown in place of a part; null for itself.
    CPart* shownFor(const CPart* part) const;
    bool copying() const { return mouse->copying(); }

protected:
    void apply(const DragPoint&) override { mouse->partMouseUp(); }
    void click(const DragPoint& point) override { apply(point); }

private:
    std::unique_ptr<NoteMouse> mouse;
};

/// A rubber band over the notes of a part.
class NotesBand : public ArrangeGesture {
public:
    NotesBand(ArrangeGrid& over, ArrangeState& shared, const NotePlace& where);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

protected:
    void apply(const DragPoint& point) override;
    void click(const DragPoint& point) override { apply(point); }

private:
    const NotePlace place;
};

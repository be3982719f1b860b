#pragma once

#include "gui/CDrag.h"

#include <functional>

class WaveState;

/// What a press on the waveform begins. Interface thread.
class WaveGesture : public DragHandler {
public:
    explicit WaveGesture(WaveState& shared) : state(shared) {}

    CPoint dragScroll(CPoint by) override;

protected:
    WaveState& state;
};

/// Selects from a frame on; a click is a place.
class RangeDrag : public WaveGesture {
public:
    /// `standing`: the end that stays.
    RangeDrag(WaveState& state, int standing);

    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override { dragMove(point); }
    void dragClick(const DragPoint& point) override { dragMove(point); }
    void dragCancel() override;

private:
    const int standing, fromBefore, toBefore;
};

/// Moves a mark.
class MarkDrag : public WaveGesture {
public:
    MarkDrag(WaveState& state, int index);

    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    void dragClick(const DragPoint&) override {}

private:
    void put(int frame);

    int index;
    const int before;
};

/// Moves a stretch marker to where its frame comes to be heard, which the release applies.
class PinDrag : public WaveGesture {
public:
    PinDrag(WaveState& state, int pin);

    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    void dragClick(const DragPoint&) override { dragCancel(); }

private:
    double shareMeant(const DragPoint& point) const;

    const int pin;
};

/// Draws one of the fades of the clip longer or shorter, which the release applies.
class FadeDrag : public WaveGesture {
public:
    FadeDrag(WaveState& state, bool in);

    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragClick(const DragPoint&) override { dragCancel(); }
    void dragCancel() override;

private:
    float& draft() const;

    const bool in;
};

/// The right button: it scrolls by hand once it has moved, else `onClick` acts at the release.
class WaveHand : public WaveGesture {
public:
    static constexpr int handRoom = 8; ///< pixels

    WaveHand(WaveState& state, std::function<void()> clicked);

    void dragBegin(const DragPoint& point) override { last = point.anchor.x; }
    void dragMove(const DragPoint& point) override;
    void dragClick(const DragPoint&) override { onClick(); }

private:
    const std::function<void()> onClick;
    int last = 0;
};

#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"
#include "instruments/SampleValues.h"

#include <array>
#include <functional>
#include <vector>

class CSampleClip;
class ValueDoor;

/// The wave of a sample, and lines where it begins, where its loop begins and where it ends, which
/// are dragged; what is not played is dim. A line goes to the next place at which the wave is at
/// zero, unless that help is off or Shift is held. The wheel with Control and the keys + and -
/// zoom, the wheel and a double press lead on and back to all of it. By keys 1 to 3 take a line,
/// arrows move it by a frame, with zero help to the next crossing, with Control by a pixel.
/// Interface thread.
class SampleView : public CCtrl, private DragHandler {
public:
    static constexpr int usualHeight = 136;

    bool zeroHelp = true;

    /// The sample is only touched while it is `alive`.
    SampleView(CWin* win, ValueDoor* door, CSampleClip* clip, std::function<bool()> alive);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< takes the present places; whether that shows
    /// Where a line may go that is wanted at a frame.
    int helped(int frame) const;

private:
    struct Shape {
        std::array<int, sampleMarks> marks{};
        int frames = 0;
        bool loops = false;
        bool operator==(const Shape&) const = default;
    };

    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    Shape present() const;
    int markAt(int x) const; ///< -1 none
    double xOf(double frame) const;
    double frameAt(double x) const;
    double perPixel() const;
    void set(int mark, int frame);
    void zoom(double factor, double around);
    void scrollBy(double frames);
    void paintWave(CGraphic* g) const;
    void paintMark(CGraphic* g, int mark) const;
    int nextFrame(int frame, int way) const; ///< by a key

    ValueDoor* door;
    CSampleClip* clip;
    std::function<bool()> alive;
    Shape shape;
    double from = 0.0, shown = 0.0; ///< frames: the first that shows, and how many
    int held = -1, current = sampleStart;
};

#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

#include <functional>
#include <vector>

class CLFO;
class CObject;
class ValueDoor;

/// A low oscillator as its curve over the first seconds of a note, and while a note sounds a dot
/// where it stands in its cycle. A drag across makes it slower to
/// the right, in beats where it is synchronised; the line where it begins is dragged to delay it.
/// By keys the arrows do the same, Left and Right the rate, with Shift the delay. Interface thread.
class LfoView : public CCtrl, private DragHandler {
public:
    static constexpr int usualHeight = 120;

    /// The oscillator is only touched while it is `alive`; those of `others` are set along. `tempo`
    /// in beats a minute.
    LfoView(CWin* win, ValueDoor* door, CLFO* lfo, std::function<bool()> alive,
            std::function<std::vector<CObject*>()> others, std::function<double()> tempo,
            std::function<bool()> sounding);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< takes the present values; whether that shows

private:
    struct Shape {
        int wave = 0;
        double hertz = 1.0, delay = 0.0; ///< cycles and seconds
        bool synced = false;
        bool operator==(const Shape&) const = default;
    };

    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    Shape present() const;
    CRect dotArea() const;
    bool followDot();
    double xOf(double seconds) const;
    double secondsAt(double x) const;
    bool onDelay(int x) const;
    void set(const char* setting, double to);
    void stretch(double factor, double from); ///< of the cycle, which was `from` long

    ValueDoor* door;
    CLFO* lfo;
    std::function<bool()> alive;
    std::function<std::vector<CObject*>()> others;
    std::function<double()> tempo;
    std::function<bool()> sounding;
    Shape shape;
    CPoint dot;            ///< where it stands; left of the control when nothing sounds
    bool delaying = false; ///< the drag moves the delay
    double held = 0.0;     ///< what it moves, as it was: Hz, or beats
};

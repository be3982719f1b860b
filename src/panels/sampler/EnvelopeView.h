#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"
#include "ui/SettingPlace.h"

#include <functional>
#include <vector>

class CEnv;
class ValueDoor;

/// An envelope as its curve, whose corners are dragged: the attack across, decay and sustain at
/// once, the release across, the start up and down. A quarter of the width stands for the longest
/// time of each stage, and for a held note. By keys: 1 to 4 take a corner, arrows move it.
/// Interface thread.
class EnvelopeView : public CCtrl, private DragHandler {
public:
    static constexpr int usualHeight = 120;

    EnvelopeView(CWin* win, ValueDoor* door);

    /// Shows an envelope, as long as it is `alive`; null none. Those of `others` are set along.
    void show(CEnv* envelope, std::function<bool()> alive,
              std::function<std::vector<CObject*>()> others);
    bool refresh(); ///< takes the present values; whether that shows

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseOver(bool enter, int x, int y) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;

private:
    enum Corner : int { none = -1, start, peak, sustained, end, corners };
    /// Of the settings that the curve depends on, 0 to 1, and -1 to 1 for the curves.
    struct Shape {
        float initial = 0, attack = 0, decay = 0, sustain = 0, release = 0, ac = 0, dc = 0, rc = 0;
        bool operator==(const Shape&) const = default;
    };
    struct Place {
        double x = 0, y = 0;
    };

    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    bool there() const;
    Shape present() const;
    Place placeOf(Corner corner) const;
    Corner cornerAt(int x, int y) const;
    double yOf(double level) const;
    double room() const; ///< for the longest stage, in pixels
    void set(const char* setting, double to);
    void moveBy(double across, double up); ///< the current corner, as shares of a stage and of full

    ValueDoor* door;
    CEnv* envelope = nullptr;
    std::function<bool()> alive;
    std::function<std::vector<CObject*>()> others;
    Shape shape;
    Corner over = none, held = none, current = start; ///< the last one by the keys
};

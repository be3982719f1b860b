#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

#include <functional>
#include <vector>

class CSampler;
class CSound;
class CSynthProg;

/// The keyboard, and above it a bar for each sound over the keys that it sounds on; the ends of a
/// bar are dragged. A press on a key plays it. By keys: Up and Down choose a sound, Left and Right
/// move its lower end, with Shift the upper one. Interface thread.
class ZoneView : public CCtrl, private DragHandler {
public:
    std::function<void(CSound* sound)> onChosen; ///< its bar was pressed

    ZoneView(CWin* win, CSampler& sampler);

    void fit(int width); ///< takes the height that the sounds need
    bool refresh();      ///< takes the present zones; whether that shows

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;

private:
    struct Bar {
        CSound* sound = nullptr;
        int low = 0, high = 0;
        bool chosen = false;
        bool operator==(const Bar&) const = default;
    };
    /// What a press at a place takes.
    struct Hit {
        int bar = -1;
        int side = 0; ///< -1 the lower end, 1 the upper one, 0 between
    };

    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    std::vector<Bar> present() const;
    Hit hitAt(int x, int y) const;
    void setEnd(const Bar& bar, bool lower, int key);
    bool there(const CSound* sound) const;
    CRect barRect(int index) const;
    int keysTop() const;
    int keyAt(int x) const;
    int xOf(int key) const;
    void sound(int key); ///< the key that is played by the press; -1 none

    CSampler& sampler;
    std::vector<Bar> bars;
    Hit held;
    int playing = -1;
};

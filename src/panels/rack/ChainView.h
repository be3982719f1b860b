#pragma once

#include "gui/CCtrl.h"

#include <functional>
#include <vector>

class CEffect;
class CFX;

/// The way of the sound through a chain of effects: a box for each, and over it, where the effect
/// lets some of what it is given pass beside its own sound, the line of that. The stronger a way
/// is, the brighter its line. A press on a box brings the effect into view, a double press switches
/// it; with the focus Left and Right go from one to the next. Interface thread.
class ChainView : public CCtrl {
public:
    static constexpr int usualHeight = 72;

    std::function<void(CFX* fx)> onChosen;   ///< it is to be seen
    std::function<void(CFX* fx)> onSwitched; ///< on or off

    ChainView(CWin* win, CEffect& rack);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override { return current; }
    bool pressPart(int part) override;
    bool refresh(); ///< takes the present chain; whether that shows

private:
    struct Box {
        CFX* fx = nullptr;
        bool on = false;
        double beside = 0.0, wet = 0.0; ///< gains
        bool operator==(const Box&) const = default;
    };

    std::vector<Box> present() const;
    bool there(const Box& box) const;
    CRect rectOf(int index) const;
    void paintBox(CGraphic* g, int index) const;
    void choose(int index);

    CEffect& rack;
    std::vector<Box> boxes;
    int current = 0; ///< by the keys
};

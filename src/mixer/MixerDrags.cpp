#include "mixer/MixerDrags.h"

#include "engine/ValueDoor.h"
#include "gui/CDrag.h"
#include "mixer/CMixerPanel.h"
#include "mixer/CMixerStrip.h"

#include <algorithm>

namespace {

class SwipeDrag : public DragHandler {
public:
    SwipeDrag(CMixerPanel& over, MixSwitch which, const MixerStrip& pressed)
        : panel(over), kind(which), first(pressed) {
        const auto value = switchOf(which, pressed);
        to = value && value->get()[0] != 0.0 ? 0.0 : 1.0;
    }

    void dragClick(const DragPoint&) override { panel.toggle(kind, first); }
    void dragBegin(const DragPoint& point) override {
        panel.state.door()->begin();
        for (const MixerStrip& s : panel.state.together(first)) set(s);
        lastX = point.anchor.x;
    }
    /// All strips from the last place on, as the pointer may be quick.
    void dragMove(const DragPoint& point) override {
        const int from = std::min(lastX, point.at.x), end = std::max(lastX, point.at.x);
        lastX = point.at.x;
        if (!panel.state.door()->dragging()) return;
        for (const CMixerStrip* s : panel.stripsBetween(from, end)) set(s->strip());
    }
    void dragEnd(const DragPoint&) override { panel.state.door()->end(); }
    void dragCancel() override { panel.state.door()->cancel(); }
    CPoint dragScroll(CPoint by) override { return asPoint(panel.scrollAcross(by.x), 0); }

private:
    void set(const MixerStrip& strip) {
        if (const auto value = switchOf(kind, strip)) panel.state.door()->set(*value, to);
    }

    CMixerPanel& panel;
    const MixSwitch kind;
    const MixerStrip first;
    double to = 0.0;
    int lastX = 0;
};

} // namespace

std::unique_ptr<DragHandler> swipeDrag(CMixerPanel& panel, MixSwitch which,
                                       const MixerStrip& first) {
    return std::make_unique<SwipeDrag>(panel, which, first);
}

#pragma once

#include "gui/TouchStep.h"

#include <map>
#include <optional>

/// Makes steps of the events of the X Input Extension 2: motions along the scroll axes of a device,
/// and pinches of two fingers. It asks no server. Interface thread.
class TouchTranslator {
public:
    void clear() { axes.clear(); }
    /// Takes on the scroll axes of a device, as XIDeviceInfo, in place of those known of it.
    void setDevice(const void* deviceInfo);
    /// Of a raw motion, as XIRawEvent; none for one along other axes.
    std::optional<TouchStep> scroll(const void* rawEvent);
    /// Of a pinch, as XIGesturePinchEvent; none for its begin, and for what changes no size.
    std::optional<TouchStep> pinch(const void* pinchEvent);
    /// Whether a press of a wheel's button at that time of the server is its own copy, for programs
    /// of old, of a step that `scroll` has given.
    bool isCopy(unsigned long time) const { return scrolled && time == scrolledAt; }

private:
    struct Axes {
        int vertical = -1, horizontal = -1; ///< numbers of valuators, -1 none
        double up = 1, left = 1;            ///< what of them is one notch down or to the right
    };
    std::map<int, Axes> axes; ///< by device
    bool scrolled = false;
    unsigned long scrolledAt = 0;
    double pinched = 1; ///< the scale that the pinch has reached
};

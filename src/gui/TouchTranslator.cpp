#include "gui/TouchTranslator.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <cmath>

namespace {

/// The movement along an axis; 0 when the event tells none. Values are given for set bits only.
double valueOf(const XIValuatorState& state, int axis) {
    if (axis < 0 || axis >= state.mask_len * 8 || !XIMaskIsSet(state.mask, axis)) return 0;
    const double* value = state.values;
    for (int i = 0; i < axis; i++)
        if (XIMaskIsSet(state.mask, i)) value++;
    return std::isfinite(*value) ? *value : 0;
}

} // namespace

void TouchTranslator::setDevice(const void* deviceInfo) {
    const auto& device = *static_cast<const XIDeviceInfo*>(deviceInfo);
    Axes found;
    for (int i = 0; i < device.num_classes; i++) {
        if (device.classes[i]->type != XIScrollClass) continue;
        const auto& axis = *reinterpret_cast<const XIScrollClassInfo*>(device.classes[i]);
        if (axis.increment == 0 || !std::isfinite(axis.increment)) continue;
        const bool vertical = axis.scroll_type == XIScrollTypeVertical;
        (vertical ? found.vertical : found.horizontal) = axis.number;
        (vertical ? found.up : found.left) = axis.increment;
    }
    axes[device.deviceid] = found;
}

std::optional<TouchStep> TouchTranslator::scroll(const void* rawEvent) {
    const auto& event = *static_cast<const XIRawEvent*>(rawEvent);
    const auto known = axes.find(event.sourceid);
    if (known == axes.end()) return {};
    const Axes& of = known->second;
    // One notch down or right is the negative step of a wheel.
    TouchStep step;
    step.dy = -valueOf(event.valuators, of.vertical) / of.up;
    step.dx = -valueOf(event.valuators, of.horizontal) / of.left;
    if (step.dx == 0 && step.dy == 0) return {};
    scrolled = true;
    scrolledAt = event.time;
    return step;
}

std::optional<TouchStep> TouchTranslator::pinch(const void* pinchEvent) {
    const auto& event = *static_cast<const XIGesturePinchEvent*>(pinchEvent);
    if (event.evtype == XI_GesturePinchBegin) {
        pinched = 1;
        return {};
    }
    if (event.evtype != XI_GesturePinchUpdate || !(event.scale > 0) || event.scale == pinched)
        return {};
    TouchStep step;
    step.zoom = event.scale / pinched;
    pinched = event.scale;
    return step;
}

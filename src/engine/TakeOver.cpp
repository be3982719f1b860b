#include "engine/TakeOver.h"

#include "base/Numbers.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float step = 0.007874016f; ///< 1 / 127
constexpr float highest = 127.0f;

} // namespace

float TakeOver::take(float value, float now) {
    const float share = follow(value, now);
    last = value;
    if (share != none) left = share;
    return share;
}

float TakeOver::shareOf(float value) const {
    return fLimit((low + value * step * (high - low)) * step, 0.0f, 1.0f);
}

float TakeOver::follow(float value, float now) {
    if (mode == mapPickup) return pickedUp(value, now);
    if (mode == mapScale) return scaled(value, now);
    return steps() ? stepped(value, now) : shareOf(value);
}

/// Also when it has been moved by somebody else meanwhile.
float TakeOver::pickedUp(float value, float now) {
    constexpr float near = 1.5f * step;
    const float wanted = shareOf(value);
    const bool held = left != none && std::fabs(now - left) <= near;
    const bool passes = last >= 0 && (shareOf(last) - now) * (wanted - now) <= 0.0f;
    waiting = !held && !passes && std::fabs(wanted - now) > near;
    return waiting ? none : wanted;
}

float TakeOver::scaled(float value, float now) const {
    if (last < 0) return none;
    const float end = shareOf(value > last ? highest : 0.0f);
    const float room = value > last ? highest - last : last;
    return room <= 0.0f ? now : now + (end - now) * std::fabs(value - last) / room;
}

float TakeOver::stepped(float value, float now) const {
    constexpr float middle = 64.0f, around = 128.0f;
    const float by = mode == mapOffset ? value - middle : value < middle ? value : value - around;
    const float first = shareOf(0.0f), end = shareOf(highest);
    const float to = now + (high < low ? -by : by) * step;
    return fLimit(to, std::min(first, end), std::max(first, end));
}

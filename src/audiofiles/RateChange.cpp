#include "audiofiles/RateChange.h"

#include "audiofiles/SincReader.h"

#include <algorithm>
#include <cmath>

RateChange::RateChange(double sourceStep)
    : step(sourceStep), reach(sincReach(sourceStep)), first(-reach) {
    prepareSinc();
    append(nullptr, nullptr, reach);
}

/// Zeros for null.
void RateChange::append(const float* left, const float* right, int count) {
    const auto add = [count](std::vector<float>& to, const float* from) {
        if (from)
            to.insert(to.end(), from, from + count);
        else
            to.insert(to.end(), std::size_t(count), 0.0f);
    };
    add(lefts, left);
    add(rights, right);
}

void RateChange::put(const float* left, const float* right, int count) {
    append(left, right, count);
    frames += count;
}

void RateChange::end() {
    append(nullptr, nullptr, reach + 2);
    total = std::max<std::int64_t>(1, std::llround(double(frames) / step));
}

int RateChange::take(float* left, float* right, int most) {
    const std::int64_t last = first + std::int64_t(lefts.size()) - 1;
    std::int64_t ready = std::int64_t(std::floor(double(last - reach) / step)) + 1 - next;
    if (total >= 0) ready = std::min(ready, total - next);
    const int count = int(std::clamp<std::int64_t>(ready, 0, most));
    if (count == 0) return 0;
    const double at = double(next) * step - double(first);
    readSinc(lefts.data(), rights.data(), at, step, count, left, right);
    next += count;
    const auto used = std::int64_t(double(next) * step) - reach - first;
    if (used > 0) {
        lefts.erase(lefts.begin(), lefts.begin() + used);
        rights.erase(rights.begin(), rights.begin() + used);
        first += used;
    }
    return count;
}

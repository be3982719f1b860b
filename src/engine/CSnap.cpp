#include "engine/CSnap.h"

#include "base/Delegates.h"
#include "base/Numbers.h"

#include <iterator>

namespace {

constexpr int defaultIndex = 3, barIndex = 6;
constexpr int fixedTicks[barIndex] = {30, 60, 120, 240, 480, 960};
constexpr int ticksPerQuarter = 960;
constexpr int maxBarPart = 960;

int limited(int part) {
    return asMinMax(part, 1, maxBarPart);
}

} // namespace

CSnap::~CSnap() {
    delete onChange;
}

int CSnap::val() {
    if (onChange) (*onChange)(this);
    return active ? getTicks() : 1;
}

int CSnap::getTicks() const {
    const int i = asIndex();
    int ticks = i == barIndex ? ticksPerQuarter / limited(den) * limited(num) * 4 : fixedTicks[i];
    if (dotted)
        ticks = ticks * 3 / 2;
    else if (triplet)
        ticks = ticks * 2 / 3;
    return ticks;
}

int CSnap::asIndex() const {
    const int i = index;
    return i >= 0 && i <= barIndex ? i : defaultIndex;
}

void CSnap::indexToSnap(ToStore<int> newIndex) {
    if (newIndex >= 0 && newIndex <= barIndex) index = newIndex;
}

void CSnap::setBar(int newNum, int newDen) {
    num = limited(newNum);
    den = limited(newDen);
}

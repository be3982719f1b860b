#include "engine/CSnap.h"

#include "base/Delegates.h"
#include "base/Numbers.h"
#include "engine/GraphClock.h"

#include <iterator>

namespace {

constexpr int defaultIndex = 3, barIndex = 6;
constexpr int fixedTicks[barIndex] = {30, 60, 120, 240, 480, 960};
constexpr int maxBarPart = 960;

bool inRange(int choice) {
    return choice >= 0 && choice <= barIndex;
}

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
    return getTicks(index);
}

int CSnap::getTicks(int choice) const {
    const int i = inRange(choice) ? choice : defaultIndex;
    int ticks = i == barIndex ? ticksPerQuarter / limited(den) * limited(num) * 4 : fixedTicks[i];
    if (dotted)
        ticks = ticks * 3 / 2;
    else if (triplet)
        ticks = ticks * 2 / 3;
    return ticks;
}

int CSnap::asIndex() const {
    const int i = index;
    return inRange(i) ? i : defaultIndex;
}

void CSnap::indexToSnap(ToStore<int> newIndex) {
    if (inRange(newIndex)) index = newIndex;
}

void CSnap::setBar(int newNum, int newDen) {
    num = limited(newNum);
    den = limited(newDen);
}

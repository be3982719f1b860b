#include "ui/EventRows.h"

#include "base/Numbers.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/CTrack.h"

#include <algorithm>

EventRows::EventRows(const CTrack* track, const CPart* part, int keyHeight)
    : ofKit(part->type == partDrum), high(asMinMax(keyHeight, leastHeight, mostHeight)) {
    if (!ofKit) return;
    tops.push_back(0);
    if (const CLayer* layer = track->drumLayer())
        for (const auto* sound : drumSounds(*layer))
            tops.push_back(tops.back() + sound->getHeight());
}

EventRows EventRows::folded(const std::vector<bool>& shown) const {
    if (std::ranges::find(shown, true) == shown.end()) return *this;
    EventRows some = *this;
    some.tops = {0};
    for (int place = 0; place < count(); place++) {
        const auto row = size_t(placeOf(place)); // which is its own inverse
        const bool shows = row < shown.size() && shown[row];
        some.tops.push_back(some.tops.back() + (shows ? height(int(row)) : 0));
    }
    return some;
}

EventRows EventRows::from(int height) const {
    EventRows moved = *this;
    moved.origin = height;
    return moved;
}

int EventRows::rowAt(int y) const {
    y -= origin;
    if (tops.empty()) return asMinMax(keys - 1 - (y < 0 ? 0 : y / high), 0, keys - 1);
    const int within = asMinMax(y, 0, asMax(0, total() - 1));
    const auto below = std::upper_bound(tops.begin(), tops.end(), within);
    return placeOf(asMinMax(int(below - tops.begin()) - 1, 0, asMax(0, count() - 1)));
}

int EventRows::top(int row) const {
    if (tops.empty()) return origin + placeOf(row) * high;
    return origin + tops[size_t(asMinMax(placeOf(row), 0, count()))];
}

int EventRows::height(int row) const {
    if (tops.empty()) return high;
    const auto place = size_t(asMinMax(placeOf(row), 0, count() - 1));
    return tops[place + 1] - tops[place];
}

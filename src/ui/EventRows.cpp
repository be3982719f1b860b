#include "ui/EventRows.h"

#include "base/Numbers.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/CPart.h"
#include "sequencer/CTrack.h"

#include <algorithm>

EventRows::EventRows(const CTrack* track, const CPart* part, int keyHeight)
    : ofKit(part->type == partDrum), high(asMinMax(keyHeight, leastHeight, mostHeight)) {
    if (!ofKit) return;
    tops.push_back(0);
    if (const CLayer* layer = track->drumLayer())
        for (const auto* sound : each<CDrumSound>(layer->sounds))
            tops.push_back(tops.back() + sound->getHeight());
}

EventRows EventRows::from(int height) const {
    EventRows moved = *this;
    moved.origin = height;
    return moved;
}

int EventRows::rowAt(int y) const {
    y -= origin;
    if (!ofKit) return asMinMax(keys - 1 - (y < 0 ? 0 : y / high), 0, keys - 1);
    const auto below = std::upper_bound(tops.begin(), tops.end(), y);
    return asMinMax(int(below - tops.begin()) - 1, 0, asMax(0, count() - 1));
}

int EventRows::top(int row) const {
    if (!ofKit) return origin + (keys - 1 - row) * high;
    return origin + tops[size_t(asMinMax(row, 0, count()))];
}

int EventRows::height(int row) const {
    return ofKit ? top(row + 1) - top(row) : high;
}

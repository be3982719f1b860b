#include "sequencer/song/EventFind.h"

#include "common/Curves.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/EventIndex.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double edgeShare = 0.2;

/// How far from the probe, 1 where its reach ends.
double distance(const PointProbe& probe, double tick, double value) {
    const double x = (tick - probe.tick) / std::max(probe.ticks, 1e-9);
    const double y = (value - probe.value) / std::max(probe.values, 1e-9);
    return std::max(std::abs(x), std::abs(y));
}

} // namespace

int rowOf(const CPart* part, const CBaseEvent* event) {
    if (part->type == partDrum) return asHit(event)->sound;
    if (part->type != partMIDI) return -1;
    const int data = asMessage(event)->data;
    return noteOn(data) ? asByte1(data) : -1;
}

EventZone edgeZone(double tick, int from, int to, double edge) {
    const double width = std::min(edge, edgeShare * (double(to) - from));
    if (tick < from + width) return zoneStart;
    return tick >= to - width ? zoneEnd : zoneBody;
}

FoundEvent findEvent(const CPart* part, const EventIndex& events, double tick, int row,
                     double edge) {
    FoundEvent found;
    events.eachAt(tick, [&](const EventIndex::Entry& e) {
        if (part->type == partAudio || rowOf(part, e.event) == row)
            found = {e.event, e.tick, edgeZone(tick, e.tick, e.end, edge)};
    });
    return found;
}

FoundEvent findPoint(CPart* part, int slot, const PointProbe& probe) {
    FoundEvent point, segment;
    double nearest = 1.0;
    const CEnvEvent* before = nullptr;
    int from = 0;
    eachEvent(part->getParam(slot), [&](CEnvEvent* p, int tick) {
        const double away = distance(probe, tick, double(p->value));
        if (away <= nearest) {
            nearest = away;
            point = {p, tick, zoneBody};
        }
        if (before && before->shape == 0) {
            const float middle =
                automationPoint(before->shape, before->value, p->value, 0.5f, p->curve);
            if (distance(probe, (double(from) + tick) / 2, double(middle)) <= 1.0)
                segment = {p, tick, zoneCurve};
        }
        before = p;
        from = tick;
    });
    return point.event ? point : segment;
}

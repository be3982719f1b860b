#include "sequencer/EventFind.h"

#include "base/Numbers.h"
#include "common/Curves.h"
#include "engine/MidiBytes.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipTimes.h"
#include "sequencer/PartEdits.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double edgeShare = 0.2;

/// Ticks of an event that stands in that row; 0 for others.
int ticksInRow(CSeq* seq, CPart* part, CBaseEvent* event, int tick, int row) {
    if (part->type == partAudio)
        return sampleAsTicks2(seq, static_cast<CAudioEvent*>(event),
                              saturate(int64_t(part->pos) + part->offset + tick));
    const int* length = eventLength(part->type, event);
    if (!length) return 0;
    const int own = part->type == partDrum ? static_cast<CDrumEvent*>(event)->sound
                                           : asByte1(static_cast<CMIDIEvent*>(event)->data);
    return own == row ? *length : 0;
}

/// How far from the probe, 1 where its reach ends.
double distance(const PointProbe& probe, double tick, double value) {
    const double x = (tick - probe.tick) / std::max(probe.ticks, 1e-9);
    const double y = (value - probe.value) / std::max(probe.values, 1e-9);
    return std::max(std::abs(x), std::abs(y));
}

} // namespace

EventZone edgeZone(double tick, int from, int to, double edge) {
    const double width = std::min(edge, edgeShare * (double(to) - from));
    if (tick < from + width) return zoneStart;
    return tick >= to - width ? zoneEnd : zoneBody;
}

FoundEvent findEvent(CSeq* seq, CPart* part, double tick, int row, double edge) {
    FoundEvent found;
    int at = 0;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
        at += e->delta;
        if (at > tick) break;
        const int end = saturate(int64_t(at) + ticksInRow(seq, part, e, at, row));
        if (tick < end) found = {e, at, edgeZone(tick, at, end, edge)};
    }
    return found;
}

FoundEvent findPoint(CPart* part, int slot, const PointProbe& probe) {
    FoundEvent point, segment;
    double nearest = 1.0;
    const CEnvEvent* before = nullptr;
    int from = 0;
    eachEvent(part->getParam(slot), [&](CBaseEvent* e, int tick) {
        const auto* p = static_cast<const CEnvEvent*>(e);
        const double away = distance(probe, tick, double(p->value));
        if (away <= nearest) {
            nearest = away;
            point = {e, tick, zoneBody};
        }
        if (before && before->shape == 0) {
            const float middle =
                automationPoint(before->shape, before->value, p->value, 0.5f, p->curve);
            if (distance(probe, (double(from) + tick) / 2, double(middle)) <= 1.0)
                segment = {e, tick, zoneCurve};
        }
        before = p;
        from = tick;
    });
    return point.event ? point : segment;
}

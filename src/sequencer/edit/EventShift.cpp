#include "sequencer/edit/EventShift.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "instruments/CLayer.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int topKey = 127, topVelocity = 127;

int rowsOf(CSeq* seq, CPart* part) {
    const CTrack* track = part->type == partDrum ? seq->partToTrack(part) : nullptr;
    const CLayer* layer = track ? track->drumLayer() : nullptr;
    return layer ? layer->sounds.getCount() : 0;
}

/// The lowest and the highest of some numbers.
struct Extent {
    int64_t low = std::numeric_limits<int64_t>::max(), high = std::numeric_limits<int64_t>::min();
    void add(int64_t number) {
        low = std::min(low, number);
        high = std::max(high, number);
    }
    explicit operator bool() const { return low <= high; }
};

} // namespace

EventShift::EventShift(CSeq* song, CPart* of, const EventLane& on, const EventDelta& by)
    : seq(song), part(of), lane(on), delta(by), rows(rowsOf(song, of)) {
}

bool EventShift::concerns(const CBaseEvent* event) const {
    return isSelected(event) && onLane(lane, part->type, event);
}

int EventShift::change(CBaseEvent* event, int tick) const {
    if (lane.automation() || lane.values()) {
        const float value = laneValue(lane, part->type, event);
        if (delta.value != 0.0f) setLaneValue(lane, part->type, event, value + delta.value);
    } else {
        if (delta.length) changeLength(event, tick);
        if (delta.pitch) changePitch(event);
        if (delta.velocity) changeVelocity(event);
    }
    return limitTicks(int64_t(tick) + delta.ticks);
}

int EventShift::lengthOf(CBaseEvent* event, int tick) const {
    auto* clip = asClip(event);
    if (part->type == partAudio) return sampleAsTicks2(seq, clip, songTick(tick));
    const int* length = eventLength(part->type, event);
    return length ? *length : 0;
}

int EventShift::trim(CBaseEvent* event, int tick, int by) const {
    const int length = lengthOf(event, tick);
    if (length == 0) return tick;
    auto* clip = asClip(event);
    const int hidden = asMin(-part->offset - tick, 0);
    int earliest = hidden;
    if (part->type == partAudio) earliest = -ticksBefore(seq, clip, songTick(tick), -hidden);
    const int moved = asMinMax(by, earliest, length - 1);
    if (part->type == partAudio)
        trimClip(seq, clip, songTick(tick), moved);
    else
        *eventLength(part->type, event) = length - moved;
    return tick + moved;
}

int EventShift::songTick(int tick) const {
    return saturate(int64_t(part->pos) + part->offset + tick);
}

void EventShift::changeLength(CBaseEvent* event, int tick) const {
    const int length = lengthOf(event, tick);
    if (length == 0) return;
    const int wanted = asMax(limitTicks(int64_t(length) + delta.length), 1);
    if (part->type == partAudio)
        setClipTicks(seq, asClip(event), songTick(tick), wanted);
    else
        *eventLength(part->type, event) =
            std::min(wanted, asMax(limitTicks(int64_t(maxTicks) - tick), 1));
}

void EventShift::changePitch(CBaseEvent* event) const {
    if (part->type == partDrum) {
        int& sound = asHit(event)->sound;
        sound = asMinMax(saturate(int64_t(sound) + delta.pitch), 0, asMax(rows - 1, 0));
    } else if (isNote(part->type, event)) {
        int& data = asMessage(event)->data;
        const int key = asMinMax(saturate(int64_t(asByte1(data)) + delta.pitch), 0, topKey);
        data = asData(data, key, asByte2(data));
    }
}

void EventShift::changeVelocity(CBaseEvent* event) const {
    if (part->type == partDrum) {
        float& velocity = asHit(event)->velocity;
        const float step = 1.0f / topVelocity;
        velocity = fLimit(velocity + float(delta.velocity) * step, step, 1.0f);
    } else if (isNote(part->type, event)) {
        int& data = asMessage(event)->data;
        const int velocity =
            asMinMax(saturate(int64_t(asByte2(data)) + delta.velocity), 1, topVelocity);
        data = asData(data, asByte1(data), velocity);
    }
}

CBaseEvent* listOf(CPart* part, const EventLane& lane) {
    return lane.automation() ? part->getParam(lane.number) : part->getEvents();
}

EventRange rangeOf(CSeq* seq, CPart* part, CBaseEvent* list, const EventLane& lane) {
    const EventDelta none;
    const EventShift change(seq, part, lane, none);
    Extent ticks, lengths, pitches;
    const int last = seq->getTicks(part) - (lane.automation() ? 0 : 1);
    eachEvent(list, [&](CBaseEvent* e, int tick) {
        if (!change.concerns(e)) return;
        const int64_t at = int64_t(part->offset) + tick;
        if (at >= 0 && at <= last) ticks.add(at);
        if (lane.automation() || lane.values()) return;
        if (const int length = change.lengthOf(e, tick)) lengths.add(length);
        if (part->type == partDrum) pitches.add(asHit(e)->sound);
        if (isNote(part->type, e)) pitches.add(asByte1(asMessage(e)->data));
    });
    EventRange range;
    if (ticks) {
        range.minTicks = int(-ticks.low);
        range.maxTicks = int(last - ticks.high);
    }
    if (lengths) range.minLength = int(1 - lengths.low);
    if (pitches) {
        const int top = part->type == partDrum ? rowsOf(seq, part) - 1 : topKey;
        range.minPitch = asMin(saturate(-pitches.low), 0);
        range.maxPitch = asMax(saturate(top - pitches.high), 0);
    }
    return range;
}

EventDelta limited(EventDelta delta, const EventRange& range) {
    delta.ticks = asMinMax(delta.ticks, range.minTicks, range.maxTicks);
    delta.pitch = asMinMax(delta.pitch, range.minPitch, range.maxPitch);
    return delta;
}

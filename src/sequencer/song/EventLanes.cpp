#include "sequencer/song/EventLanes.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/EventKinds.h"

namespace {

constexpr int most7 = 127, most14 = 16383;

int statusOf(int laneKind) {
    switch (laneKind) {
    case laneController:
        return midiController;
    case lanePressure:
        return midiPressure;
    case lanePitchBend:
        return midiPitchBend;
    case laneAftertouch:
        return midiAftertouch;
    case laneProgram:
        return midiProgram;
    default:
        return midiNoteOn;
    }
}

/// Whether the value stands in the first data byte.
bool inFirstByte(int laneKind) {
    return laneKind == lanePressure || laneKind == laneProgram;
}

int withValue(int laneKind, int data, float value) {
    const int status = data & 0xFF;
    const int seven = asRound(double(value) * most7);
    if (laneKind == lanePitchBend) {
        const int bend = asRound(double(value) * most14);
        return asData(status, bend & most7, bend >> 7);
    }
    if (inFirstByte(laneKind)) return asData(status, seven, asByte2(data));
    return asData(status, asByte1(data), laneKind == laneVelocity ? asMax(seven, 1) : seven);
}

float valueOf(int laneKind, int data) {
    const int low = asByte1(data) & most7, high = asByte2(data) & most7;
    if (laneKind == lanePitchBend) return float(low | high << 7) / float(most14);
    return float(inFirstByte(laneKind) ? low : high) / float(most7);
}

bool showsStyle(int laneKind) {
    return laneKind == laneChance || laneKind == laneRepeats || laneKind == laneFlam;
}

/// What of the style the lane shows.
int styleNumber(int laneKind, const HitStyle& style) {
    if (laneKind == laneChance) return style.chance;
    return laneKind == laneRepeats ? style.repeats : style.flamMs;
}

void setStyle(int laneKind, HitStyle& style, int to) {
    if (laneKind == laneChance)
        style.chance = (unsigned char)to;
    else if (laneKind == laneRepeats)
        style.repeats = (unsigned char)to;
    else
        style.flamMs = (unsigned char)(to & 127);
}

/// The least and the most that it can be.
struct StyleRange {
    int least, most;
};
StyleRange styleRange(int laneKind) {
    if (laneKind == laneRepeats) return {1, mostRepeats};
    return {0, laneKind == laneChance ? mostChance : mostFlamMs};
}

} // namespace

int styleOf(int laneKind, float value) {
    const StyleRange range = styleRange(laneKind);
    return range.least + asRound(double(value) * (range.most - range.least));
}

float styleShare(int laneKind, double number) {
    const StyleRange range = styleRange(laneKind);
    return float((number - range.least) / (range.most - range.least));
}

bool onLane(const EventLane& lane, int partType, const CBaseEvent* event) {
    if (!lane.values()) return true;
    if (partType == partDrum) return lane.ofNotes();
    if (partType != partMIDI) return false;
    const int data = asMessage(event)->data;
    if (lane.ofNotes()) return noteOn(data);
    if (statusByte(data) != statusOf(lane.kind)) return false;
    return lane.kind != laneController || asByte1(data) == lane.number;
}

float laneValue(const EventLane& lane, int partType, const CBaseEvent* event) {
    if (lane.automation()) return asLanePoint(event)->value;
    if (!lane.values() || !onLane(lane, partType, event)) return 0.0f;
    if (showsStyle(lane.kind)) return styleShare(lane.kind, styleNumber(lane.kind, event->style));
    if (partType == partDrum) return asHit(event)->velocity;
    return valueOf(lane.kind, asMessage(event)->data);
}

void setLaneValue(const EventLane& lane, int partType, CBaseEvent* event, float value) {
    const float kept = fLimit(value, 0.0f, 1.0f);
    if (lane.automation()) {
        asLanePoint(event)->value = kept;
    } else if (lane.values() && onLane(lane, partType, event)) {
        if (showsStyle(lane.kind))
            return setStyle(lane.kind, event->style, styleOf(lane.kind, kept));
        if (partType == partDrum) return setDrumParam(asHit(event), 0, kept);
        int& data = asMessage(event)->data;
        data = withValue(lane.kind, data, kept);
    }
}

CBaseEvent* newLaneEvent(const EventLane& lane, int partType, float value) {
    if (lane.automation()) return createEnvEvent(nullptr, value);
    const bool alone = lane.values() && !lane.ofNotes() && lane.kind != laneAftertouch;
    if (!alone || partType != partMIDI) return nullptr;
    CMIDIEvent* event = createMIDIEvent();
    const int first = lane.kind == laneController ? asMinMax(lane.number, 0, most7) : 0;
    event->data =
        withValue(lane.kind, asData(statusOf(lane.kind), first, 0), fLimit(value, 0.0f, 1.0f));
    return event;
}

void setDrumParam(CDrumEvent* event, int param, float value) {
    const float kept = fLimit(value, 0.0f, 1.0f);
    if (param == 0) event->velocity = kept;
    if (param == 1) event->pan = 2.0f * kept - 1.0f;
    if (param == 2) event->tune = kept;
}

float drumParam(const CDrumEvent* event, int param) {
    const float value = param == 0   ? event->velocity
                        : param == 1 ? (event->pan + 1.0f) / 2.0f
                        : param == 2 ? event->tune
                                     : 0.0f;
    return fLimit(value, 0.0f, 1.0f);
}

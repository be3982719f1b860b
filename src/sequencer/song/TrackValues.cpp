#include "sequencer/song/TrackValues.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"

namespace {

using Numbers = StoredValue::Numbers;

constexpr int lastChannel = 15, fullPercent = 100, mostColour = 0xFFFFFF;

CTrack* track(CObject* o) {
    return static_cast<CTrack*>(o);
}
const CTrack* track(const CObject* o) {
    return static_cast<const CTrack*>(o);
}

/// Of a whole number of a track, from `low` to `high`.
template <auto field, int low, int high>
constexpr StoredValue::Kind whole(const char* name) {
    return {name, [](const CObject* o, int) { return Numbers{double(track(o)->*field)}; },
            [](CObject* o, int, const Numbers& to) {
                auto& value = track(o)->*field;
                value = static_cast<decltype(value.load())>(asMinMax(asInt(to[0]), low, high));
                track(o)->seq->songNotices.raise(SeqNotice::tracks);
            }};
}
constexpr StoredValue::Kind colour = whole<&CTrack::colour, -1, mostColour>("Track colour");
constexpr StoredValue::Kind locked = whole<&CTrack::locked, 0, 1>("Lock");
constexpr StoredValue::Kind liveSwitch = whole<&CTrack::live, 0, 1>("Live");
const StoredValue::Kind live = {liveSwitch.name, liveSwitch.get,
                                [](CObject* o, int index, const Numbers& to) {
                                    liveSwitch.set(o, index, to);
                                    track(o)->host->hostNotices.raise(HostNotice::delays);
                                }};
constexpr StoredValue::Kind arm = whole<&CTrack::recArm, 0, 1>("Arm");
constexpr StoredValue::Kind monitor = whole<&CTrack::monitor, 0, 1>("Monitor");
constexpr StoredValue::Kind channel = whole<&CTrack::channel, -1, lastChannel>("MIDI channel");
constexpr StoredValue::Kind sensitivity = whole<&CTrack::inSens, 0, fullPercent>("Sensitivity");
constexpr StoredValue::Kind recChannels = whole<&CTrack::recChs, 1, 2>("Recorded channels");

const StoredValue::Kind partColour = {
    "Part colour",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CPart*>(o)->colour)}; },
    [](CObject* o, int, const Numbers& to) {
        static_cast<CPart*>(o)->colour = asMinMax(asInt(to[0]), -1, mostColour);
        raiseSong(SeqNotice::parts);
    }};

constexpr int lastHue = 16;
const StoredValue::Kind markerColour = {
    "Marker colour",
    [](const CObject* o, int) {
        return Numbers{double(static_cast<const CMarkerPart*>(o)->colourIndex)};
    },
    [](CObject* o, int, const Numbers& to) {
        static_cast<CMarkerPart*>(o)->colourIndex =
            static_cast<unsigned char>(asMinMax(asInt(to[0]), 0, lastHue));
        raiseSong(SeqNotice::parts);
    }};

const StoredValue::Kind bypass = {
    "Bypass",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CSubTrack*>(o)->bypass)}; },
    [](CObject* o, int, const Numbers& to) {
        static_cast<CSubTrack*>(o)->bypass = to[0] != 0.0 ? 1 : 0;
        raiseSong(SeqNotice::tracks);
    }};

const StoredValue::Kind swing = {"Swing",
                                 [](const CObject* o, int) {
                                     const CGroove& groove = track(o)->groove;
                                     return Numbers{groove.on ? 1.0 : 0.0, double(groove.amount),
                                                    double(groove.steps), double(groove.stepTicks)};
                                 },
                                 [](CObject* o, int, const Numbers& to) {
                                     CGroove& groove = track(o)->groove;
                                     groove.on = to[0] != 0.0;
                                     groove.amount = fLimit(float(to[1]), 0.0f, 1.0f);
                                     groove.steps = asMinMax(asInt(to[2]), 1, CGroove::maxSteps);
                                     groove.stepTicks = asMinMax(asInt(to[3]), 1, maxTicks);
                                     track(o)->seq->songNotices.raise(SeqNotice::tracks);
                                 }};

const StoredValue::Kind swingStep = {
    "Swing",
    [](const CObject* o, int step) { return Numbers{double(track(o)->groove.offsets[step])}; },
    [](CObject* o, int step, const Numbers& to) {
        track(o)->groove.offsets[step] = fLimit(float(to[0]), -1.0f, 1.0f);
        track(o)->seq->songNotices.raise(SeqNotice::tracks);
    }};

} // namespace

StoredValue colourOf(CTrack* of) {
    return {&colour, of};
}

StoredValue colourOf(CPart* of) {
    return {&partColour, of};
}

StoredValue liveOf(CTrack* of) {
    return {&live, of};
}

StoredValue lockedOf(CTrack* of) {
    return {&locked, of};
}

StoredValue armOf(CTrack* of) {
    return {&arm, of};
}

StoredValue monitorOf(CTrack* of) {
    return {&monitor, of};
}

StoredValue channelOf(CTrack* of) {
    return {&channel, of};
}

StoredValue sensitivityOf(CTrack* of) {
    return {&sensitivity, of};
}

StoredValue recChannelsOf(CTrack* of) {
    return {&recChannels, of};
}

StoredValue colourOf(CMarkerPart* of) {
    return {&markerColour, of};
}

StoredValue bypassOf(CSubTrack* of) {
    return {&bypass, of};
}

StoredValue swingOf(CTrack* of) {
    return {&swing, of};
}

StoredValue swingStepOf(CTrack* of, int step) {
    return {&swingStep, of, asMinMax(step, 0, CGroove::maxSteps - 1)};
}

void renameObject(CSeq* seq, CObject* object, const CStr& name) {
    if (object->id == name) return;
    CUndo* undo = seq->host->undoStart(
        "Rename", seq, {.seq = SeqNotice::tracks | SeqNotice::parts | SeqNotice::transport});
    undo->asName(&object->id);
    object->id = name;
    seq->host->undoEnd(undo, false);
}

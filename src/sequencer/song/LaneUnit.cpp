#include "sequencer/song/LaneUnit.h"

#include "base/Numbers.h"
#include "engine/ParamUnit.h"
#include "sequencer/song/EventLanes.h"

namespace {

constexpr int mostController = 127, mostBend = 16383, middleBend = 8192;

const ParamUnit controller{
    [](float share) { return asStr(asRound(double(share) * mostController)); },
    [](double number) { return float(number / mostController); }};
const ParamUnit bend{
    [](float share) { return asStr(asRound(double(share) * mostBend) - middleBend); },
    [](double number) { return float((number + middleBend) / mostBend); }};

const ParamUnit chance{[](float share) { return asStr(styleOf(laneChance, share)) + "%"; },
                       [](double number) { return styleShare(laneChance, number); }};
const ParamUnit repeats{[](float share) { return asStr(styleOf(laneRepeats, share)); },
                        [](double number) { return styleShare(laneRepeats, number); }};
const ParamUnit flam{[](float share) { return asStr(styleOf(laneFlam, share)) + " ms"; },
                     [](double number) { return styleShare(laneFlam, number); }};

} // namespace

const ParamUnit& unitOf(const CSubTrack& lane) {
    if (lane.target == targetController) return controller;
    if (lane.target == targetPitchBend) return bend;
    return unitOf(lane.object, lane.param);
}

const ParamUnit& unitOf(const EventLane& lane) {
    switch (lane.kind) {
    case lanePitchBend:
        return bend;
    case laneChance:
        return chance;
    case laneRepeats:
        return repeats;
    case laneFlam:
        return flam;
    default:
        return controller;
    }
}

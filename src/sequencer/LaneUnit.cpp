#include "sequencer/LaneUnit.h"

#include "base/Numbers.h"
#include "engine/ParamUnit.h"
#include "sequencer/EventLanes.h"

namespace {

constexpr int mostController = 127, mostBend = 16383, middleBend = 8192;

const ParamUnit controller{
    [](float share) { return asStr(asRound(double(share) * mostController)); },
    [](double number) { return float(number / mostController); }};
const ParamUnit bend{
    [](float share) { return asStr(asRound(double(share) * mostBend) - middleBend); },
    [](double number) { return float((number + middleBend) / mostBend); }};

} // namespace

const ParamUnit& unitOf(const CSubTrack& lane) {
    if (lane.target == targetController) return controller;
    if (lane.target == targetPitchBend) return bend;
    return unitOf(lane.object, lane.param);
}

const ParamUnit& unitOf(const EventLane& lane) {
    return lane.kind == lanePitchBend ? bend : controller;
}

#pragma once

class CSubTrack;
struct EventLane;
struct ParamUnit;

/// The unit in which the points of an automation lane are told and typed: that of the parameter, 0
/// to 127 of a controller, -8192 to 8191 of the pitch bend. Interface thread.
const ParamUnit& unitOf(const CSubTrack& lane);
/// The same for a lane of the values of events (EventLane::values).
const ParamUnit& unitOf(const EventLane& lane);

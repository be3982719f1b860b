#pragma once

class CObject;
class CSubTrack;
struct CBaseEvent;

enum class PlayKind : int { midi = 0, audio = 1, drum = 2, envelope = 3 };

/// Where an envelope pointer stands.
enum class RampState : int {
    between = 0,     ///< between two points, or on one
    beforeFirst = 2, ///< no value exists yet
};

/// A play pointer into one list of a part. Touched by the graph holder only; it is valid from one
/// `CSongTrack::setup` to the next edit.
struct CPlayStruct {
    PlayKind kind = PlayKind::midi;
    int pos = 0;   ///< timeline tick of the event before `current`
    int param = 0; ///< of the lane
    RampState state = RampState::between;
    CObject* object = nullptr; ///< of the lane
    CSubTrack* lane = nullptr; ///< null but for envelopes
    float rampFrom = 0.0f, rampTo = 0.0f;
    float lastValue = -1.0f;       ///< last value sent
    float curve = 0.0f;            ///< of the present segment
    double rampLength = 0.0;       ///< ticks
    double rampPos = 0.0;          ///< ticks from the segment's start
    int swing = 0;                 ///< ticks by which all events of this stride are moved
    bool swung = false;            ///< whether `swing` is that of this stride
    CBaseEvent* head = nullptr;    ///< the list that is played, a master's for a ghost
    CBaseEvent* current = nullptr; ///< the event that is due next, null when done
};

#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"
#include "base/CStr.h"

/// What a lane shows. All but automation are views of the MIDI events of the parts.
enum LaneKind : int {
    laneController = -1, ///< number in `param`
    lanePressure = -2,
    lanePitchBend = -3,
    laneAftertouch = -4,
    laneProgram = -5,
    laneVelocity = -6,
    laneChance = -7,  ///< how often a note or hit plays; in editors alone, as the two that follow
    laneRepeats = -8, ///< within its length
    laneFlam = -9,    ///< milliseconds
    laneAutomation = -102, ///< the points of `CPart::getParam(slot)`
};

constexpr unsigned laneSelected = 1; ///< bit of a lane's `flags`

/// How an automation lane acts.
enum LaneTarget : int {
    targetParam = 1,      ///< parameter `param` of `object`
    targetController = 2, ///< MIDI controller `param`
    targetPitchBend = 3,
};

/// A lane: a strip under an opened track for one kind of controller data.
class CSubTrack : public CObject {
public:
    Shared<unsigned char> visible{1};
    Shared<int> kind;
    Shared<int> height{40};           ///< pixels
    Shared<CObject*> object{nullptr}; ///< CComp, COutputChannel or CSend, not owned; may be null
    Shared<int> param{0};
    Shared<int> slot{0};            ///< 0 to 63, in every part of the track
    Shared<float> lastValue{-1.0f}; ///< last value sent
    Shared<int> target{targetParam};
    Shared<unsigned char> bypass{0}; ///< 1: shown and edited, but not played

    // Chase after a jump. Graph holder.
    float chaseValue = 0.0f;
    bool chasePending = false;
    bool recorded = false; ///< by a take in the running pass, until whose end it is not played

    /// Whether its points are sent. Graph holder.
    bool played() const { return !bypass && !recorded; }

    CSubTrack(const CStr& name, LaneKind laneKind);
    bool automation() const { return kind == laneAutomation; }
};

/// Display text of a lane kind, with the controller number for kind -1; empty for pitch bend and
/// for unknown kinds.
CStr controllerAsText(int kind, int number);

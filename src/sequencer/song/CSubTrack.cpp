#include "sequencer/song/CSubTrack.h"

#include "base/Numbers.h"

CSubTrack::CSubTrack(const CStr& name, LaneKind laneKind) : kind(laneKind) {
    id = name;
}

CStr controllerAsText(int kind, int number) {
    switch (kind) {
    case laneController:
        return CStr("CC") + asStr(number);
    case lanePressure:
        return "Channel pressure";
    case laneAftertouch:
        return "Aftertouch";
    case laneProgram:
        return "Prog.change";
    case laneVelocity:
        return "Velocity";
    case laneChance:
        return "Chance";
    case laneRepeats:
        return "Repeats";
    case laneFlam:
        return "Flam";
    case laneAutomation:
        return "Param";
    default:
        return "";
    }
}

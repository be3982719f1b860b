#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"
#include "base/CStr.h"
#include "base/Stored.h"
#include "engine/plan/PlanFade.h"

class CComp;
class COutputChannel;

/// How much of a channel goes to one send bus. Parameter 0 is the level.
class CSend : public CObject {
public:
    CSend(CComp* owner, COutputChannel* from);

    CComp* comp;
    COutputChannel* channel;
    Stored<float> level{0.0f}; ///< 0 to 1, squared when applied
    Shared<int> muted{0};
    Shared<int> shownLevel{-1}; ///< what the level control last painted, in percent

    // Whoever runs the step that fetches what is sent.
    PlanFade gate;        ///< follows `muted`, and what silences the strip
    bool settled = false; ///< it stands where it belongs; else it goes there at once

    void setParam(int param, ToStore<float> value);
    float param(int index) const;
    /// The level in percent, with a "%".
    CStr paramText(int index) const;
};

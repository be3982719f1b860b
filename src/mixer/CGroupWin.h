#pragma once

#include "mixer/CMixerWin.h"

class CGroupCh;

/// The window of a group or bus: the strips whose sound comes to it, its own, and the outputs. What
/// is done there is done as in the mixer. Interface thread.
class CGroupWin : public CMixerWin {
public:
    CGroupWin(Workspace& space, CMixer& kept, CGroupCh& group);
};

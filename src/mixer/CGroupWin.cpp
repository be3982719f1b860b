#include "mixer/CGroupWin.h"

#include "engine/CGroupCh.h"
#include "mixer/CMixerPanel.h"

CGroupWin::CGroupWin(Workspace& space, CMixer& kept, CGroupCh& group)
    : CMixerWin(space, kept, group, group.id) {
    strips()->showRouted(group.output());
}

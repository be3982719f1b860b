#pragma once

#include "base/CStr.h"

#include <vector>

class CComp;
class COutputChannel;
class CQV;

// What a user does to the components behind mixer strips; each edit is one step of the history.
// Interface thread; the step has been carried out on return.

/// The outs, groups and racks that a strip may lead to without feeding itself; none for an out.
std::vector<CComp*> stripTargets(CQV* host, COutputChannel* ch);
/// The first of these that a cable leads to, null when there is none.
CComp* stripTarget(CQV* host, COutputChannel* ch);
/// "Output": of these they lead to `to` alone, to none if that is null. What cannot lead there
/// stays as it is; false where nothing changes.
bool setStripTargets(CQV* host, const std::vector<COutputChannel*>& strips, CComp* to);

/// "Add Group": a new group that they lead to, which leads to the first audio out. The group.
CComp* groupStrips(CQV* host, const std::vector<COutputChannel*>& strips);

/// "Rename", unless it has that name.
void renameComp(CComp* comp, const CStr& name);

/// Whether a component may go: all but the last audio output.
bool mayDeleteComp(CQV* host, const CComp* comp);
/// "Delete": components and send buses leave with their cables; what was frozen of them plays live
/// again. Their windows close, and stay closed when they come back. A take ends before, and with
/// the song playing stops. Those that may not go stay.
void deleteComps(CQV* host, const std::vector<CComp*>& comps);

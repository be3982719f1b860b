#include "engine/ProgramEdits.h"

#include "engine/CQV.h"
#include "engine/CUndo.h"

#include <algorithm>

namespace {

/// Where the current program stands after one has left place `left` and come to place `arrived`,
/// -1 for neither. One that comes from outside becomes current.
int followCurrent(int current, int left, int arrived) {
    if (left == current || left < 0) return arrived < 0 ? current : arrived;
    if (left < current) current--;
    return arrived >= 0 && arrived <= current ? current + 1 : current;
}

} // namespace

void removeProgram(CComp* comp, int index) {
    CProgram* prog = comp->getProgram(index);
    if (index < 0 || !prog || comp->progs.getCount() < 2) return;
    CUndo* step = comp->host->undoStart("Delete program", comp, {.comp = CompNotice::program});
    step->asInt(comp->curProg.address()); // undone last
    step->asRemove(prog, &comp->progs);
    comp->host->undoEnd(step, true);
}

void renameProgram(CComp* comp, int index, const CStr& name) {
    CProgram* prog = comp->getProgram(index);
    if (!prog || prog->id == name) return;
    CUndo* step = comp->host->undoStart("Rename", comp, {.comp = CompNotice::program});
    step->asName(&prog->id);
    prog->id = name;
    comp->host->undoEnd(step, true);
}

void followProgram(CComp* comp, const CUndoItem& item) {
    if (!item.touches(&comp->progs)) return;
    const int arrived = comp->progs.indexed(item.object);
    const bool within = item.addTo == item.removeFrom;
    const int left = arrived < 0 || within ? item.index : -1;
    const int current = followCurrent(comp->curProg, left, arrived);
    comp->curProg = std::clamp(current, 0, std::max(0, comp->progs.getCount() - 1));
    comp->notices.raise(CompNotice::program);
}

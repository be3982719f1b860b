#include "effects/RackEdits.h"

#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"

namespace {

const StepEffects chainChanged = {.comp = CompNotice::program};

int placeIn(const CList& list, int index) {
    return index < 0 || index >= list.getCount() ? -1 : index;
}

} // namespace

CFX* insertEffect(CEffect* rack, CEffectProg* prog, int kind, int index) {
    CUndo* step = rack->host->undoStart("Add " + effectName(kind), rack, chainChanged);
    CFX* fx = rack->addEffect(prog, kind, step, placeIn(prog->effects, index));
    rack->host->undoEnd(step, true);
    return fx;
}

void removeEffect(CEffect* rack, CEffectProg* prog, CFX* fx) {
    CUndo* step = rack->host->undoStart("Remove " + effectName(fx->type), rack, chainChanged);
    step->asRemove(fx, &prog->effects);
    rack->host->undoEnd(step, true);
}

bool moveEffect(CEffect* rack, CEffectProg* prog, CFX* fx, int index) {
    CList& chain = prog->effects;
    const int from = chain.indexed(fx), to = placeIn(chain, index);
    const int last = chain.getCount() - 1;
    if (from < 0 || to == from || to == from + 1 || (to < 0 && from == last)) return false;
    CUndo* step = rack->host->undoStart("Move " + effectName(fx->type), rack, chainChanged);
    step->asMove(fx, &chain, &chain, to);
    rack->host->undoEnd(step, true);
    return true;
}

void addRackProgram(CEffect* rack, int kind) {
    CUndo* step = rack->host->undoStart("Add program", rack, chainChanged);
    step->asInt(rack->curProg.address()); // undone last
    rack->addProg(kind, step);
    rack->host->undoEnd(step, true);
}

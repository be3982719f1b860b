#include "effects/RackEdits.h"

#include "effects/CEffect.h"
#include "effects/ChainPlaces.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"

namespace {

const StepEffects chainChanged = {.comp = CompNotice::program};

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
    auto& chain = prog->effects;
    const int to = placeIn(chain, index);
    if (!chain.contains(fx) || staysAt(chain, fx, to)) return false;
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

#include "effects/RackEdits.h"

#include "base/CStream.h"
#include "effects/CEffect.h"
#include "effects/ChainPlaces.h"
#include "effects/RackFiles.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/EffectSettings.h"
#include "engine/ValueDoor.h"

namespace {

const StepEffects chainChanged = {.comp = CompNotice::program};

/// Each of its settings but power becomes `number(setting)`.
template <class F>
void setAll(CEffect* rack, CFX* fx, const CStr& title, F&& number) {
    ValueDoor& door = *rack->host->values;
    const Settings all = settingsOf(*fx);
    if (all.empty()) return;
    door.begin(title);
    for (const Setting& s : all.subspan(1)) {
        StoredValue::Numbers to = s.of(fx).get();
        to[0] = number(s);
        door.set(s.of(fx), to);
    }
    door.end();
}

CFX* firstOfKind(const RackContent& content, int kind) {
    for (auto* prog : content.progs)
        for (auto* fx : prog->effects)
            if (fx->type == kind) return fx;
    return nullptr;
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
    auto& chain = prog->effects;
    const int to = placeIn(chain, index);
    if (!chain.contains(fx) || staysAt(chain, fx, to)) return false;
    CUndo* step = rack->host->undoStart("Move " + effectName(fx->type), rack, chainChanged);
    step->asMove(fx, &chain, &chain, to);
    rack->host->undoEnd(step, true);
    return true;
}

void resetEffect(CEffect* rack, CFX* fx) {
    setAll(rack, fx, "Default", [](const Setting& s) { return s.usual; });
}

bool openEffect(CEffect* rack, CFX* fx, const CStr& path) {
    CFileStream stream(path, 0);
    RackContent content(rack->host->rate, rack->host->frames);
    content.read(&stream, stream.getSize());
    CFX* from = firstOfKind(content, fx->type);
    if (!from) return false;
    setAll(rack, fx, "Open", [from](const Setting& s) { return s.of(from).get()[0]; });
    return true;
}

void addRackProgram(CEffect* rack, int kind) {
    CUndo* step = rack->host->undoStart("Add program", rack, chainChanged);
    step->asInt(rack->curProg.address()); // undone last
    rack->addProg(kind, step);
    rack->host->undoEnd(step, true);
}

#include "engine/MapEdits.h"

#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/MidiRouting.h"

#include <utility>

namespace {

bool leads(const CMap* map, const ParamRef& to) {
    return map->target == to.object && map->param == to.param;
}

} // namespace

LeadingController controllerOf(CQV* host, const ParamRef& to) {
    LeadingController found;
    if (const CMapProg* program = currentMaps(host))
        for (const auto* map : each<CMap>(program->items))
            if (leads(map, to)) found.number = map->learning ? found.awaited : int(map->cc);
    return found;
}

void learnController(CQV* host, const ParamRef& to) {
    const int before = std::exchange(host->mapLearn, 1);
    host->paramMoved(to.object, to.param, paramShare(to.object, to.param));
    host->mapLearn = before;
}

void forgetController(CQV* host, const ParamRef& to) {
    CMapProg* program = currentMaps(host);
    if (!program) return;
    CUndo* step = host->undoStart("Forget controller", host, {.comp = CompNotice::maps});
    for (auto* map : each<CMap>(program->items))
        if (leads(map, to)) step->asRemove(map, &program->items);
    host->undoEnd(step, true);
}

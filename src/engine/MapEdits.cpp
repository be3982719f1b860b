#include "engine/MapEdits.h"

#include "base/Numbers.h"
#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ControlSource.h"
#include "engine/MidiRouting.h"

#include <utility>

namespace {

const StepEffects rows = {.comp = CompNotice::maps};

/// A field of a map as a stored value.
template <Shared<int> CMap::*field>
constexpr StoredValue::Kind kindOf(const char* name) {
    return {name,
            [](const CObject* object, int) {
                return StoredValue::Numbers{double(static_cast<const CMap*>(object)->*field)};
            },
            [](CObject* object, int, const StoredValue::Numbers& to) {
                auto* map = static_cast<CMap*>(object);
                const int most = field == &CMap::mode ? mapModes - 1
                                 : field == &CMap::cc ? mostSource
                                                      : 127;
                const int wanted = asMinMax(int(to[0]), 0, most);
                const bool between = wanted > lastFineSource && wanted < firstNrpnSource;
                map->*field = field == &CMap::cc && between ? lastFineSource : wanted;
                map->learning = false;
                map->lastValue = -1.0f;
            }};
}

constexpr Shared<int> CQV::*transportFields[] = {&CQV::ctrlStart, &CQV::ctrlStop, &CQV::ctrlRewind,
                                                 &CQV::ctrlRecord, &CQV::ctrlTempo};

constexpr StoredValue::Kind transportKind = {
    "Controller",
    [](const CObject* host, int index) {
        return StoredValue::Numbers{double(static_cast<const CQV*>(host)->*transportFields[index])};
    },
    [](CObject* host, int index, const StoredValue::Numbers& to) {
        static_cast<CQV*>(host)->*transportFields[index] =
            asMinMax(asInt(to[0]), int(LeadingController::awaited), 127);
    }};

constexpr StoredValue::Kind kinds[] = {kindOf<&CMap::cc>("Controller"), kindOf<&CMap::min>("Range"),
                                       kindOf<&CMap::max>("Range"), kindOf<&CMap::mode>("Mode")};

bool leads(const CMap* map, const ParamRef& to) {
    return map->target == to.object && map->param == to.param;
}

} // namespace

StoredValue transportController(CQV* host, int index) {
    return {&transportKind, host, index};
}

LeadingController controllerOf(CQV* host, const ParamRef& to) {
    LeadingController found;
    if (const CMapProg* program = currentMaps(host))
        for (const auto* map : program->items)
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
    for (auto* map : program->items)
        if (leads(map, to)) step->asRemove(map, &program->items);
    host->undoEnd(step, true);
}

StoredValue mapValue(CMap* map, MapField field) {
    return {&kinds[int(field)], map};
}

void addEmptyMap(CQV* host) {
    CMapProg* program = currentMaps(host);
    if (!program || program->full()) return;
    CUndo* step = host->undoStart("Add", host, rows);
    step->asAdd(new CMap, &program->items);
    host->undoEnd(step, true);
}

void deleteMap(CQV* host, CMap* map) {
    CMapProg* program = currentMaps(host);
    if (!program || !program->items.contains(map)) return;
    CUndo* step = host->undoStart("Delete", host, rows);
    step->asRemove(map, &program->items);
    host->undoEnd(step, true);
}

void addMapProg(CQV* host) {
    CUndo* step = host->undoStart("Add program", host, rows);
    step->asAdd(new CMapProg, &host->maps);
    host->undoEnd(step, true);
    chooseMapProg(host, host->maps.getCount() - 1);
}

void deleteMapProg(CQV* host) {
    CMapProg* program = currentMaps(host);
    if (!program) return;
    CUndo* step = host->undoStart("Delete", host, rows);
    step->asRemove(program, &host->maps);
    if (host->maps.getCount() == 1) step->asAdd(new CMapProg, &host->maps);
    host->undoEnd(step, true);
    chooseMapProg(host, host->curMap);
}

void renameMapProg(CQV* host, CMapProg* prog, const CStr& name) {
    if (prog->name == name) return;
    CUndo* step = host->undoStart("Rename", host, rows);
    step->asName(&prog->name);
    prog->name = name;
    host->undoEnd(step, true);
}

void chooseMapProg(CQV* host, int index) {
    const int wanted = asMinMax(index, 0, asMax(host->maps.getCount() - 1, 0));
    if (host->curMap == wanted) return;
    host->curMap = wanted;
    host->setModified();
    host->notices.raise(CompNotice::maps);
}

#include "effects/Inserts.h"

#include "base/CStream.h"
#include "common/fx/CCompressor.h"
#include "effects/CEffect.h"
#include "effects/ChainPlaces.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ObjectKinds.h"

namespace {

const StepEffects rewired = {.graph = true};

/// Of what adds to a sound; other effects take its place.
float usualWet(int kind) {
    constexpr float added = 0.3f;
    return kind == fxDelay || kind == fxReverb ? added : 1.0f;
}

std::unique_ptr<CEffect> emptyRack(COutputChannel* ch) {
    CQV* host = ch->comp->host;
    auto rack = std::make_unique<CEffect>(host);
    rack->createIO();
    rack->createBuffers(host->frames);
    return rack;
}

/// Not what it would wait for at its new place.
void copyKey(CComp* from, CComp* to) {
    const CKeyInput* key = keyInputOf(from);
    COutputChannel* const strip = key ? key->source() : nullptr;
    if (strip && mayKey(to, strip)) keyInputOf(to)->cables.add(makeKeyCable(to, strip));
}

std::unique_ptr<CEffect> rackOf(COutputChannel* ch, int kind) {
    std::unique_ptr<CEffect> rack = makeInsert(ch, kind);
    rack->wet = usualWet(kind);
    return rack;
}

} // namespace

CComp* addInsert(COutputChannel* ch, std::unique_ptr<CComp> made, int index) {
    CQV* host = ch->comp->host;
    CUndo* step = host->undoStart("Add " + made->id, host, rewired);
    CComp* added = made.release();
    added->listKind = listInsert;
    added->ownerChannel = ch;
    step->asAdd(added, &ch->inserts, placeIn(ch->inserts, index));
    host->undoEnd(step, true);
    return added;
}

std::unique_ptr<CEffect> makeInsert(COutputChannel* ch, int kind) {
    std::unique_ptr<CEffect> rack = emptyRack(ch);
    rack->addProg(kind);
    rack->id = rack->getProg()->id;
    rack->listKind = listInsert;
    rack->ownerChannel = ch;
    return rack;
}

CFX* effectOf(CEffect* rack) {
    return rack->getProg()->effects.getFirst();
}

CComp* addInsert(COutputChannel* ch, int kind, int index) {
    return addInsert(ch, rackOf(ch, kind), index);
}

namespace {

/// Null where a file has none.
std::unique_ptr<CEffect> rackOfFile(COutputChannel* ch, const CStr& path) {
    std::unique_ptr<CEffect> rack = emptyRack(ch);
    CFileStream stream(path, 0);
    rack->read(&stream, int(stream.getSize()));
    if (!rack->getProg()) return nullptr;
    rack->setRate(double(ch->comp->host->rate));
    rack->id = rack->getProg()->id;
    return rack;
}

} // namespace

CComp* addInsertFile(COutputChannel* ch, const CStr& path, int index) {
    std::unique_ptr<CEffect> rack = rackOfFile(ch, path);
    return rack ? addInsert(ch, std::move(rack), index) : nullptr;
}

bool addSendFile(CQV* host, const CStr& path) {
    auto bus = std::make_unique<CGroupCh>(host);
    bus->init();
    COutputChannel* ch = bus->output();
    std::unique_ptr<CEffect> rack = rackOfFile(ch, path);
    if (!rack) return false;
    bus->id = rack->id;
    rack->listKind = listInsert;
    rack->ownerChannel = ch;
    ch->inserts.add(rack.release());
    addSendBus(std::move(bus));
    return true;
}

CComp* replaceInsert(COutputChannel* ch, int index, std::unique_ptr<CComp> made) {
    auto* former = ch->inserts.items(index);
    if (!former) return addInsert(ch, std::move(made), index);
    CQV* host = ch->comp->host;
    CUndo* step = host->undoStart("Replace " + former->id, host, rewired);
    step->asRemove(former, &ch->inserts);
    CComp* added = made.release();
    added->listKind = listInsert;
    added->ownerChannel = ch;
    step->asAdd(added, &ch->inserts, index);
    host->undoEnd(step, true);
    return added;
}

CComp* replaceInsert(COutputChannel* ch, int index, int kind) {
    return replaceInsert(ch, index, rackOf(ch, kind));
}

void removeInsert(COutputChannel* ch, CComp* insert) {
    if (!ch->inserts.contains(insert)) return;
    CQV* host = ch->comp->host;
    CUndo* step = host->undoStart("Delete " + insert->id, host, rewired);
    step->asRemove(insert, &ch->inserts);
    host->undoEnd(step, true);
}

bool moveInsert(COutputChannel* from, CComp* insert, COutputChannel* to, int index) {
    if (!from->inserts.contains(insert)) return false;
    const int before = placeIn(to->inserts, index);
    if (from == to && staysAt(to->inserts, insert, before)) return false;
    CQV* host = to->comp->host;
    CUndo* step = host->undoStart("Move " + insert->id, host, rewired);
    step->asMove(insert, &from->inserts, &to->inserts, before);
    host->undoEnd(step, true);
    insert->ownerChannel = to; // the next block would find that too
    return true;
}

float gainReductionDb(CComp* insert) {
    auto* rack = compAs<CEffect>(insert);
    if (!rack || !rack->enabled) return 0.0f;
    const CEffectProg* prog = rack->getProg();
    float sum = 0.0f;
    if (prog)
        for (const auto* fx : prog->effects)
            if (fx->type == fxCompressor && fx->enabled)
                sum += static_cast<const CCompressor*>(fx)->reduction;
    return sum;
}

CComp* copyInsert(CComp* insert, COutputChannel* to, int index) {
    CComp* twin = insert->copy();
    if (!twin) return nullptr;
    CQV* host = to->comp->host;
    twin->id = insert->id;
    twin->wet = float(insert->wet);
    twin->enabled = int(insert->enabled);
    twin->listKind = listInsert;
    twin->ownerChannel = to;
    twin->createBuffers(host->frames);
    copyKey(insert, twin);
    CUndo* step = host->undoStart("Copy " + insert->id, host, rewired);
    step->asAdd(twin, &to->inserts, placeIn(to->inserts, index));
    host->undoEnd(step, true);
    return twin;
}

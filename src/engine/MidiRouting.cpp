#include "engine/MidiRouting.h"

#include "engine/CClick.h"
#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ControlSource.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/ObjectKinds.h"

#include <cassert>

namespace {

constexpr int unlearned = -2;

bool isController(const CMIDIBytes* e) {
    return e->kind == eventMidi && statusByte(e->data) == midiController;
}

/// Serves the bindings of the transport.
class TransportBindings {
public:
    TransportBindings(CQV* host, const CMIDIBytes* e)
        : qv(host), number(asByte1(e->data)), value(asByte2(e->data)) {}

    void serve() {
        if (bound(qv->ctrlStart) && value > 0 && !qv->playing) qv->start();
        if (bound(qv->ctrlStop) && value > 0 && qv->playing) qv->stop();
        if (bound(qv->ctrlRewind) && value > 0) qv->setPos(0.0);
        if (bound(qv->ctrlRecord) && (value > 0) != (qv->recording != 0)) qv->rec();
        if (bound(qv->ctrlTempo)) {
            qv->setTempo(float(value * 2));
            qv->setModified();
        }
    }

private:
    /// Whether the binding has this controller; one that learns takes it, and nothing more.
    bool bound(Shared<int>& binding) const {
        if (binding != unlearned) return binding == number;
        binding = number;
        qv->learned = 1;
        qv->setModified();
        return false;
    }

    CQV* qv;
    int number, value;
};

} // namespace

CMapProg* currentMaps(CQV* host) {
    return host->maps.items(host->curMap);
}

void CQV::handleMIDIIn() {
    assert(heldByThread());
    for (CComp* c : comps) {
        CMIDIQ* port = c->type == compMIDIIn ? c->outPort() : nullptr;
        for (CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
            if (e->kind == eventMidi && statusByte(e->data) == midiProgram)
                requestedProgram = asByte1(e->data);
            if (isController(e)) {
                lastCC = e->data;
                TransportBindings(this, e).serve();
            }
            if (e->kind == eventMidi) serveMaps(e);
        }
    }
}

void CQV::serveMaps(CMIDIBytes* e) {
    CMapProg* program = currentMaps(this);
    ControlMove moves[ControlReader::most];
    const int count = deviceMidi->controls.read(e->data, moves);
    if (!program) return;
    for (CMap* map : program->items) {
        for (int i = 0; i < count; i++) map->learn(moves[i]);
        if (!map->target) continue;
        for (int i = 0; i < count; i++) {
            if (map->cc != moves[i].source) continue;
            if (CMIDIQ* queue = queueOfTarget(map->target)) map->serve(queue, moves[i], e->time);
            setModified(); // a controller in the user's hands, unlike those that a song plays
            e->kind = eventConsumed;
        }
    }
}

bool CQV::midiMapped(CComp* c, CMIDIQ* queue, CMIDIBytes* e) {
    assert(heldByThread());
    CMapProg* program = currentMaps(this);
    if (!program || !isController(e)) return false;
    bool consumed = false;
    for (CMap* map : program->items) {
        if (!map->target || (map->target != c && map->comp != c)) continue;
        const ControlMove move{asByte1(e->data), float(asByte2(e->data))};
        if (map->learn(move)) {
            consumed = true;
            setModified();
        }
        if (!queue || map->cc != move.source) continue;
        map->serve(queue, move, e->time);
        consumed = true;
    }
    return consumed;
}

namespace {

CComp* feedingSeq(CObject* target) {
    if (const CComp* whole = asComp(target)) return whole->sourceSeq;
    const CComp* c = nullptr;
    if (const COutputChannel* strip = asStrip(target))
        c = strip->comp;
    else if (const CSend* send = asSend(target))
        c = send->comp;
    return c ? c->sourceSeq.load() : nullptr;
}

bool holds(const COutputChannel* ch, const CObject* target) {
    for (const CSend* send : ch->sendLevels)
        if (send == target) return true;
    return ch->inserts.contains(target);
}

/// Finds the top-level component in `list` that has the map's target as a channel, or within one.
bool findPlace(CMap* map, const ListOf<CComp>& list) {
    for (CComp* c : list) {
        for (COutputChannel* ch : c->outputs) {
            const bool within = holds(ch, map->target);
            if (!within && ch != map->target) continue;
            map->comp = c;
            if (within) map->owner = ch;
            return true;
        }
    }
    return false;
}

CMap* findMap(const CMapProg* program, const CObject* target, int param) {
    for (CMap* map : program->items)
        if (map->target == target && map->param == param) return map;
    return nullptr;
}

/// A row that leads nowhere yet.
CMap* emptyMap(const CMapProg* program) {
    for (CMap* map : program->items)
        if (!map->target) return map;
    return nullptr;
}

} // namespace

void CQV::addMap(CObject* target, int param, float value) {
    setModified();
    paramMoved(target, param, value);
}

void CQV::paramMoved(CObject* target, int param, float value) {
    if (!mapLearn) {
        CComp* seq = recording ? feedingSeq(target) : nullptr;
        if (seq) seq->recParam(target, param, value);
        return;
    }
    CMapProg* program = currentMaps(this);
    if (!program) return;
    if (CMap* known = findMap(program, target, param)) {
        known->learning = true;
        return;
    }
    CMap* empty = emptyMap(program);
    if (program->full() && !empty) return;
    CUndo* step = undoStart("Add", this, {.comp = CompNotice::maps});
    auto* map = new CMap;
    map->target = target;
    map->learning = true;
    if (empty) {
        map->takeRow(*empty);
        step->asRemove(empty, &program->items);
    }
    if (!findPlace(map, comps)) findPlace(map, sends);
    map->param = param;
    step->asAdd(map, &program->items);
    undoEnd(step, true);
}

#include "modular/GraphNames.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/Cables.h"
#include "engine/KeyInput.h"
#include "engine/ObjectKinds.h"
#include "modular/CompGlyphs.h"

namespace {

const CList& listOf(const CComp* comp, PortKind kind) {
    switch (kind) {
    case PortKind::midiIn:
        return comp->inPorts;
    case PortKind::midiOut:
        return comp->outPorts;
    case PortKind::audioIn:
    case PortKind::key:
        return comp->inputs;
    default:
        return comp->outputs;
    }
}

/// "Compressor of Bass" for an insert.
CStr keyedName(const CComp* keyed) {
    const COutputChannel* strip = keyed->ownerChannel;
    return strip ? keyed->id + " of " + stripName(strip) : boxName(keyed);
}

CStr endName(const GraphModel& model, int port) {
    const auto& p = model.ports[size_t(port)];
    CComp* comp = model.boxes[size_t(p.box)].comp;
    if (p.kind == PortKind::key) return "the key of " + keyedName(p.io->comp);
    if (const CComp* track = comp->getComp(p.io)) return track->id;
    const bool several = listOf(comp, p.kind).getCount() > 1;
    return several ? boxName(comp) + ", " + portName(model, port) : boxName(comp);
}

} // namespace

CStr boxName(const CComp* comp) {
    return comp->id.empty() ? CStr(compKindName(comp->type)) : comp->id;
}

CStr portName(const GraphModel& model, int port) {
    const auto& p = model.ports[size_t(port)];
    CComp* comp = model.boxes[size_t(p.box)].comp;
    if (p.kind == PortKind::key) return "key of " + keyedName(p.io->comp);
    const CStr plain = CStr(isMidi(p.kind) ? "MIDI " : "") + (isOutput(p.kind) ? "out" : "in");
    if (const CComp* track = comp->getComp(p.io)) return track->id + " " + plain;
    const CList& list = listOf(comp, p.kind);
    return list.getCount() > 1 ? plain + " " + asStr(list.indexed(p.io) + 1) : plain;
}

CStr fullPortName(const GraphModel& model, int port) {
    const auto& p = model.ports[size_t(port)];
    return boxName(model.boxes[size_t(p.box)].comp) + ", " + portName(model, port);
}

CStr portKindName(const GraphModel::Port& port) {
    if (port.kind == PortKind::key) return "side chain";
    const CStr carried = isMidi(port.kind) ? "MIDI " : port.stereo ? "audio " : "mono audio ";
    return carried + (isOutput(port.kind) ? "output" : "input");
}

CStr cableName(const GraphModel& model, int cable) {
    const auto& c = model.cables[size_t(cable)];
    return endName(model, c.from) + " to " + endName(model, c.to);
}

CStr itemName(const GraphModel& model, const CObject* item) {
    if (const CComp* box = asComp(item)) return boxName(box);
    if (item->category == categoryCable)
        return "the cable " + cableName(model, model.cableOf(item));
    return fullPortName(model, model.portOf(item));
}

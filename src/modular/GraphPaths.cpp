#include "modular/GraphPaths.h"

#include "engine/CComp.h"

bool passes(const GraphModel& model, int in, int out) {
    const auto &from = model.ports[size_t(in)], &to = model.ports[size_t(out)];
    if (from.box != to.box) return false;
    CComp* comp = model.boxes[size_t(from.box)].comp;
    if (from.kind == PortKind::key) {
        const COutputChannel* strip = from.io->comp->ownerChannel;
        return !strip || strip == to.io;
    }
    const CComp* track = comp->getComp(from.io);
    return !track || track == comp->getComp(to.io);
}

GraphPath::GraphPath(const GraphModel& model, const CObject* of)
    : boxes(model.boxes.size()), cables(model.cables.size()), ports(model.ports.size()) {
    if (of->category == categoryCable) {
        const int cable = model.cableOf(of);
        if (cable < 0) return;
        cables[size_t(cable)] = true;
        up(model, model.cables[size_t(cable)].from);
        down(model, model.cables[size_t(cable)].to);
        return;
    }
    const bool whole = of->category == categoryComp;
    const int box = whole ? model.boxOf(of) : -1;
    if (whole && box < 0) return;
    const int port = whole ? -1 : model.portOf(of);
    if (!whole && port < 0) return;
    const int first = whole ? model.boxes[size_t(box)].firstPort : port;
    const int count = whole ? model.boxes[size_t(box)].portCount : 1;
    if (whole) boxes[size_t(box)] = true;
    for (int i = first; i < first + count; i++) {
        const bool output = isOutput(model.ports[size_t(i)].kind);
        // From here on both ways; a port by itself leads through its component as well.
        if (!whole || !output) output ? up(model, i) : down(model, i);
    }
    for (size_t i = 0; i < model.cables.size(); i++) {
        const auto& cable = model.cables[i];
        if (cable.to >= first && cable.to < first + count) {
            cables[i] = true;
            up(model, cable.from);
        }
        if (cable.from >= first && cable.from < first + count) {
            cables[i] = true;
            down(model, cable.to);
        }
    }
}

/// From an output against the flow.
void GraphPath::up(const GraphModel& model, int port) {
    if (ports[size_t(port)]) return;
    ports[size_t(port)] = true;
    boxes[size_t(model.ports[size_t(port)].box)] = true;
    for (size_t i = 0; i < model.cables.size(); i++) {
        const auto& cable = model.cables[i];
        if (!passes(model, cable.to, port)) continue;
        cables[i] = true;
        up(model, cable.from);
    }
}

/// From an input with the flow.
void GraphPath::down(const GraphModel& model, int port) {
    if (ports[size_t(port)]) return;
    ports[size_t(port)] = true;
    boxes[size_t(model.ports[size_t(port)].box)] = true;
    for (size_t i = 0; i < model.cables.size(); i++) {
        const auto& cable = model.cables[i];
        if (!passes(model, port, cable.from)) continue;
        cables[i] = true;
        down(model, cable.to);
    }
}

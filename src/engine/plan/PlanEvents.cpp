#include "engine/plan/PlanEvents.h"

#include "engine/CComp.h"
#include "engine/StripEvents.h"
#include "engine/plan/GraphPlan.h"

void PlanEvents::hold(int delay) {
    for (const auto& [port, line] : ports) {
        for (const CMIDIBytes* e = port->first(); e; e = e->next) line->take(*e, delay);
        port->clear();
    }
}

void PlanEvents::serve(int frames) {
    for (const auto& [port, line] : ports) line->serve(port, frames);
}

void PlanEvents::serveStrips(const PlanNode& node, const PlanLatency& latency, int frames) {
    due.clear();
    CMIDIQ* port = node.comp->inPort();
    for (const CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
        if (e->kind != eventParam) continue;
        const StripTarget target = stripTarget(node.comp, e->owner);
        if (!target) continue;
        const PlanOrigin* strip =
            latency.originOf(target.channel ? target.channel : target.send->channel);
        strips->take(*e, strip ? strip->latency - node.eventLatency() : 0);
    }
    strips->serve(&due, frames);
}

void PlanEvents::follow(const PlanEvents& before) {
    for (Port& p : ports)
        for (const Port& had : before.ports)
            if (had.port == p.port) p.line = had.line;
    if (strips && before.strips) strips = before.strips;
}

void PlanEvents::clear() {
    for (const Port& p : ports) p.line->clear();
    if (strips) strips->clear();
}

#include "engine/plan/PlanLoop.h"

#include "engine/CQV.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>

void PlanLoop::addMember(PlanNode* node, const std::vector<COutputChannel*>& channels,
                         const std::vector<CInputChannel*>& inputs) {
    nodes.push_back(node);
    for (COutputChannel* ch : channels) buffers.push_back({ch->bufL, ch->bufR});
    for (CInputChannel* ch : inputs) buffers.push_back({ch->bufL, ch->bufR});
}

void PlanLoop::carry(PlanArrival* arrival, int frames) {
    arrival->carried = std::make_shared<CInputChannel>(nullptr);
    arrival->carried->createBuffers(frames);
    buffers.push_back({arrival->carried->bufL, arrival->carried->bufR});
    carried.push_back(arrival);
}

bool PlanLoop::has(const PlanNode* node) const {
    return std::ranges::find(nodes, node) != nodes.end();
}

void PlanLoop::run(const GraphPlan& plan, CQV* host, int frames) {
    begin(host, frames);
    for (int done = 0, n = 0; done < frames; done += n) {
        n = std::min(LoopLine::delay, frames - done);
        enter(done, n);
        for (PlanStep& step : steps) plan.runStep(step, n);
        leave(done, n);
        move(n);
    }
    end(frames);
}

void PlanLoop::begin(CQV* host, int frames) {
    for (const PlanArrival* a : carried)
        for (float* side : {a->carried->bufL, a->carried->bufR}) std::fill_n(side, frames, 0.0f);
    for (PlanNode* node : nodes) {
        for (PlanArrival& a : node->arrivals)
            if (a.outside) a.addTo(node->comp->input(), frames, host->scratch());
        for (PlanArrival& key : node->keys)
            if (key.outside) key.bring(frames, host->scratch());
    }
    for (const Port& p : ports) {
        if (p.out)
            p.whole->clear();
        else
            p.whole->copyEvents(p.port);
    }
}

void PlanLoop::enter(int done, int frames) {
    for (PlanNode* node : nodes) {
        CComp* c = node->comp;
        node->offset = done;
        if (node->part && done > 0) c->prepare(frames);
        c->processed = c->mixed = c->fxDone = false;
    }
    for (const Port& p : ports) {
        p.port->clear();
        if (p.out) continue;
        for (const CMIDIBytes* e = p.whole->first(); e; e = e->next)
            if (e->time >= done && e->time < done + frames)
                p.port->push(e->time - done, e->data, e->kind, e->value, e->param, e->owner,
                             e->extra);
    }
}

void PlanLoop::leave(int done, int frames) {
    for (const PlanArrival* a : closings)
        a->loop->write(a->from->fromChannel->bufL, a->from->fromChannel->bufR, frames);
    for (PlanArrival* a : carried) a->feed(a->carried.get(), frames);
    for (const Port& p : ports) {
        if (!p.out) continue;
        for (const CMIDIBytes* e = p.port->first(); e; e = e->next)
            p.whole->push(e->time + done, e->data, e->kind, e->value, e->param, e->owner, e->extra);
    }
}

void PlanLoop::move(int frames) {
    for (const Sides& sides : buffers) {
        sides.left += frames;
        sides.right += frames;
    }
}

void PlanLoop::end(int frames) {
    move(-frames);
    for (PlanNode* node : nodes) node->offset = 0;
    for (const Port& p : ports) p.port->copyEvents(p.whole.get());
}

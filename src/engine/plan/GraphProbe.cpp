#include "engine/plan/GraphProbe.h"

#include "base/Delegates.h"
#include "engine/CQV.h"
#include "engine/plan/GraphPlan.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace {

constexpr size_t spare = 64; ///< places, for what comes while a question is on its way
constexpr double nsPerSecond = 1e9;

/// The song, for a track, whose ports are the song's.
const CComp* shownAs(CComp* comp) {
    if (comp->type != compTrack) return comp;
    const CIO* port = comp->inPort();
    if (!port) port = comp->output();
    return port ? port->comp : comp;
}

} // namespace

/// The interface thread makes the room, and the graph holder fills it in.
class GraphProbe::Answer {
public:
    struct Step {
        const CComp *comp, *owner;
        float mean;
        unsigned worst;
    };
    struct Cable {
        const CObject* cable;
        Delay delay;
    };

    Answer(size_t steps, size_t cables) {
        works.reserve(steps);
        delays.reserve(cables);
    }

    /// Graph holder: takes no memory, and leaves out what finds no room.
    void fill(CQV* host) {
        assert(host->heldByThread());
        for (const PlanStep& step : host->plans->current().allSteps())
            if (works.size() < works.capacity())
                works.push_back(
                    {step.node->comp, shownAs(step.node->comp), step.times.mean, step.times.worst});
        for (const auto& meeting : host->plans->current().latency().all())
            for (const PlanArrival* a : meeting.arrivals)
                if (a->from && (a->origin || a->loop) && delays.size() < delays.capacity())
                    delays.push_back(
                        {a->from,
                         {a->origin ? a->origin->latency : 0,
                          a->loop ? LoopLine::delay : a->delay(), a->loop != nullptr}});
        done.storeRelease(true);
    }

    std::vector<Step> works;
    std::vector<Cable> delays;
    Shared<bool> done{false};
};

GraphProbe::GraphProbe(CQV* host) : qv(host) {
}

GraphProbe::~GraphProbe() = default;

namespace {

template <class T>
class FillAnswer : public COnChange {
public:
    FillAnswer(CQV* root, std::shared_ptr<T> of) : host(root), answer(std::move(of)) {}
    void operator()(CObject*) override { answer->fill(host); }

private:
    CQV* host;
    std::shared_ptr<T> answer; ///< the task is freed by the interface thread
};

} // namespace

void GraphProbe::ask() {
    if (answer || qv->tasks->full()) return;
    size_t cables = spare, steps = spare;
    for (const auto* list : listsOf(qv->comps, qv->sends))
        for (const auto* comp : *list) {
            cables += size_t(comp->audioCables.getCount());
            // A song has a few steps for each track, and a track a port of its own.
            steps += 4 + 4 * size_t(comp->inPorts.getCount() + comp->outputs.getCount());
        }
    answer = std::make_shared<Answer>(steps, cables);
    if (!qv->addTask(new FillAnswer<Answer>(qv, answer), nullptr)) answer.reset();
}

bool GraphProbe::take() {
    if (!answer || !answer->done.loadAcquire()) return false;
    work.clear();
    delays.clear();
    const auto add = [this](const CComp* comp, const Answer::Step& step) {
        Work& sum = work[comp];
        sum.mean += step.mean;
        sum.worst += step.worst;
    };
    for (const Answer::Step& step : answer->works) {
        add(step.comp, step);
        if (step.owner != step.comp) add(step.owner, step);
    }
    for (const Answer::Cable& cable : answer->delays) delays[cable.cable] = cable.delay;
    answer.reset();
    blockTime = double(qv->frames) / double(qv->rate) * nsPerSecond;
    return true;
}

GraphProbe::Work GraphProbe::workOf(const CObject* comp) const {
    const auto found = work.find(comp);
    return found == work.end() ? Work() : found->second;
}

GraphProbe::Delay GraphProbe::delayOf(const CObject* cable) const {
    const auto found = delays.find(cable);
    return found == delays.end() ? Delay() : found->second;
}

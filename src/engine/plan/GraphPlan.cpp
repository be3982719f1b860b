#include "engine/plan/GraphPlan.h"

#include "base/Numbers.h"
#include "common/Silence.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/ForgetHooks.h"
#include "engine/Mixing.h"
#include "engine/plan/AheadWork.h"
#include "engine/plan/GraphWorkers.h"
#include "engine/plan/InsertRun.h"
#include "engine/plan/PlanBuilder.h"
#include "engine/plan/PlanLoop.h"
#include "engine/plan/Upstream.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <tuple>
#include <utility>

namespace {

/// Of so many blocks one is measured while a thread works alone: the clock costs as much as an
/// empty step.
constexpr unsigned measuredBlocks = 8;

} // namespace

int pieceStart(const CComp* c) {
    if (const COutputChannel* of = c->ownerChannel; of && of->comp) c = of->comp;
    return c->planned ? c->planned->offset : 0;
}

PlanNode::PlanNode(CComp* c) : comp(c) {
}

PlanNode::~PlanNode() = default;

CMIDIBytes* PlanNode::stripEvents() const {
    if (events && events->strips) return events->dueAtStrips();
    CMIDIQ* port = comp->inPort();
    return port ? port->first() : nullptr;
}

void PlanNode::takeKeys(bool ofInserts, int frames, GraphScratch& scratch) {
    for (PlanArrival& key : keys)
        if (!key.outside && (key.insert != nullptr) == ofInserts) key.bring(frames, scratch);
}

void PlanNode::findSilence(int frames) {
    const auto silent = [&](const COutputChannel* ch) {
        return isSilent(ch->bufL, ch->bufR, frames);
    };
    silence = std::ranges::all_of(comp->outputs, silent) ? frames : 0;
}

void PlanNode::fillTaps(int frames) {
    for (const auto& [strip, sound] : taps) {
        std::copy_n(strip->bufL, frames, sound->bufL);
        std::copy_n(strip->bufR, frames, sound->bufR);
    }
}

void PlanNode::makeSound(int frames, GraphScratch& scratch) {
    DelayLine* const line = own ? own->line.get() : nullptr;
    const COutputChannel* ch = comp->output();
    if (!line || line->idle() || !ch) {
        if (line) line->skip();
        return comp->sound(frames);
    }
    std::copy_n(ch->bufL, frames, scratch.arrival.bufL);
    std::copy_n(ch->bufR, frames, scratch.arrival.bufR);
    for (float* side : {ch->bufL, ch->bufR}) std::fill_n(side, frames, 0.0f);
    comp->sound(frames);
    line->process(ch->bufL, ch->bufR, ch->bufL, ch->bufR, frames);
    addScaled(ch->bufL, scratch.arrival.bufL, frames, 1.0f);
    addScaled(ch->bufR, scratch.arrival.bufR, frames, 1.0f);
}

GraphPlan::GraphPlan(CQV* root) : host(root), madeFor(root->frames) {
}

GraphPlan::~GraphPlan() = default;

void GraphPlan::keepChannels() {
    for (PlanNode* node : clearing) node->comp->planned = node;
}

void GraphPlan::endKeeping() {
    for (PlanNode* node : clearing) node->comp->planned = nullptr;
}

void GraphPlan::prepareLeaving(int frames) {
    if (!passing) return;
    for (const auto& node : nodes)
        if (node->leaving && !node->ended) node->comp->prepare(frames);
}

void GraphPlan::beginFades(int frames) {
    eachArrival([&](PlanArrival& a) {
        if (a.last) a.last->take(frames, host->scratch());
    });
    for (const CAudioCable* cable : coming) cable->gate = PlanFade::still(true);
}

void GraphPlan::run(int frames) {
    if (host->workers->helpWith(*this, frames))
        host->workers->run(*this, frames);
    else if (host->blocks % measuredBlocks == 0)
        runMeasured(frames);
    else if (anyAhead)
        runByLevels(frames);
    else
        for (size_t i = 0; i < late; ++i) runStep(steps[i], frames);
    lateness.finishOuts(frames);
    heard = true;
}

void GraphPlan::runMeasured(int frames) {
    StopWatch watch;
    unsigned all = 0;
    int first = 0;
    for (const int end : ends) {
        beginLevel(first, frames);
        all += watch.lap();
        for (; first < end; ++first) all += runTurn(unsigned(first), frames);
        watch.lap();
    }
    times.note(all);
}

/// Where a step stands in its level: what has others work comes first, what waits for them last.
int GraphPlan::waitOf(const PlanStep& step) const {
    if (step.ahead || step.work & PlanStep::goOn) return 2;
    if (step.work & PlanStep::begin) return 0;
    return step.work & PlanStep::strip && step.node->strips ? 2 : 1;
}

void GraphPlan::findOrder() {
    order.resize(late);
    std::iota(order.begin(), order.end(), 0u);
    for (PlanStep& step : steps)
        if (step.work & PlanStep::render && !step.loop)
            step.ahead = dynamic_cast<AheadWork*>(step.node->comp);
    findClearing();
    anyAhead = std::ranges::any_of(
        steps, [](const PlanStep& step) { return step.ahead || step.node->strips; });
    std::ranges::stable_sort(order, {}, [this](unsigned i) {
        return std::tuple(steps[i].level, waitOf(steps[i]), leaderOf(i));
    });
    findTurns();
}

/// What begins ahead takes in sound before its step.
void GraphPlan::findClearing() {
    for (PlanStep& step : steps) {
        if (step.node->leaving || step.ahead) step.work &= ~unsigned(PlanStep::clear);
        if (!(step.work & PlanStep::clear)) continue;
        step.node->clears = true;
        clearing.push_back(step.node);
    }
}

/// Levels of one turn each are one turn together: nobody waits between them.
void GraphPlan::findTurns() {
    bool single = false; // the level before
    for (size_t i = 0; i < late;) {
        const int level = steps[order[i]].level;
        const size_t first = begins.size();
        bool ahead = false;
        for (size_t leader = late; i < late && steps[order[i]].level == level; ++i) {
            if (leader != leaderOf(order[i])) begins.push_back(unsigned(i));
            leader = leaderOf(order[i]);
            ahead = ahead || steps[order[i]].ahead;
        }
        const int width = int(begins.size() - first);
        if (width == 1 && single && !ahead)
            begins.pop_back();
        else
            ends.push_back(int(begins.size()));
        single = width == 1 && !ahead;
        mostOfLevel = std::max(mostOfLevel, width);
    }
    begins.push_back(unsigned(late));
}

int GraphPlan::endOfLevelAfter(int turn) const {
    return *std::ranges::upper_bound(ends, turn);
}

void GraphPlan::beginLevel(int first, int frames) {
    if (!anyAhead || first >= turns()) return;
    const size_t end = begins[size_t(endOfLevelAfter(first))];
    for (size_t i = begins[size_t(first)]; i < end; ++i) {
        const PlanStep& step = steps[order[i]];
        if (!step.ahead || step.leftOut) continue;
        step.node->comp->planned = step.node;
        step.ahead->beginAhead(frames);
        step.node->comp->planned = nullptr;
    }
}

void GraphPlan::runByLevels(int frames) {
    int first = 0;
    for (const int end : ends) {
        beginLevel(first, frames);
        for (size_t i = begins[size_t(first)]; i < begins[size_t(end)]; ++i)
            runStep(steps[order[i]], frames);
        first = end;
    }
}

unsigned GraphPlan::runTurn(unsigned turn, int frames) {
    unsigned all = 0;
    StopWatch watch;
    for (size_t i = begins[turn]; i < begins[turn + 1]; ++i) {
        PlanStep& step = steps[order[i]];
        runStep(step, frames);
        const unsigned ns = watch.lap();
        step.times.note(ns);
        all += ns;
    }
    return all;
}

void GraphPlan::runLate(int frames) {
    for (size_t i = late; i < steps.size(); ++i) runStep(steps[i], frames);
}

bool GraphPlan::takesInBus(const Upstream& upstream) const {
    return std::ranges::any_of(host->sends, [&](const CComp* bus) { return upstream.has(bus); });
}

void GraphPlan::keepTo(const std::vector<COutputChannel*>& channels) {
    std::vector<Upstream> kept;
    for (const COutputChannel* ch : channels) {
        kept.emplace_back(stripOwner(ch), ListReader());
        if (ch->comp->type != compAudioOut && !takesInBus(kept.back())) continue;
        kept.clear();
        break;
    }
    const auto needed = [&kept](const PlanStep& step) {
        const CComp* c = step.node->comp;
        const auto takesIn = [c](const Upstream& upstream) { return upstream.has(c); };
        return kept.empty() || c->type == compSeq || std::ranges::any_of(kept, takesIn);
    };
    for (PlanStep& step : steps) {
        const auto inner = stepsWithin(step);
        step.leftOut = inner.empty() ? !needed(step) : std::ranges::none_of(inner, needed);
    }
}

void GraphPlan::runStep(PlanStep& step, int frames) const {
    if (step.work & PlanStep::clear) clearChannels(*step.node->comp, frames);
    if (step.leftOut) return;
    if (step.loop) return step.loop->run(*this, host, frames);
    if (step.node->ended) return;
    CComp* c = step.node->comp;
    c->planned = step.node;
    step.node->silence = 0;
    if (step.work & PlanStep::sum)
        for (PlanArrival& sum : step.sums) sum.addTo(nullptr, frames, host->scratch());
    if (step.work & PlanStep::gather)
        for (int i = 0; i < step.node->gathered; ++i)
            step.node->arrivals[size_t(i)].addTo(c->input(), frames, host->scratch());
    if (step.work & PlanStep::render) {
        step.node->takeKeys(false, frames, host->scratch());
        c->process(frames);
    }
    if (step.work & PlanStep::sound) step.node->makeSound(frames, host->scratch());
    runStrips(step, frames);
    c->planned = nullptr;
}

void GraphPlan::runStrips(const PlanStep& step, int frames) const {
    PlanNode& node = *step.node;
    const bool noMaster = host->renderMode != 0 && (host->renderMode != 1 || host->renderDry);
    const bool last = step.work & PlanStep::strip || (step.work & PlanStep::master && !noMaster);
    const bool first = step.work & PlanStep::begin || (last && !node.strips);
    if (first) node.takeKeys(true, frames, host->scratch());
    if (step.work & PlanStep::begin) node.strips->begin(node.comp, frames);
    if (step.work & PlanStep::goOn) node.strips->goOn();
    if (!last) return;
    if (node.strips)
        node.strips->finish();
    else
        node.comp->fx(frames);
    if (step.work & PlanStep::strip) node.findSilence(frames);
    node.fillTaps(frames);
    node.comp->mix(frames);
}

std::span<PlanStep> GraphPlan::stepsWithin(PlanStep& step) {
    if (!step.loop) return {};
    return step.loop->steps;
}

bool GraphPlan::fresh() const {
    return madeFor == host->frames && std::ranges::none_of(sources, &PlanSource::changed);
}

bool GraphPlan::workOutLatency() {
    latencyKnown = true;
    return lateness.workOut(host->framesInMs * PlanFade::ms);
}

bool GraphPlan::leadsAs(const GraphPlan& other) const {
    if (!lateness.hasInsertsOf(other.lateness)) return false;
    std::unordered_map<const CComp*, const std::vector<const CAudioCable*>*> others;
    for (const auto& node : other.nodes)
        if (!node->cables.empty()) others[node->comp] = &node->cables;
    for (const auto& node : nodes) {
        if (node->cables.empty()) continue;
        const auto found = others.find(node->comp);
        if (found == others.end() || *found->second != node->cables) return false;
        others.erase(found);
    }
    return others.empty();
}

bool GraphPlan::dependsOn(const PlanLists& lists) const {
    return std::ranges::any_of(sources, [&](const auto& s) { return lists.changes(s.list); });
}

bool GraphPlan::confirm() {
    return madeFor == host->frames && std::ranges::all_of(sources, &PlanSource::confirm);
}

void GraphPlans::refresh() {
    assert(host->heldByThread());
    if (now && now->fresh() && !linesWanted) return;
    linesWanted = false;
    replace();
}

SongTime GraphPlans::timeNow() const {
    CComp* const seq = host->masterSeq;
    return {seq ? seq->getPos() : double(host->pos), host->tempoNow, host->playing != 0};
}

void GraphPlans::noteTime(int frames) {
    blockFrames = frames;
    framesSince = framesSince + unsigned(frames);
    times.note(timeNow(), frames);
}

SongTime GraphPlans::timeOf(const CComp* comp) const {
    const PlanNode* node = comp->planned;
    return timeBefore(node ? node->latency - node->offset : now->latency().latencyAt(comp));
}

int GraphPlans::latencyAt(const CObject* target) const {
    if (total == 0) return 0;
    const GraphHold hold(host);
    return now->latency().latencyAt(target);
}

SongTime GraphPlans::timeBefore(int frames) const {
    if (times.empty()) return timeNow();
    return times.before(frames, host->framesToTicks(1.0) / double(host->tempoNow));
}

void GraphPlans::followLatency(bool changed) {
    if (!changed && !now->latencyUnknown()) return;
    linesWanted = !now->workOutLatency();
    if (linesWanted && !insideCallback()) {
        refresh();
        now->workOutLatency();
    }
    total = now->latency().total();
    host->click->setLatency(total, host->framesInMs * PlanFade::ms);
}

void GraphPlans::prepare(const UndoPlan& step, bool first) {
    PlanLists lists(host, step, first);
    next = nullptr; // of a step that did not come to pass: no thread has seen it
    withFades = nullptr;
    if (now && !now->dependsOn(lists)) return;
    next = PlanBuilder(host, lists, now.get()).build();
    if (now && (now->isPassing() || !next->leadsAs(*now)))
        withFades = PlanBuilder(host, std::move(lists), now.get(), next.get()).build();
}

void GraphPlans::adopt() {
    assert(host->heldByThread());
    const bool heard = insideCallback();
    std::unique_ptr<GraphPlan>& made = heard && withFades ? withFades : next;
    if (!made || !made->confirm()) return;
    std::swap(now, made);
    framesSince = 0;
    if (heard)
        now->beginFades(blockFrames);
    else
        now->latency().settleFades();
}

void GraphPlans::endFades() {
    if (now->isPassing()) replace();
}

void GraphPlans::replace() {
    auto made = PlanBuilder(host, PlanLists(), now.get()).build();
    if (now) host->workers->settle();
    withFades = nullptr; // it knows what is about to be freed
    now = std::move(made);
}

bool GraphPlans::fading() const {
    return now->isPassing() && host->tasks->blocksComing();
}

/// An insert that is moved falls and rises, and begins to rise with a block.
void GraphPlans::idle() {
    if (linesWanted) const GraphHold hold(host); // which makes them at its end
    if (host->stepOnItsWay() || !now->isPassing()) return;
    const int longest = 3 * fadeFrames(host) + 2 * host->frames;
    if (fading() && framesSince < unsigned(longest)) return;
    auto made = PlanBuilder(host, PlanLists(), now.get()).build();
    const GraphHold hold(host);
    if (!made->fresh()) return; // something has changed meanwhile, and is looked at by the hold
    host->workers->settle();
    std::swap(now, made);
}

void GraphPlan::forget(const ForgetSet& gone) {
    eachArrival([&gone](PlanArrival& a) {
        const CComp* from = a.sender ? a.sender->comp : nullptr;
        if (a.leaving && (gone.has(a.from) || gone.has(from))) a.ended = true;
    });
    lateness.forget(gone);
    for (const auto& node : nodes) {
        if (node->leaving && gone.has(node->comp)) node->ended = true;
        if (node->events) node->events->clear(); // they may be about what goes
    }
}

void GraphPlans::forget(const ForgetSet& gone) {
    assert(host->heldByThread());
    for (GraphPlan* plan : {now.get(), next.get(), withFades.get()})
        if (plan) plan->forget(gone);
}

void GraphPlans::settle() {
    if (next) host->workers->settle();
    next = nullptr;
    withFades = nullptr;
    if (now && now->fresh()) return;
    const GraphHold hold(host); // which looks for changes at its end
}

#include "engine/plan/PlanBuilder.h"

#include "engine/CQV.h"
#include "engine/plan/AheadWork.h"
#include "engine/plan/InsertRun.h"
#include "engine/plan/PlanLoop.h"

#include <algorithm>
#include <utility>

namespace {

/// Cables that an out takes in at once, as long as what they bring is in the processor's cache.
constexpr size_t sumsAtOnce = 8;
/// Sends that are worth a step of their own.
constexpr int fewestGathered = 8;

} // namespace

PlanBuilder::PlanBuilder(CQV* root, PlanLists wanted, const GraphPlan* before,
                         const GraphPlan* plain)
    : host(root), lists(std::move(wanted)), plan(std::make_unique<GraphPlan>(root)) {
    if (!before) return;
    plan->heard = before->heard.load();
    for (const auto& meeting : before->lateness.all())
        for (const PlanArrival* arrival : meeting.arrivals) {
            lines[keyOf(*arrival)] = arrival->line;
            if (arrival->loop) loopLines[arrival->from] = arrival->loop;
        }
    for (const auto& end : before->lateness.ends()) endLines[end.out->channel] = end.line;
    insertLines = before->lateness.lateInserts();
    for (const auto& node : before->nodes)
        if (node->events && !node->ended) formerEvents[node->comp] = node->events.get();
    if (!plain) return;
    formerLatency = &before->lateness;
    for (const auto& node : before->nodes)
        if (!node->ended) former[node->comp] = node.get();
    const auto know = [this](const PlanArrival& a) {
        if (a.kind != PlanArrival::cable) return;
        if (!a.leaving)
            broughtBefore[a.from] = &a;
        else if (!a.ended && !*a.silent)
            goingBefore[a.at->comp].push_back(&a);
    };
    for (const auto& node : before->nodes) std::ranges::for_each(node->arrivals, know);
    for (const PlanStep& step : before->steps) {
        std::ranges::for_each(step.sums, know);
        if (!step.loop) continue;
        for (const PlanStep& inner : step.loop->steps) std::ranges::for_each(inner.sums, know);
    }
    for (const auto& node : plain->nodes) staying.insert(node->comp);
}

const std::vector<CObject*>& PlanBuilder::read(const CList& list) {
    const auto [entry, fresh] = contentsOf.try_emplace(&list);
    if (fresh) {
        entry->second = lists.of(list);
        if (!offGraph) plan->sources.emplace_back(list, entry->second);
    }
    return entry->second;
}

PlanBuilder::Place& PlanBuilder::place(CComp* c) {
    Place& p = places[c];
    if (!p.node) p.node = plan->nodes.emplace_back(std::make_unique<PlanNode>(c)).get();
    return p;
}

ListKind PlanBuilder::kindOf(CComp* c) {
    if (std::ranges::find(buses, c) != buses.end()) return listSends;
    return listComps;
}

std::unique_ptr<GraphPlan> PlanBuilder::build() {
    comps = contents(host->comps);
    buses = contents(host->sends);
    place(host).busy = true;
    findRings();
    std::vector<CComp*> outs;
    for (CComp* c : comps)
        if (c->type == compAudioOut) outs.push_back(c);
    for (CComp* out : outs) takeSources(out, listComps);
    for (CComp* bus : buses) needKeys(bus); // what they are keyed by may send to them
    for (CComp* out : outs) takeEarlyLeaving(out);
    for (CComp* out : outs) takeSources(out, listSends);
    for (CComp* out : outs) takeLeaving(out);
    for (CComp* c : comps) {
        if (c->type == compMIDIOut) need(c);
        if (c->type == compAudioOut) finishOut(c);
    }
    for (CComp* out : outs) flushSums(out);
    plan->late = plan->steps.size();
    for (CComp* c : comps)
        if (c->type == compSeq) need(c);
    plan->findOrder();
    linkLatency();
    return std::move(plan);
}

void PlanBuilder::takeSources(CComp* out, ListKind kind) {
    bool& taken = kind == listSends ? place(out).busesTaken : place(out).sourcesTaken;
    if (std::exchange(taken, true)) return;
    for (const auto* cable : contents(out->audioCables)) {
        CComp* from = cable->fromComp;
        if (from->type == compAudioOut || kindOf(from) != kind || sameRing(from, out)) continue;
        need(from);
        stripsOf(from);
        place(out).node->cables.push_back(cable);
        place(out).sums.push_back(arrivalOf(out, cable));
        if (place(out).sums.size() == sumsAtOnce) flushSums(out);
    }
}

void PlanBuilder::finishOut(CComp* out) {
    if (place(out).busy) return;
    if (!place(out).rendered && !ringOf.contains(out)) {
        place(out).busy = true;
        for (const auto* cable : contents(out->audioCables)) {
            if (cable->fromComp->type != compAudioOut) continue;
            finishOut(cable->fromComp);
            if (!place(cable->fromComp).rendered) continue;
            place(out).node->cables.push_back(cable);
            place(out).sums.push_back(arrivalOf(out, cable));
        }
        place(out).busy = false;
    }
    need(out);
    planMaster(out);
}

void PlanBuilder::planMaster(CComp* out) {
    if (place(out).stripped) return;
    place(out).stripped = true;
    needKeys(out);
    const auto channels = contents(out->outputs);
    makes(out);
    takeKeys(out);
    add(out, PlanStep::master, {channels.begin(), channels.end()});
    feedBuses(place(out).node, PlanArrival::strips);
}

void PlanBuilder::need(CComp* c) {
    if (place(c).busy || place(c).rendered) return;
    if (const auto ring = ringOf.find(c); ring != ringOf.end() && !ringOpen)
        return planRing(rings[ring->second]);
    place(c).busy = true;
    needKey(c, c);
    gather(c);
    c->planRender(*this);
    place(c).busy = false;
    place(c).rendered = true;
}

/// What many strips send to a bus is added in a step of its own, which waits for no other bus.
void PlanBuilder::gather(CComp* bus) {
    if (bus->type != compGroupCh || kindOf(bus) != listSends || ringOpen) return;
    PlanNode* node = place(bus).node;
    const auto ofBus = [this](const PlanArrival& a) {
        return !a.sender || kindOf(a.sender->comp) == listSends;
    };
    const auto first = std::ranges::find_if(node->arrivals, ofBus);
    if (first - node->arrivals.begin() >= fewestGathered) {
        node->gathered = int(first - node->arrivals.begin());
        const auto inputs = contents(bus->inputs);
        add(bus, PlanStep::gather, {inputs.begin(), inputs.end()});
    }
}

void PlanBuilder::stripsOf(CComp* c) {
    c->planStrip(*this);
    place(c).stripped = true;
}

void PlanBuilder::needMidi(CComp* c) {
    PlanNode* node = place(c).node;
    node->takesMidi = ++depth <= maxPullDepth;
    for (auto* cable : contents(c->midiCables)) {
        if (!node->takesMidi || !cable->toPort) continue;
        const bool cut = !cable->fromComp || place(cable->fromComp).busy;
        if (!cut) {
            need(cable->fromComp);
            if (cable->fromPort) listen(c, cable->fromPort);
        }
        CComp* from = cable->fromComp;
        if (from && from->type == compSeq)
            if (CComp* part = from->getComp(cable->fromPort)) from = part;
        node->midi.push_back({cable, cut, cut ? nullptr : place(from).node});
    }
    --depth;
}

void PlanBuilder::needAudio(CComp* c) {
    if (++depth <= maxPullDepth) {
        for (const auto* cable : contents(c->audioCables)) {
            CComp* from = cable->fromComp;
            if (!from) continue;
            if (place(from).busy) {
                if (sameRing(from, c)) place(c).node->arrivals.push_back(closingOf(c, cable));
                continue;
            }
            need(from);
            stripsOf(from);
            place(c).node->cables.push_back(cable);
            place(c).node->arrivals.push_back(arrivalOf(c, cable));
            place(c).reads.push_back(cable->fromChannel);
        }
        takeLeavingInto(c);
    }
    --depth;
}

void PlanBuilder::listen(CComp* c, const CMIDIQ* port) {
    if (ringOpen) heardOutside.push_back(port);
    place(c).reads.push_back(port);
}

void PlanBuilder::render(CComp* c) {
    plan->lateness.meetingAt(place(c).node);
    Place& p = place(c);
    p.reads.insert(p.reads.end(), p.readsOfBuses.begin(), p.readsOfBuses.end());
    p.readsOfBuses.clear();
    if (c->type == compAudioOut) flushSums(c);
    std::vector<const void*> writes;
    for (const CList* list : listsOf(c->outputs, c->outPorts, c->inPorts))
        for (const CObject* io : read(*list)) writes.push_back(io);
    if (c->type == compAudioOut)
        for (const CObject* in : read(c->inputs)) place(c).reads.push_back(in);
    takeKey(c, c, nullptr);
    add(c, PlanStep::render, writes);
}

void PlanBuilder::sound(CComp* part, CComp* whole,
                        const std::vector<const COutputChannel*>& others) {
    place(part).reads.push_back(place(whole).node);
    std::vector<const void*> writes(others.begin(), others.end());
    for (const CObject* ch : read(part->outputs)) writes.push_back(ch);
    add(part, PlanStep::sound, writes);
    makes(part);
    PlanNode* node = place(part).node;
    node->part = true;
    const auto ports = contents(part->inPorts);
    for (const auto& [cable, cut, from] : place(whole).node->midi)
        if (from && std::ranges::find(ports, cable->toPort) != ports.end())
            node->players.push_back(from);
    if (!place(part).parts)
        place(part).parts = plan->lateness.addOrigin({part, nullptr, node, {}}, node);
    node->own = std::make_unique<PlanArrival>(PlanArrival{PlanArrival::own, nullptr, node});
    node->own->at = node;
    feedBuses(place(part).node, PlanArrival::parts);
}

void PlanBuilder::note(CComp* part, const PartWords& words) {
    place(part).node->words = words;
}

void PlanBuilder::strip(CComp* c) {
    if (place(c).stripped) return;
    place(c).stripped = true;
    needKeys(c);
    makes(c);
    takeKeys(c);
    const auto channels = contents(c->outputs);
    const std::vector<const void*> writes(channels.begin(), channels.end());
    const int ahead = beginAhead(c);
    for (int i = 0; i < ahead; ++i)
        add(c, i == 0 ? PlanStep::begin : PlanStep::goOn, writes, i > 0);
    add(c, PlanStep::strip, writes, ahead > 0);
    feedBuses(place(c).node, PlanArrival::strips);
    place(c).leftStrip = true;
}

/// The most inserts of a strip of `c` that begin ahead. What is a loop is done piece by piece.
int PlanBuilder::beginAhead(CComp* c) {
    if (ringOpen) return 0;
    std::vector<AheadInsert> found;
    size_t most = 0;
    const auto strips = contents(c->outputs);
    for (const auto* strip : strips) {
        const PlanOrigin* origin = plan->lateness.originOf(strip);
        const size_t before = found.size();
        for (const PlanInsert& insert : origin ? origin->inserts : std::vector<PlanInsert>())
            if (auto* work = dynamic_cast<AheadWork*>(insert.comp); work && work->worksElsewhere())
                found.push_back({insert.comp, work});
        most = std::max(most, found.size() - before);
    }
    if (most > 0)
        place(c).node->strips = std::make_unique<AheadStrips>(std::move(found), strips.size());
    return int(most);
}

/// A channel of a part is told by the component that has its parts.
void PlanBuilder::makes(CComp* c) {
    PlanNode* node = place(c).node;
    plan->lateness.meetingAt(node);
    for (auto* ch : contents(c->outputs)) {
        if (plan->lateness.originOf(ch)) continue;
        PlanOrigin origin{ch->comp, ch, node, {}};
        for (CComp* insert : contents(ch->inserts)) origin.inserts.push_back({insert});
        fadeInserts(origin);
        plan->lateness.addOrigin(std::move(origin), node);
    }
}

PlanArrival PlanBuilder::arrivalOf(CComp* c, const CAudioCable* cable) {
    CComp* const part = c->type == compSeq ? c->getComp(cable->toChannel) : nullptr;
    PlanArrival arrival{PlanArrival::cable, cable};
    beginFade(c, cable);
    arrival.at = place(part ? part : c).node;
    return arrival;
}

PlanArrival PlanBuilder::sendOf(const PlanNode* from, PlanArrival::Kind kind, int channel,
                                int bus) {
    PlanArrival arrival{kind, nullptr, from, bus, channel};
    arrival.at = place(buses[size_t(bus)]).node;
    if (kind == PlanArrival::strips) beginFade(arrival, buses[size_t(bus)]);
    return arrival;
}

PlanBuilder::LineKey PlanBuilder::keyOf(const PlanArrival& a) {
    if (a.from) return {a.kind, a.from, 0, nullptr};
    return {a.kind, a.sender->comp, a.channel, a.at->comp};
}

/// What arrives already goes on in its line, or has to get used to one.
std::shared_ptr<DelayLine> PlanBuilder::lineOf(const PlanArrival& arrival) const {
    const auto found = lines.find(keyOf(arrival));
    if (found != lines.end() && found->second) return found->second;
    return std::make_shared<DelayLine>(plan->heard && found != lines.end());
}

void PlanBuilder::linkLatency() {
    dropVainWaits();
    PlanLatency& lateness = plan->lateness;
    const auto link = [&](PlanArrival& a) {
        if (a.leaving) return;
        if (a.loop) return lateness.meetingAt(a.at).arrivals.push_back(&a);
        const CComp* sender = a.sender ? a.sender->comp : nullptr;
        if (a.from)
            a.origin = lateness.originOf(a.from->fromChannel);
        else if (a.kind == PlanArrival::strips)
            a.origin = lateness.originOf(contents(sender->outputs)[size_t(a.channel)]);
        else
            a.origin = place(a.sender->comp).parts;
        lateness.meetingAt(a.at).arrivals.push_back(&a);
    };
    for (const auto& node : plan->nodes)
        for (std::vector<PlanArrival>* all : {&node->arrivals, &node->keys})
            for (PlanArrival& a : *all) link(a);
    plan->eachStep([&](PlanStep& step) {
        for (PlanArrival& a : step.sums) link(a);
    });
    for (CComp* c : comps)
        if (const COutputChannel* ch = c->output(); ch && c->type == compAudioOut)
            if (const PlanOrigin* out = lateness.originOf(ch)) lateness.addEnd(out);
    for (const auto& node : plan->nodes)
        if (node->own) link(*node->own);
    lateness.giveLines([this](PlanArrival& a) { a.line = lineOf(a); },
                       [this](PlanInsert& insert) { giveLines(insert); },
                       [this](PlanLatency::End& end) {
                           const auto found = endLines.find(end.out->channel);
                           const bool known = found != endLines.end();
                           end.line = known && found->second
                                          ? found->second
                                          : std::make_shared<DelayLine>(plan->heard && known);
                       });
    linkRings();
    const bool anyLate = lateness.total() > 0;
    for (const auto& meeting : lateness.all())
        if (anyLate) giveLines(meeting);
}

void PlanBuilder::giveLines(PlanInsert& insert) {
    const auto found = insertLines.find(insert.comp);
    if (found != insertLines.end()) {
        insert.dry = found->second.dry;
        insert.events = found->second.events;
    }
    if (insert.own > 0 && !insert.dry) insert.dry = std::make_shared<DelayLine>(plan->heard);
    if (insert.wait > 0 && !insert.events) insert.events = std::make_shared<EventLine>();
}

/// Lets events of what may be late wait. What has no sound of its own past it needs no more.
void PlanBuilder::giveLines(const PlanLatency::Meeting& m) {
    PlanNode& node = *m.node;
    auto events = std::make_unique<PlanEvents>();
    const auto found = formerEvents.find(node.comp);
    const PlanEvents* before = found == formerEvents.end() ? nullptr : found->second;
    const bool late = node.latency > 0 || node.comp->type == compMIDIOut;
    if (late && !node.part)
        for (CMIDIQ* port : contents(node.comp->inPorts))
            events->ports.push_back({port, std::make_shared<EventLine>()});
    const auto lateStrip = [&](const PlanOrigin* o) {
        return o->channel && o->latency > node.eventLatency();
    };
    if (std::ranges::any_of(m.outputs, lateStrip)) events->strips = std::make_shared<EventLine>();
    if (before) events->follow(*before);
    if (!events->ports.empty() || events->strips) node.events = std::move(events);
}

/// What comes too late for a bus is lost.
void PlanBuilder::feedBuses(PlanNode* from, PlanArrival::Kind kind) {
    const int count = std::min(int(buses.size()), maxSends);
    if (count == 0) return;
    const int channels = int(read(from->comp->outputs).size());
    if (kind == PlanArrival::strips) from->tap = std::make_unique<SendTap>(channels, count);
    for (int k = 0; k < count; ++k) {
        Place& bus = place(buses[size_t(k)]);
        if (bus.rendered) continue;
        if (onlyLeaving) {
            keepSends(from, bus);
            continue;
        }
        for (int ch = 0; ch < (kind == PlanArrival::strips ? channels : 1); ++ch)
            bus.node->arrivals.push_back(sendOf(from, kind, ch, k));
        auto& reads = kindOf(from->comp) == listSends ? bus.readsOfBuses : bus.reads;
        for (const CObject* ch : read(from->comp->outputs)) reads.push_back(ch);
        reads.push_back(from);
    }
}

void PlanBuilder::flushSums(CComp* out) {
    Place& p = place(out);
    if (p.sums.empty()) return;
    for (const PlanArrival& sum : p.sums) p.reads.push_back(sum.from->fromChannel);
    const auto inputs = contents(out->inputs);
    PlanStep& step = add(out, PlanStep::sum, {inputs.begin(), inputs.end()});
    step.sums.insert(step.sums.end(), p.sums.begin(), p.sums.end()); // it may go on with a step
    p.sums.clear();
}

/// A component's works that follow each other are one step, unless one has to be apart.
PlanStep& PlanBuilder::add(CComp* c, unsigned work, const std::vector<const void*>& writes,
                           bool apart) {
    Place& p = place(c);
    std::vector<const void*> touched = writes;
    touched.push_back(p.node);
    if (ringOpen) {
        ringReads.insert(ringReads.end(), p.reads.begin(), p.reads.end());
        ringWrites.insert(ringWrites.end(), touched.begin(), touched.end());
        p.reads.clear();
        plan->steps.push_back({p.node, work, {}, 0});
        return plan->steps.back();
    }
    int level = 0;
    for (const void* what : p.reads) level = std::max(level, uses[what].written + 1);
    const bool goesOn = !apart && !plan->steps.empty() && plan->steps.back().node == p.node &&
                        !plan->steps.back().loop && plan->steps.back().level >= level &&
                        plan->late != plan->steps.size();
    if (goesOn) level = plan->steps.back().level;
    const bool follows = !goesOn && work == PlanStep::sum && p.sumStep >= 0 &&
                         joins(plan->steps[size_t(p.sumStep)], level, touched);
    if (follows) level = plan->steps[size_t(p.sumStep)].level;
    if (clearsFirst(c, work)) work |= PlanStep::clear;
    if (!goesOn && !follows)
        for (const void* what : touched)
            level = std::max({level, uses[what].written + 1, uses[what].read + 1});
    for (const void* what : p.reads) uses[what].read = std::max(uses[what].read, level);
    for (const void* what : touched) uses[what].written = level;
    p.reads.clear();
    if (!goesOn) plan->steps.push_back({p.node, 0, {}, level});
    PlanStep& step = plan->steps.back();
    step.work |= work;
    if (follows) {
        const int before = plan->steps[size_t(p.sumStep)].goesWith;
        step.goesWith = before < 0 ? p.sumStep : before;
    }
    p.sumStep = step.work == PlanStep::sum ? int(plan->steps.size()) - 1 : -1;
    return step;
}

/// Whether nobody touches the channels of `c` before the step that is added, in which it fills
/// them. A device has filled its ins by then, and its outs are sent whatever becomes of the plan.
bool PlanBuilder::clearsFirst(CComp* c, unsigned work) {
    if (!(work & (PlanStep::render | PlanStep::gather)) || c->type == compAudioIn ||
        c->type == compAudioOut || c->type == compSeq || c == host)
        return false;
    for (const CList* list : listsOf(c->inputs, c->outputs))
        for (const CObject* channel : read(*list))
            if (const Use& use = uses[channel]; use.written >= 0 || use.read >= 0) return false;
    return true;
}

/// Whether a step that needs `level` can be done right behind one of its component, which has
/// written the same.
bool PlanBuilder::joins(const PlanStep& before, int level,
                        const std::vector<const void*>& touched) {
    return before.level >= level && std::ranges::all_of(touched, [&](const void* what) {
               return uses[what].written <= before.level && uses[what].read < before.level;
           });
}

#include "engine/CQV.h"
#include "engine/plan/PlanBuilder.h"
#include "engine/plan/PlanLoop.h"
#include "engine/plan/Upstream.h"

#include <algorithm>
#include <utility>

// Loops of a graph, and how they become part of a plan.

namespace {

/// Finds what leads to itself by edges between numbers, without recursion: cables in a row may be
/// many.
class Circles {
public:
    explicit Circles(const std::vector<std::vector<size_t>>& sources)
        : from(sources), order(sources.size(), 0), low(sources.size(), 0),
          open(sources.size(), false) {
        for (size_t i = 0; i < from.size(); ++i)
            if (order[i] == 0) walk(i);
    }
    std::vector<std::vector<size_t>> found;

private:
    struct Turn {
        size_t at, next;
    };
    void enter(size_t i) {
        order[i] = low[i] = ++count;
        open[i] = true;
        waiting.push_back(i);
        way.push_back({i, 0});
    }
    void walk(size_t start) {
        enter(start);
        while (!way.empty()) {
            const size_t at = way.back().at;
            if (way.back().next < from[at].size()) {
                const size_t source = from[at][way.back().next++];
                if (order[source] == 0)
                    enter(source);
                else if (open[source])
                    low[at] = std::min(low[at], order[source]);
                continue;
            }
            way.pop_back();
            if (!way.empty()) low[way.back().at] = std::min(low[way.back().at], low[at]);
            if (low[at] == order[at]) close(at);
        }
    }
    void close(size_t first) {
        std::vector<size_t> circle;
        size_t one = 0;
        do {
            one = waiting.back();
            waiting.pop_back();
            open[one] = false;
            circle.push_back(one);
        } while (one != first);
        const bool itself = std::ranges::find(from[first], first) != from[first].end();
        if (circle.size() == 1 && !itself) return;
        std::ranges::sort(circle);
        found.push_back(std::move(circle));
    }

    const std::vector<std::vector<size_t>>& from;
    std::vector<size_t> order, low;
    std::vector<bool> open;
    std::vector<size_t> waiting;
    std::vector<Turn> way;
    size_t count = 0;
};

/// Follows cables from where sound comes in, so that it is those back to there that close the
/// loops; messages come in time, if they can.
class RingOrder {
public:
    struct Member {
        CComp* comp;
        bool entry = false;                      ///< something comes in from outside
        std::vector<size_t> sound{}, messages{}; ///< where cables lead
    };
    explicit RingOrder(std::vector<Member> all)
        : members(std::move(all)), state(members.size(), untouched), asked(members.size(), 0) {
        for (const bool entries : {true, false})
            for (size_t i = 0; i < members.size(); ++i)
                if (members[i].entry == entries) visit(i, 0);
        std::ranges::reverse(order);
    }
    std::vector<CComp*> order;

private:
    enum State : char { untouched, onTheWay, done };

    void visit(size_t i, int depth) {
        if (state[i] != untouched) return;
        state[i] = onTheWay;
        if (depth < maxPullDepth) {
            for (const size_t to : members[i].messages) visit(to, depth + 1);
            for (const size_t to : members[i].sound)
                if (!leadsBack(to)) visit(to, depth + 1);
        }
        state[i] = done;
        order.push_back(members[i].comp);
    }
    /// Whether it, or what its messages go to, is on the way.
    bool leadsBack(size_t first) {
        ++questions;
        std::vector<size_t> left{first};
        while (!left.empty()) {
            const size_t i = left.back();
            left.pop_back();
            if (state[i] == onTheWay) return true;
            if (std::exchange(asked[i], questions) == questions) continue;
            left.insert(left.end(), members[i].messages.begin(), members[i].messages.end());
        }
        return false;
    }

    std::vector<Member> members;
    std::vector<State> state;
    std::vector<size_t> asked;
    size_t questions = 0;
};

} // namespace

bool PlanBuilder::sameRing(const CComp* a, const CComp* b) const {
    const auto one = ringOf.find(a), other = ringOf.find(b);
    return one != ringOf.end() && other != ringOf.end() && one->second == other->second;
}

void PlanBuilder::findRings() {
    std::vector<CComp*> all = comps;
    all.insert(all.end(), buses.begin(), buses.end());
    std::unordered_map<const CComp*, size_t> numbers;
    for (size_t i = 0; i < all.size(); ++i) numbers[all[i]] = i;
    std::vector<std::vector<size_t>> sources(all.size());
    const auto lead = [&](size_t to, const CComp* from) {
        if (const auto known = numbers.find(from); known != numbers.end())
            sources[to].push_back(known->second);
    };
    for (size_t i = 0; i < all.size(); ++i) {
        for (const auto* cable : contents(all[i]->audioCables)) lead(i, cable->fromComp);
        for (const auto* cable : contents(all[i]->midiCables)) lead(i, cable->fromComp);
    }
    for (const std::vector<size_t>& circle : Circles(sources).found) {
        std::vector<CComp*>& ring = rings.emplace_back();
        for (const size_t i : circle) ring.push_back(all[i]);
        // Messages do not go round: a cable that would close such a loop brings nothing.
        const bool anySound = std::ranges::any_of(ring, [&](CComp* c) {
            return std::ranges::any_of(contents(c->audioCables), [&](const CAudioCable* cable) {
                return std::ranges::find(ring, cable->fromComp) != ring.end();
            });
        });
        if (!anySound) {
            rings.pop_back();
            continue;
        }
        for (const CComp* c : ring) ringOf[c] = rings.size() - 1;
    }
}

/// All that comes from outside is there before the first piece.
void PlanBuilder::needOutside(const std::vector<CComp*>& members) {
    const auto isMember = [&](const CComp* c) { return sameRing(c, members.front()); };
    for (CComp* c : comps)
        if (c->type == compMIDIIn && !isMember(c)) need(c);
    for (CComp* c : members) {
        needKey(c, c);
        needKeys(c);
        if (c->type == compAudioOut) {
            for (const ListKind kind : {listComps, listSends}) takeSources(c, kind);
            flushSums(c);
            continue;
        }
        for (const auto* cable : contents(c->midiCables))
            if (cable->fromComp && !isMember(cable->fromComp)) need(cable->fromComp);
        for (const auto* cable : contents(c->audioCables)) {
            CComp* from = cable->fromComp;
            if (!from || isMember(from)) continue;
            if (from->type == compAudioOut)
                finishOut(from);
            else
                need(from);
            stripsOf(from);
        }
    }
}

std::vector<CComp*> PlanBuilder::ringOrder(const std::vector<CComp*>& ring) {
    std::vector<RingOrder::Member> members;
    std::unordered_map<const CComp*, size_t> numbers;
    for (CComp* c : ring) {
        numbers[c] = members.size();
        members.push_back({c});
    }
    for (size_t i = 0; i < ring.size(); ++i) {
        const auto lead = [&](const CComp* from, std::vector<size_t> RingOrder::Member::*kind) {
            const auto known = numbers.find(from);
            if (known != numbers.end())
                (members[known->second].*kind).push_back(i);
            else
                members[i].entry = true;
        };
        for (const auto* cable : contents(ring[i]->midiCables))
            lead(cable->fromComp, &RingOrder::Member::messages);
        for (const auto* cable : contents(ring[i]->audioCables))
            lead(cable->fromComp, &RingOrder::Member::sound);
    }
    return RingOrder(std::move(members)).order;
}

PlanArrival PlanBuilder::closingOf(CComp* c, const CAudioCable* cable) {
    closings.insert(cable);
    PlanArrival arrival = arrivalOf(c, cable);
    const auto before = loopLines.find(cable);
    arrival.loop = before != loopLines.end() ? before->second : std::make_shared<LoopLine>();
    place(c).node->cables.push_back(cable);
    return arrival;
}

/// What arrives at an out from within its ring, and its work.
void PlanBuilder::planOut(CComp* out) {
    for (const auto* cable : contents(out->audioCables)) {
        CComp* from = cable->fromComp;
        if (!sameRing(from, out)) continue;
        if (place(from).busy) {
            place(out).sums.push_back(closingOf(out, cable));
            continue;
        }
        place(out).node->cables.push_back(cable);
        place(out).sums.push_back(arrivalOf(out, cable));
    }
    flushSums(out);
    out->planRender(*this);
    place(out).rendered = true;
    planMaster(out);
}

void PlanBuilder::planRing(const std::vector<CComp*>& members) {
    for (CComp* c : members) place(c).busy = true;
    needOutside(members);
    const size_t firstStep = plan->steps.size();
    ringOpen = true;
    for (CComp* c : ringOrder(members)) {
        if (c->type == compAudioOut) {
            planOut(c);
        } else {
            c->planRender(*this);
            place(c).rendered = true;
            stripsOf(c);
        }
        place(c).busy = false;
    }
    ringOpen = false;
    closeRing(members, firstStep);
}

/// Its steps become one.
void PlanBuilder::closeRing(const std::vector<CComp*>& members, size_t firstStep) {
    auto loop = std::make_shared<PlanLoop>();
    const auto begin = plan->steps.begin() + long(firstStep);
    loop->steps.assign(std::make_move_iterator(begin), std::make_move_iterator(plan->steps.end()));
    plan->steps.erase(begin, plan->steps.end());
    // What shows a part of its events meanwhile is nobody else's.
    for (const CMIDIQ* port : heardOutside) ringWrites.push_back(port);
    int level = 0;
    for (const void* what : ringReads) level = std::max(level, uses[what].written + 1);
    for (const void* what : ringWrites)
        level = std::max({level, uses[what].written + 1, uses[what].read + 1});
    for (const void* what : ringReads) uses[what].read = std::max(uses[what].read, level);
    for (const void* what : ringWrites) uses[what].written = level;
    ringReads.clear();
    ringWrites.clear();

    std::vector<const void*> own;
    for (CComp* c : members) {
        loop->addMember(place(c).node, contents(c->outputs), contents(c->inputs));
        for (CMIDIQ* port : contents(c->inPorts)) loop->addOwnPort(port, false);
        for (CMIDIQ* port : contents(c->outPorts)) loop->addOwnPort(port, true);
        for (const auto* list : listsOf(c->inPorts, c->outPorts))
            for (const CMIDIQ* port : contents(*list)) own.push_back(port);
    }
    for (PlanStep& step : loop->steps)
        if (!loop->has(step.node)) loop->addMember(step.node, {}, {});
    for (const CMIDIQ* port : heardOutside)
        if (std::ranges::find(own, port) == own.end()) {
            own.push_back(port);
            loop->addSource(const_cast<CMIDIQ*>(port));
        }
    heardOutside.clear();
    plan->steps.push_back({place(members.front()).node, 0, {}, level});
    plan->steps.back().loop = std::move(loop);
}

void PlanBuilder::linkRings() {
    for (PlanStep& step : plan->steps) {
        if (!step.loop) continue;
        PlanLoop& loop = *step.loop;
        const CComp* member = step.node->comp;
        for (const auto& node : plan->nodes) {
            const bool within = loop.has(node.get());
            for (PlanArrival& key : node->keys) {
                if (!within) break;
                key.outside = !sameRing(wholeOf(stripOwner(key.from->fromChannel)), member);
                loop.addBuffers(*key.from->toChannel);
            }
            for (const KeyTap& tap : node->taps)
                if (within) loop.addBuffers(*tap.sound);
            for (PlanArrival& a : node->arrivals) {
                const bool fromWithin = a.kind == PlanArrival::cable
                                            ? sameRing(a.from->fromComp, member)
                                            : loop.has(a.sender);
                a.outside = within ? !fromWithin : a.outside;
                if (a.loop && within) loop.addCable(&a);
                if (!within && fromWithin && a.kind != PlanArrival::cable)
                    loop.carry(&a, host->frames);
            }
        }
        for (PlanStep& inner : loop.steps)
            for (PlanArrival& a : inner.sums)
                if (a.loop) loop.addCable(&a);
    }
}

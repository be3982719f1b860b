#include "engine/plan/PlanLatency.h"

#include "engine/CComp.h"
#include "engine/Mixing.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>

namespace {

/// What a component reports counts from 0 to this.
constexpr int maxReported = 1 << 20;
/// And all in a row to this, so that no sum runs over.
constexpr int maxSum = 1 << 30;

int plus(int sum, CComp* c, bool possible) {
    if (!possible && c->enabled != 1) return sum;
    return std::min(sum + std::clamp(c->getDelay(), 0, maxReported), maxSum);
}

/// What leaves a component, of what arrives at it.
int latencyOf(const PlanOrigin& origin, bool possible) {
    COutputChannel* const ch = origin.channel;
    if (!ch) return origin.node->latency;
    // What plays instead of it has been made in time.
    if (!possible && origin.comp->freezed(ch)) return 0;
    int sum = plus(origin.node->latency, origin.comp, possible);
    for (CComp* insert : origin.inserts) sum = plus(sum, insert, possible);
    return sum;
}

void addLine(DelayLine& line, const float* left, const float* right, CInputChannel* to, int frames,
             PlanFade& fade, CInputChannel& room) {
    line.process(left, right, room.bufL, room.bufR, frames);
    addStereo(to, room.bufL, room.bufR, frames, fade);
}

} // namespace

void PlanArrival::addTo(CInputChannel* to, int frames, GraphScratch& scratch) {
    if (fade.over()) return;
    if (kind == cable) {
        to = from->toChannel;
        if (!to || !from->fromChannel || !from->fromComp->canProcess()) return;
    }
    const bool through = !line || line->idle();
    if (line && through) line->skip();
    if (kind == cable) {
        const COutputChannel* ch = from->fromChannel;
        if (through) return addStereo(to, ch->bufL, ch->bufR, frames, fade);
        return addLine(*line, ch->bufL, ch->bufR, to, frames, fade, scratch.arrival);
    }
    CInputChannel& room = scratch.arrival;
    if (!through)
        for (float* side : {room.bufL, room.bufR}) std::fill_n(side, frames, 0.0f);
    CInputChannel* const into = through ? to : &room;
    if (kind == strips)
        sender->tap->feed(sender->comp, channel, bus, into, frames);
    else
        sender->comp->sendParts(bus, into, frames);
    if (!through) addLine(*line, room.bufL, room.bufR, to, frames, fade, room);
}

PlanLatency::Meeting& PlanLatency::meetingAt(PlanNode* node) {
    const auto [place, fresh] = places.try_emplace(node, meetings.size());
    if (fresh) meetings.push_back({node, {}, {}});
    return meetings[place->second];
}

PlanOrigin* PlanLatency::addOrigin(PlanOrigin made, PlanNode* node) {
    auto* origin = origins.emplace_back(std::make_unique<PlanOrigin>(std::move(made))).get();
    if (origin->channel) byChannel[origin->channel] = origin;
    meetingAt(node).outputs.push_back(origin);
    return origin;
}

PlanOrigin* PlanLatency::originOf(const COutputChannel* channel) const {
    const auto found = byChannel.find(channel);
    return found == byChannel.end() ? nullptr : found->second;
}

int PlanLatency::latest(const Meeting& m) {
    int most = 0;
    for (const PlanArrival* a : m.arrivals)
        if (a->origin) most = std::max(most, a->origin->latency);
    return most;
}

int PlanLatency::walk(bool possible) {
    for (Meeting& m : meetings) {
        m.node->latency = latest(m);
        for (PlanOrigin* origin : m.outputs) origin->latency = latencyOf(*origin, possible);
    }
    int most = 0;
    for (const End& end : outs) most = std::max(most, end.out->latency);
    return most;
}

bool PlanLatency::workOut(int fadeFrames) {
    sum = walk(false);
    bool complete = true;
    const auto set = [&](DelayLine* line, int frames) {
        if (line) line->setDelay(frames, fadeFrames);
        complete = complete && (line || frames == 0);
    };
    for (Meeting& m : meetings)
        for (PlanArrival* a : m.arrivals)
            if (a->origin) set(a->line.get(), m.node->latency - a->origin->latency);
    for (const End& end : outs) set(end.line.get(), sum - end.out->latency);
    return complete;
}

void PlanLatency::finishOuts(int frames) {
    for (const End& end : outs) {
        if (!end.line) continue;
        const COutputChannel* ch = end.out->channel;
        if (end.line->idle())
            end.line->skip();
        else
            end.line->process(ch->bufL, ch->bufR, ch->bufL, ch->bufR, frames);
    }
}

void PlanLatency::silence() {
    for (Meeting& m : meetings)
        for (PlanArrival* a : m.arrivals)
            if (a->line) a->line->clear();
    for (const End& end : outs)
        if (end.line) end.line->clear();
}

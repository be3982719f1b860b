#include "engine/plan/PlanLatency.h"

#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "engine/Mixing.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

/// What a component reports counts from 0 to this.
constexpr int maxReported = 1 << 20;
/// And all in a row to this, so that no sum runs over.
constexpr int maxSum = 1 << 30;

int ownLatency(CComp* c, bool possible) {
    if (!possible && c->enabled != 1) return 0;
    return std::clamp(c->getDelay(), 0, maxReported);
}

void addLine(DelayLine& line, const float* left, const float* right, CInputChannel* to, int frames,
             PlanFade& fade, CInputChannel& room, bool metered) {
    if (line.process(left, right, room.bufL, room.bufR, frames))
        addStereo(to, room.bufL, room.bufR, frames, fade, metered);
    else
        fade.advance(frames);
}

/// The fade of a cable, on its way to where it belongs.
PlanFade& gateOf(const CAudioCable& cable, bool leaving) {
    cable.gate.follow(leaving || cable.muted, fadeFrames(cable.toComp->host));
    return cable.gate;
}

/// What is live waits for no key.
bool waitsLive(const PlanArrival& arrival) {
    return arrival.kind != PlanArrival::key || arrival.origin->node->live;
}

} // namespace

int fadeFrames(const CQV* host) {
    return std::max(host->framesInMs * PlanFade::ms, 1);
}

void PlanRest::take(int frames, GraphScratch& scratch) {
    const PlanArrival* const former = std::exchange(of, nullptr);
    if (!former || frames < 1) return;
    std::tie(left, right) = former->lastFrame(frames, scratch);
    fade = {};
    fade.turn(true, fadeFrames(former->at->comp->host));
}

void PlanRest::addTo(CInputChannel* to, int frames) {
    for (int i = 0; i < frames; ++i) {
        to->bufL[i] += left * fade.at(i);
        to->bufR[i] += right * fade.at(i);
    }
    fade.advance(frames);
}

bool PlanArrival::hasGone() const {
    if (!leaving) return false;
    const bool gone = ended || (last ? last->over() : from && from->gate.over());
    if (gone && silent) *silent = true;
    return gone;
}

std::pair<float, float> PlanArrival::lastFrame(int frames, GraphScratch& scratch) const {
    if (hasGone()) return {};
    if (last) return {last->left * last->fade.at(0), last->right * last->fade.at(0)};
    const float share = from ? from->gate.at(0) : fade ? fade->at(0) : 1.0f;
    if (line && !line->idle()) return {share * line->latestLeft(), share * line->latestRight()};
    if (loop) {
        float left = 0.0f, right = 0.0f;
        loop->read(&left, &right, 1); // the next: that is no further
        return {share * left, share * right};
    }
    const size_t end = size_t(frames) - 1;
    if (from) return {share * from->fromChannel->bufL[end], share * from->fromChannel->bufR[end]};
    if (carried) return {share * carried->bufL[end], share * carried->bufR[end]};
    CInputChannel& room = scratch.arrival;
    for (float* side : {room.bufL, room.bufR}) std::fill_n(side, frames, 0.0f);
    feed(&room, frames);
    return {share * room.bufL[end], share * room.bufR[end]};
}

void PlanArrival::addTo(CInputChannel* to, int frames, GraphScratch& scratch) {
    if (hasGone()) return;
    if (last) return last->addTo(from ? from->toChannel : to, frames);
    if (from) {
        to = from->toChannel;
        if (!to || !from->fromChannel || !from->fromComp->canProcess()) return;
    }
    if (loop && loop->fresh()) return; // its fade begins with its sound
    PlanFade open;
    if (fade) fade->follow(leaving, fadeFrames(at->comp->host));
    PlanFade& share = from ? gateOf(*from, leaving) : fade ? *fade : open;
    if (fade && fade->over()) return;
    const bool metered = from && from->toComp->type == compAudioOut;
    if (loop) {
        loop->read(scratch.arrival.bufL, scratch.arrival.bufR, frames);
        return addStereo(to, scratch.arrival.bufL, scratch.arrival.bufR, frames, share, metered);
    }
    const bool through = !line || line->idle();
    if (line && through) line->skip();
    if (isSilent(frames) && (through || line->passSilence(frames))) {
        if (!from) feed(&scratch.arrival, frames); // which lets its fade go on
        return share.advance(frames);
    }
    if (from) {
        const float* left = tap ? tap->bufL : from->fromChannel->bufL;
        const float* right = tap ? tap->bufR : from->fromChannel->bufR;
        if (through) return addStereo(to, left, right, frames, share, metered);
        return addLine(*line, left, right, to, frames, share, scratch.arrival, metered);
    }
    CInputChannel& room = scratch.arrival;
    const bool direct = through && !share.running();
    if (!direct)
        for (float* side : {room.bufL, room.bufR}) std::fill_n(side, frames, 0.0f);
    CInputChannel* const into = direct ? to : &room;
    if (carried) {
        addScaled(into->bufL, carried->bufL, frames, 1.0f);
        addScaled(into->bufR, carried->bufR, frames, 1.0f);
    } else {
        feed(into, frames);
    }
    if (direct) return;
    if (through) return addStereo(to, room.bufL, room.bufR, frames, share, false);
    addLine(*line, room.bufL, room.bufR, to, frames, share, room, false);
}

/// Whether it brings silence, as far as that is known.
bool PlanArrival::isSilent(int frames) const {
    if (carried || tap || (kind != cable && kind != strips)) return false;
    const PlanNode* const node = from ? (origin ? origin->node : nullptr) : sender;
    return node && kept < 0.0f && node->silence >= frames;
}

void PlanArrival::bring(int frames, GraphScratch& scratch) {
    CInputChannel* to = from->toChannel;
    for (float* side : {to->bufL, to->bufR}) std::fill_n(side, frames, 0.0f);
    addTo(to, frames, scratch);
}

void PlanArrival::feed(CInputChannel* to, int frames) const {
    if (kept >= 0.0f)
        feedKept(to, frames);
    else if (kind == strips)
        sender->tap->feed(*sender, channel, bus, to, frames);
    else
        sender->comp->sendParts(bus, to, frames);
}

void PlanArrival::feedKept(CInputChannel* to, int frames) const {
    const COutputChannel* ch = sender->comp->output(channel);
    if (!ch || ch->mute || !heardInSolo(ch)) return;
    addScaled(to->bufL, ch->bufL, frames, kept * kept);
    addScaled(to->bufR, ch->bufR, frames, kept * kept);
}

void PlanArrival::settle() const {
    if (from) {
        from->gate = PlanFade::still(from->muted != 0);
        return;
    }
    if (const COutputChannel* ch = kind == strips ? sender->comp->output(channel) : nullptr)
        ch->sendLevels[bus]->settled = false;
}

int PlanArrival::wait() const {
    if (kind != own && origin->node->live) return 0;
    if (kind == key) return std::max(heardAt() - origin->latency, 0);
    return at->latency - origin->latency;
}

int PlanArrival::heardAt() const {
    return insert ? insert->at : at->latency;
}

PlanLatency::Meeting& PlanLatency::meetingAt(PlanNode* node) {
    const auto [place, fresh] = places.try_emplace(node, meetings.size());
    if (fresh) meetings.push_back({node, {}, {}});
    return meetings[place->second];
}

void PlanLatency::putLast(const PlanNode* node) {
    const auto place = places.find(node);
    if (place == places.end()) return;
    const size_t at = place->second;
    std::rotate(meetings.begin() + long(at), meetings.begin() + long(at) + 1, meetings.end());
    for (size_t i = at; i < meetings.size(); ++i) places[meetings[i].node] = i;
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
        if (a->origin && (m.node->live ? waitsLive(*a) : !a->origin->node->live))
            most = std::max(most, a->origin->latency);
    return most;
}

/// What the sound of a component is made of.
void PlanLatency::takeIn(const Meeting& m) {
    PlanNode& node = *m.node;
    bool any = false, all = true;
    node.fromDevice = node.comp->type == compAudioIn || node.comp->type == compMIDIIn;
    for (const PlanArrival* a : m.arrivals) {
        if (!a->origin || a->kind == PlanArrival::own || a->kind == PlanArrival::key) continue;
        any = true;
        all = all && a->origin->node->live;
        node.fromDevice = node.fromDevice || a->origin->node->fromDevice;
    }
    for (const PlanNode::Midi& midi : node.midi) {
        any = any || midi.from;
        all = all && midi.from && midi.from->live;
        // What a song plays is not told from what it passes on.
        if (midi.from && midi.from->comp->type != compSeq && !midi.from->part)
            node.fromDevice = node.fromDevice || midi.from->fromDevice;
    }
    for (const PlanNode* player : node.players)
        node.fromDevice = node.fromDevice || player->fromDevice;
    node.live = node.words ? *node.words->live != 0 : any && all && node.comp->type != compAudioOut;
}

PlanInsert* PlanLatency::insertOf(const CComp* comp) const {
    const auto found = byInsert.find(comp);
    return found == byInsert.end() ? nullptr : found->second;
}

int PlanLatency::latencyAt(const CObject* target) const {
    if (target->asType(0, typeSend)) target = static_cast<const CSend*>(target)->channel;
    if (target->asType(categoryChannel, channelOutput)) {
        const PlanOrigin* strip = originOf(static_cast<const COutputChannel*>(target));
        return strip ? strip->latency : 0;
    }
    if (target->category != categoryComp) return 0;
    const auto* c = static_cast<const CComp*>(target);
    if (const PlanInsert* insert = insertOf(c)) return insert->at;
    const COutputChannel* of = c->ownerChannel;
    const PlanOrigin* strip = originOf(of ? of : c->outputs.items(0));
    return strip ? strip->node->eventLatency() : 0;
}

std::unordered_map<const CComp*, PlanInsert> PlanLatency::lateInserts() const {
    std::unordered_map<const CComp*, PlanInsert> all;
    for (const auto& [comp, insert] : byInsert) {
        if (insert->ended) continue;
        PlanInsert& lines = all.try_emplace(comp, PlanInsert{insert->comp}).first->second;
        lines.dry = insert->dry;
        lines.events = insert->events;
    }
    return all;
}

bool PlanLatency::hasInsertsOf(const PlanLatency& other) const {
    return std::ranges::all_of(byChannel, [&](const auto& entry) {
        const PlanOrigin* before = other.originOf(entry.first);
        const auto same = [](const PlanInsert& a, const PlanInsert& b) {
            return a.comp == b.comp && a.leaving == b.leaving;
        };
        return !before || std::ranges::equal(entry.second->inserts, before->inserts, same);
    });
}

std::vector<PlanInsert>* PlanLatency::changing(const COutputChannel* channel) const {
    PlanOrigin* origin = originOf(channel);
    const auto changes = [](const PlanInsert& i) { return i.leaving || i.after; };
    return origin && std::ranges::any_of(origin->inserts, changes) ? &origin->inserts : nullptr;
}

void PlanLatency::forget(const ForgetSet& gone) {
    for (const auto& origin : origins)
        for (PlanInsert& insert : origin->inserts)
            if (insert.leaving && gone.has(insert.comp)) insert.ended = true;
}

/// What leaves a component, of what arrives at it.
void PlanLatency::follow(PlanOrigin& origin, bool possible) {
    int& late = origin.latency;
    late = 0;
    if (!origin.channel) return; // the song is on time
    // What plays instead of it has been made in time.
    const bool frozen = !possible && origin.comp->freezed(origin.channel);
    if (!frozen) late = std::min(origin.node->latency + ownLatency(origin.comp, possible), maxSum);
    for (PlanInsert& insert : origin.inserts) {
        insert.at = late;
        insert.wait = late - origin.node->eventLatency();
        const bool counts = !frozen && !insert.leaving;
        insert.own = counts ? ownLatency(insert.comp, possible) : 0;
        late = std::min(late + insert.own, maxSum);
    }
}

int PlanLatency::walk(bool possible) {
    for (Meeting& m : meetings) {
        PlanNode& node = *m.node;
        if (node.ended) continue;
        takeIn(m);
        node.latency = latest(m);
        for (const PlanNode::Midi& midi : node.midi)
            if (midi.from) node.latency = std::max(node.latency, midi.from->midiLatency);
        node.midiLatency = std::min(node.latency + ownLatency(node.comp, possible), maxSum);
        for (PlanOrigin* origin : m.outputs) follow(*origin, possible);
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
            if (a->origin) set(a->line.get(), a->wait());
    for (const End& end : outs) set(end.line.get(), sum - end.out->latency);
    for (const auto& origin : origins)
        for (const PlanInsert& insert : origin->inserts) set(insert.dry.get(), insert.own);
    for (Meeting& m : meetings)
        if (!m.node->ended && m.node->comp->type == compMIDIOut)
            m.node->latency = std::max(m.node->latency, sum);
    tellParts();
    return complete;
}

void PlanLatency::tellParts() const {
    for (const Meeting& m : meetings) {
        const PlanNode& node = *m.node;
        if (!node.words) continue;
        *node.words->takeLatency = node.latency + (node.fromDevice ? sum : 0);
        *node.words->fromDevice = node.fromDevice;
    }
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

void PlanLatency::settleFades() {
    for (Meeting& m : meetings)
        for (const PlanArrival* a : m.arrivals) a->settle();
}

void PlanLatency::silence() {
    settleFades();
    for (Meeting& m : meetings)
        for (PlanArrival* a : m.arrivals) {
            if (a->line) a->line->clear();
            if (a->loop) a->loop->clear();
        }
    for (const End& end : outs)
        if (end.line) end.line->clear();
    for (const auto& [comp, insert] : byInsert) {
        if (insert->dry) insert->dry->clear();
        if (insert->events) insert->events->clear();
    }
    for (Meeting& m : meetings)
        if (m.node->events) m.node->events->clear();
}

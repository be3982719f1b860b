#include "engine/CQV.h"
#include "engine/plan/PlanBuilder.h"

#include <algorithm>
#include <utility>

// What comes and goes with a plan that takes over from another one.

/// What was not heard before, and is not on its way out, rises from silence. What comes together
/// with what it leads to rises with that, but for what comes late by a loop.
void PlanBuilder::beginFade(CComp* c, const CAudioCable* cable) {
    if (!formerLatency || !plan->heard) return;
    if (!former.contains(c) && !closings.contains(cable)) return;
    if (broughtBefore.contains(cable) && !hadTurned(cable)) return;
    const auto goesOn = [cable](const PlanArrival* a) { return a->from == cable && !a->last; };
    if (std::ranges::none_of(goingBefore[c], goesOn)) plan->coming.push_back(cable);
}

/// Whether a cable closes a loop that did not, or the other way round: it brings another sound.
bool PlanBuilder::hadTurned(const CAudioCable* cable) const {
    const auto had = broughtBefore.find(cable);
    return had != broughtBefore.end() && (had->second->loop != nullptr) != closings.contains(cable);
}

/// Goes by its last frame.
PlanArrival PlanBuilder::breakOff(PlanArrival arrival) {
    arrival.last = std::make_shared<PlanRest>();
    for (const PlanArrival* going : goingBefore[arrival.at->comp])
        if (going->from == arrival.from && !going->last) arrival.last->of = going;
    if (const auto had = broughtBefore.find(arrival.from); had != broughtBefore.end())
        arrival.last->of = had->second;
    return arrival;
}

bool PlanBuilder::staysInGraph(const CComp* c) const {
    return std::ranges::find(comps, c) != comps.end() || std::ranges::find(buses, c) != buses.end();
}

/// What goes, or was about to go, out of the inputs of `c`.
std::vector<PlanArrival> PlanBuilder::leaving(CComp* c) {
    std::vector<PlanArrival> all;
    const auto before = former.find(c);
    if (before == former.end()) return all;
    const auto has = contents(c->audioCables);
    const auto goes = [&](const CAudioCable* cable) {
        return std::ranges::find(has, cable) == has.end();
    };
    for (const CAudioCable* cable : before->second->cables) {
        if (goes(cable))
            all.push_back(leavingOf(c, cable));
        else if (hadTurned(cable))
            all.push_back(breakOff(leavingOf(c, cable)));
    }
    for (const PlanArrival* going : goingBefore[c]) {
        if (!going->last && !goes(going->from)) continue;
        all.push_back(leavingOf(c, going->from));
        all.back().last = going->last;
        all.back().silent = going->silent;
    }
    return all;
}

/// Whether `c`, which only cables that leave lead to sound, needs nothing that has not been worked
/// out yet and stays, and waits for nothing that waits for it.
bool PlanBuilder::endsHere(CComp* c, std::unordered_set<const CComp*>& path) {
    if (staying.contains(c)) return place(c).rendered && place(c).stripped;
    if (place(c).rendered) return true;
    if (place(c).busy || !path.insert(c).second) return false;
    const OffGraph off(*this, c);
    for (const auto* cable : contents(c->audioCables))
        if (!endsHere(cable->fromComp, path)) return false;
    for (const auto* cable : contents(c->midiCables)) {
        CComp* from = cable->fromComp;
        if (from && !(staying.contains(from) ? place(from).rendered : endsHere(from, path)))
            return false;
    }
    path.erase(c);
    return true;
}

/// Whether a cable can be heard a little longer without a change to what stays.
bool PlanBuilder::mayLeave(const CAudioCable* cable) {
    std::unordered_set<const CComp*> path;
    CComp* const from = cable->fromComp;
    // What a loop takes in has to be there before it.
    if (ringOpen && !place(from).rendered) return false;
    if (from->type == compAudioOut) return false;
    // A track that has left is not played any more.
    if (from->type == compSeq) return place(from).rendered && sounds(cable);
    return endsHere(from, path);
}

/// Whether the strip that a cable comes from has been planned.
bool PlanBuilder::sounds(const CAudioCable* cable) {
    return plan->lateness.originOf(cable->fromChannel) != nullptr;
}

/// Its source, unless it stays for other reasons.
void PlanBuilder::needLeaving(const CAudioCable* cable) {
    CComp* const from = cable->fromComp;
    const bool before = std::exchange(onlyLeaving, true);
    const OffGraph off(*this, from);
    if (offGraph) place(from).node->leaving = true;
    need(from);
    stripsOf(from);
    onlyLeaving = before;
}

/// Decides how what leaves is heard: to the end of its fade or, where its source can't be worked
/// out any more, by its last frame.
void PlanBuilder::takeOver(PlanArrival& arrival) {
    plan->passing = true;
    if (arrival.last) return;
    const bool whole = mayLeave(arrival.from);
    if (whole) needLeaving(arrival.from);
    if (!whole || !sounds(arrival.from)) arrival = breakOff(std::move(arrival));
}

/// What has left the graph and sends to buses comes before them.
void PlanBuilder::takeEarlyLeaving(CComp* out) {
    for (const PlanArrival& arrival : leaving(out))
        if (!arrival.last && mayLeave(arrival.from)) needLeaving(arrival.from);
}

/// Behind all sources that stay, as the next.
void PlanBuilder::takeLeaving(CComp* out) {
    for (PlanArrival& arrival : leaving(out)) {
        takeOver(arrival);
        place(out).sums.push_back(arrival);
    }
}

void PlanBuilder::takeLeavingInto(CComp* c) {
    for (PlanArrival& arrival : leaving(c)) {
        takeOver(arrival);
        if (!arrival.last) place(c).reads.push_back(arrival.from->fromChannel);
        place(c).node->arrivals.push_back(arrival);
    }
    if (place(c).node->leaving) takeKeptSends(c);
    breakOffSends(c);
}

/// What a bus got, and nobody can work out any more.
void PlanBuilder::breakOffSends(CComp* bus) {
    const auto before = former.find(bus);
    if (before == former.end()) return;
    for (const PlanArrival& had : before->second->arrivals) {
        if (had.kind == PlanArrival::cable || had.hasGone() || isSent(had)) continue;
        PlanArrival rest{PlanArrival::rest};
        rest.at = place(bus).node;
        rest.leaving = true;
        rest.last = had.last;
        if (!had.last) rest.last = std::make_shared<PlanRest>(PlanRest{&had});
        plan->passing = true;
        place(bus).node->arrivals.push_back(std::move(rest));
    }
}

/// Whether the plan goes on with it.
bool PlanBuilder::isSent(const PlanArrival& had) const {
    if (had.kind == PlanArrival::rest) return false;
    const auto sender = places.find(had.sender->comp);
    if (sender == places.end()) return false;
    return had.kind == PlanArrival::parts ? sender->second.parts != nullptr
                                          : sender->second.stripped;
}

/// A bus that has left goes on getting what it got.
void PlanBuilder::takeKeptSends(CComp* bus) {
    for (const auto& [comp, sender] : places)
        if (sender.stripped) keepSends(sender.node, place(bus));
}

/// What a bus got from a sender before, at the levels of then, as both may be numbered anew.
void PlanBuilder::keepSends(const PlanNode* from, Place& bus) {
    const auto before = former.find(bus.node->comp);
    if (before == former.end()) return;
    for (const PlanArrival& had : before->second->arrivals) {
        if (had.kind != PlanArrival::strips || had.sender->ended) continue;
        if (had.sender->comp != from->comp) continue;
        PlanArrival kept{PlanArrival::strips, nullptr, from, had.bus, had.channel};
        kept.at = bus.node;
        kept.leaving = true;
        kept.line = had.line;
        kept.kept = had.kept;
        kept.fade = had.fade ? had.fade : std::make_shared<PlanFade>();
        const COutputChannel* ch = from->comp->output(had.channel);
        if (kept.kept < 0.0f && ch && !ch->sendLevels[had.bus]->muted)
            kept.kept = ch->sendLevels[had.bus]->level;
        if (kept.kept <= 0.0f) continue;
        for (const CObject* io : read(from->comp->outputs)) bus.reads.push_back(io);
        bus.node->arrivals.push_back(std::move(kept));
    }
}

/// What was not sent to the bus before rises, from where it is if it is on its way out.
void PlanBuilder::beginFade(PlanArrival& send, const CComp* bus) {
    const auto before = former.find(bus);
    if (before == former.end() || !plan->heard) return;
    for (const PlanArrival& had : before->second->arrivals) {
        if (had.kind != PlanArrival::strips || had.sender->ended) continue;
        if (had.sender->comp != send.sender->comp || had.channel != send.channel) continue;
        send.fade = had.fade;
        return;
    }
    send.fade = std::make_shared<PlanFade>(PlanFade::still(true));
}

/// Nothing waits for it, and it does not wait for anything else than before.
PlanArrival PlanBuilder::leavingOf(CComp* c, const CAudioCable* cable) const {
    PlanArrival arrival{PlanArrival::cable, cable};
    arrival.leaving = true;
    arrival.silent = std::make_shared<Shared<bool>>(false);
    arrival.at = places.at(c).node;
    if (const auto found = lines.find(keyOf(arrival)); found != lines.end())
        arrival.line = found->second;
    return arrival;
}

// Inserts.

namespace {

/// For each of `now` the place in `before` that it keeps, or -1: as many as stand in the same
/// order.
std::vector<int> keptPlaces(const std::vector<PlanInsert>& before,
                            const std::vector<PlanInsert>& now) {
    const size_t rows = before.size(), columns = now.size();
    const auto same = [&](size_t i, size_t k) {
        return before[i].comp == now[k].comp && !before[i].ended;
    };
    std::vector<std::vector<int>> most(rows + 1, std::vector<int>(columns + 1, 0));
    for (size_t i = rows; i-- > 0;)
        for (size_t k = columns; k-- > 0;)
            most[i][k] =
                same(i, k) ? most[i + 1][k + 1] + 1 : std::max(most[i + 1][k], most[i][k + 1]);
    std::vector<int> places(columns, -1);
    for (size_t i = 0, k = 0; i < rows && k < columns;) {
        if (same(i, k))
            places[k++] = int(i++);
        else if (most[i + 1][k] >= most[i][k + 1])
            ++i;
        else
            ++k;
    }
    return places;
}

} // namespace

/// Where an insert is heard that comes to stand elsewhere, of the plan before; null for none.
const PlanInsert* PlanBuilder::placeBefore(const CComp* insert) const {
    for (const auto& meeting : formerLatency->all())
        for (const PlanOrigin* origin : meeting.outputs)
            for (const PlanInsert& had : origin->inserts)
                if (had.comp == insert && !had.ended && !(had.after && !had.after->isOver()))
                    return &had;
    return nullptr;
}

std::shared_ptr<InsertFade> PlanBuilder::fadeOf(const PlanInsert& had) {
    if (had.fade) return had.fade;
    std::shared_ptr<InsertFade>& made = insertFades[&had];
    if (!made) made = std::make_shared<InsertFade>();
    return made;
}

/// Those that come rise; those that go stay behind what they stood behind, and fall. One that is
/// moved falls first, and rises then.
void PlanBuilder::fadeInserts(PlanOrigin& origin) {
    const PlanOrigin* before = formerLatency ? formerLatency->originOf(origin.channel) : nullptr;
    if (!before) return;
    const std::vector<PlanInsert>& had = before->inserts;
    const std::vector<int> kept = keptPlaces(had, origin.inserts);
    std::vector<bool> stays(had.size(), false);
    for (size_t i = 0; i < kept.size(); ++i) {
        PlanInsert& insert = origin.inserts[i];
        if (kept[i] >= 0) {
            insert.fade = had[size_t(kept[i])].fade;
            insert.after = had[size_t(kept[i])].after;
            stays[size_t(kept[i])] = true;
            continue;
        }
        insert.fade = std::make_shared<InsertFade>();
        insert.fade->fade = PlanFade::still(true);
        if (const PlanInsert* from = placeBefore(insert.comp)) insert.after = fadeOf(*from);
        plan->passing = true;
    }
    size_t passed = 0, added = 0;
    for (size_t i = 0; i < had.size(); ++i) {
        if (stays[i])
            passed = size_t(std::ranges::find(kept, int(i)) - kept.begin()) + 1;
        else if (keepLeaving(origin, had[i], passed + added))
            ++added;
    }
}

/// False for one of which nothing is heard.
bool PlanBuilder::keepLeaving(PlanOrigin& origin, const PlanInsert& had, size_t place) {
    if (had.ended || (had.after && !had.after->isOver())) return false;
    if (had.leaving && had.fade->isOver()) return false;
    PlanInsert leaving{had.comp};
    leaving.dry = had.dry;
    leaving.events = had.events;
    leaving.fade = fadeOf(had);
    leaving.leaving = true;
    origin.inserts.insert(origin.inserts.begin() + long(place), std::move(leaving));
    plan->passing = true;
    return true;
}

/// What an insert waits for must be going on somewhere.
void PlanBuilder::dropVainWaits() {
    std::unordered_set<const InsertFade*> going;
    const auto eachOrigin = [this](auto&& visit) {
        for (const auto& meeting : plan->lateness.all())
            for (PlanOrigin* origin : meeting.outputs)
                for (PlanInsert& insert : origin->inserts) visit(insert);
    };
    eachOrigin([&](const PlanInsert& i) {
        if (i.leaving) going.insert(i.fade.get());
    });
    eachOrigin([&](PlanInsert& i) {
        if (i.after && !going.contains(i.after.get())) i.after = nullptr;
    });
}

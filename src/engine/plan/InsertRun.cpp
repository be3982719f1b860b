#include "engine/plan/InsertRun.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/StripValues.h"
#include "engine/plan/AheadWork.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

/// Blends the dry signal into the wet one, in place.
void blend(float* wet, const float* dry, int frames, float share) {
    if (share >= 1.0f) return;
    const float rest = 1.0f - share;
    for (int i = 0; i < frames; ++i) wet[i] = wet[i] * share + dry[i] * rest;
}

/// Blends what went into an insert into what came out, from frame to frame by the wet share that
/// holds there: `share` at first, then that of each event.
void blendInsert(CComp* insert, const CInputChannel* in, float share, int frames) {
    const COutputChannel* out = insert->output();
    int done = 0;
    const auto blendTo = [&](int end) {
        blend(out->bufL + done, in->bufL + done, end - done, share);
        blend(out->bufR + done, in->bufR + done, end - done, share);
        done = end;
    };
    CMIDIQ* port = insert->inPort();
    for (const CMIDIBytes* e = port ? port->first() : nullptr; e; e = e->next) {
        if (e->kind != eventParam || e->owner != insert || e->param != paramWet) continue;
        blendTo(CMIDIQ::frameOf(e, done, frames));
        share = fLimit(e->value, 0.0f, 1.0f);
    }
    blendTo(frames);
}

void passEvents(const CMIDIBytes* events, CMIDIQ* port, const PlanInsert* late, int frames) {
    EventLine* const line = late ? late->events.get() : nullptr;
    for (const CMIDIBytes* e = events; e; e = e->next) {
        if (line)
            line->take(*e, late->wait);
        else
            port->push(e->time, e->data, e->kind, e->value, e->param, e->owner, e->extra);
    }
    if (line) line->serve(port, frames);
}

/// Lets an insert that comes or goes take its part of what it stands in the way of.
void fadeInsert(COutputChannel* out, const CInputChannel* in, PlanFade& fade, int frames) {
    for (int i = 0; i < frames; ++i) {
        const float share = fade.at(i);
        out->bufL[i] = in->bufL[i] + (out->bufL[i] - in->bufL[i]) * share;
        out->bufR[i] = in->bufR[i] + (out->bufR[i] - in->bufR[i]) * share;
    }
    fade.advance(frames);
}

/// Brings a fade on by a block.
void followFade(const PlanInsert& insert, COutputChannel* out, const CInputChannel* in,
                int frames) {
    const CQV* host = insert.comp->host;
    PlanFade& fade = insert.fade->fade;
    fade.follow(insert.leaving, fadeFrames(host));
    if (fade.running()) fadeInsert(out, in, fade, frames);
    insert.fade->overAt = fade.over() ? host->blocks : 0;
}

/// Whether an insert of a strip that changes works in this block. Where one has gone, it does not
/// come elsewhere in the same block.
bool isHeard(const PlanInsert& insert, unsigned block) {
    if (insert.leaving) return !insert.ended && !insert.fade->isOver();
    return !insert.after || (insert.after->isOver() && insert.after->overAt != block);
}

void copyStereo(float* toL, float* toR, const COutputChannel* from, int frames) {
    std::memcpy(toL, from->bufL, size_t(frames) * sizeof(float));
    std::memcpy(toR, from->bufR, size_t(frames) * sizeof(float));
}

} // namespace

InsertRun::InsertRun(COutputChannel* of, CMIDIBytes* moves, int count)
    : strip(of), events(moves), frames(count),
      plan(of->comp ? &of->comp->host->plans->current() : nullptr),
      changing(plan && plan->isPassing() ? plan->latency().changing(of) : nullptr), src(of) {
}

/// The next one; false where there is none.
bool InsertRun::take() {
    insert = nullptr;
    late = nullptr;
    if (changing) {
        while (at < int(changing->size()) && !insert) {
            PlanInsert& one = (*changing)[size_t(at++)];
            if (!isHeard(one, strip->comp->host->blocks)) continue;
            insert = one.comp;
            late = &one;
        }
    } else if ((insert = strip->inserts.items(at++)) && plan) {
        late = plan->latency().insertOf(insert);
    }
    return insert != nullptr;
}

void InsertRun::begin() {
    CInputChannel* const in = insert->input();
    insert->prepare(frames);
    copyStereo(in->bufL, in->bufR, src, frames);
    if (CMIDIQ* port = insert->inPort()) passEvents(events, port, late, frames);
}

/// What went in, as late as what comes out.
CInputChannel* InsertRun::delayedDry() const {
    CInputChannel* const in = insert->input();
    DelayLine* const line = late ? late->dry.get() : nullptr;
    if (line && line->idle()) line->skip();
    if (!line || line->idle()) return in;
    CInputChannel& room = insert->host->scratch().arrival;
    return line->process(src->bufL, src->bufR, room.bufL, room.bufR, frames) ? &room : in;
}

void InsertRun::end() {
    COutputChannel* const out = insert->output();
    const CInputChannel* const dry = delayedDry();
    const float share = fLimit(insert->wet, 0.0f, 1.0f);
    insert->process(frames);
    blendInsert(insert, dry, share, frames);
    if (late && late->fade) followFade(*late, out, dry, frames);
    src = out;
    out->udpatePeaks(frames);
    insert = nullptr;
}

void InsertRun::toNext(const std::vector<AheadInsert>& ahead) {
    if (insert) end();
    while (take()) {
        if (!insert->input() || !insert->output()) continue;
        begin();
        const auto known = std::ranges::find(ahead, insert, &AheadInsert::insert);
        if (known != ahead.end()) return known->work->beginAhead(frames);
        end();
    }
}

void InsertRun::finish() {
    toNext({});
    if (src != strip) copyStereo(strip->bufL, strip->bufR, src, frames);
}

AheadStrips::AheadStrips(std::vector<AheadInsert> inserts, size_t strips)
    : ahead(std::move(inserts)) {
    runs.reserve(strips);
}

void AheadStrips::begin(CComp* comp, int frames) {
    open = true;
    comp->fx(frames);
    open = false;
}

bool AheadStrips::take(const InsertRun& run) {
    if (!open || runs.size() == runs.capacity()) return false;
    runs.push_back(run);
    runs.back().toNext(ahead);
    return true;
}

void AheadStrips::goOn() {
    for (InsertRun& run : runs) run.toNext(ahead);
}

void AheadStrips::finish() {
    for (InsertRun& run : runs) run.finish();
    runs.clear();
}

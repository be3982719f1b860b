#include "engine/SendTap.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/StripEvents.h"
#include "engine/plan/GraphPlan.h"

#include <algorithm>

namespace {

/// A stretch of the block that goes to a bus at one level.
struct SendPiece {
    const COutputChannel* ch;
    CInputChannel* to;
    int frames, offset;
    bool silent; ///< nothing is added
};

void feedPiece(const SendPiece& p, float level) {
    if (level == 0.0f || p.silent) return;
    addScaled(p.to->bufL + p.offset, p.ch->bufL + p.offset, p.frames, level * level);
    addScaled(p.to->bufR + p.offset, p.ch->bufR + p.offset, p.frames, level * level);
}

void fadePiece(const SendPiece& p, float level, PlanFade& gate) {
    for (int i = 0; i < p.frames && !p.silent; ++i) {
        const float amount = level * level * gate.at(i);
        p.to->bufL[p.offset + i] += p.ch->bufL[p.offset + i] * amount;
        p.to->bufR[p.offset + i] += p.ch->bufR[p.offset + i] * amount;
    }
    gate.advance(p.frames);
}

/// `away`: nothing of it is to be heard, or no more.
void feedThrough(CSend* send, const SendPiece& p, float level, bool away) {
    if (!send->settled || level == 0.0f) send->gate = PlanFade::still(away);
    send->settled = true;
    send->gate.follow(away, fadeFrames(send->comp->host));
    if (send->gate.running())
        fadePiece(p, level, send->gate);
    else if (!send->gate.over())
        feedPiece(p, level);
}

} // namespace

SendTap::SendTap(int channels, int numBuses)
    : heard(size_t(channels)), levels(size_t(channels) * size_t(numBuses)), buses(numBuses) {
}

void SendTap::begin() {
    pieces = 0;
    moved = false;
}

void SendTap::beforeEvents(const CComp* c) {
    if (moved) return;
    moved = true;
    auto level = levels.begin();
    for (const auto* ch : c->outputs)
        for (int k = 0; k < buses && level != levels.end(); ++k)
            *level++ = ch->sendLevels[k]->level;
}

void SendTap::take(const COutputChannel* ch, int index) {
    if (index >= int(heard.size()) || pieces >= mostPieces) return;
    heard[size_t(index)][size_t(pieces)] = !ch->mute && heardInSolo(ch);
}

void SendTap::feed(const PlanNode& from, int index, int bus, CInputChannel* to, int frames) const {
    const COutputChannel* ch = from.comp->output(index);
    if (!ch || index >= int(heard.size())) return;
    const auto& open = heard[size_t(index)];
    CSend* const send = ch->sendLevels[bus];
    const bool away = send->muted != 0, silent = from.silence >= frames;
    if (!moved)
        return feedThrough(send, {ch, to, frames, 0, silent}, send->level, away || !open[0]);
    float level = levels[size_t(index) * size_t(buses) + size_t(bus)];
    size_t piece = 0;
    eachStripEvent(
        from.comp, from.stripEvents(), frames,
        [&](int n, int offset) {
            feedThrough(send, {ch, to, n, offset, silent}, level, away || !open[piece++]);
        },
        [&](const StripTarget& strip, const CMIDIBytes* e) {
            if (strip.send == send && e->param == 0) level = fLimit(e->value, 0.0f, 1.0f);
        });
}

#include "engine/SendTap.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/StripEvents.h"
#include "engine/plan/GraphPlan.h"

#include <algorithm>

namespace {

void feedPiece(const COutputChannel* ch, float level, CInputChannel* to, int frames, int offset) {
    if (level == 0.0f) return;
    addScaled(to->bufL + offset, ch->bufL + offset, frames, level * level);
    addScaled(to->bufR + offset, ch->bufR + offset, frames, level * level);
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
    const CSend* send = ch->sendLevels[bus];
    if (send->muted) return;
    if (!moved) {
        if (open[0]) feedPiece(ch, send->level, to, frames, 0);
        return;
    }
    float level = levels[size_t(index) * size_t(buses) + size_t(bus)];
    size_t piece = 0;
    eachStripEvent(
        from.comp, from.stripEvents(), frames,
        [&](int n, int offset) {
            if (open[piece++]) feedPiece(ch, level, to, n, offset);
        },
        [&](const StripTarget& target, const CMIDIBytes* e) {
            if (target.send == send && e->param == 0) level = fLimit(e->value, 0.0f, 1.0f);
        });
}

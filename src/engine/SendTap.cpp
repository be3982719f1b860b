#include "engine/SendTap.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/StripEvents.h"

#include <algorithm>

SendTap::SendTap(int numChannels, int numBuses, int frames)
    : channels(size_t(numChannels)), levels(size_t(numChannels) * size_t(numBuses)),
      buses(numBuses) {
    for (Channel& ch : channels) {
        ch.left.resize(size_t(frames));
        ch.right.resize(size_t(frames));
    }
}

void SendTap::begin() {
    pieces = 0;
    moved = false;
}

void SendTap::beforeEvents(const CComp* c) {
    if (moved) return;
    moved = true;
    auto level = levels.begin();
    for (const auto* ch : each<COutputChannel>(c->outputs))
        for (int k = 0; k < buses && level != levels.end(); ++k)
            *level++ = ch->sendLevels[k]->level;
}

void SendTap::take(COutputChannel* ch, int index, unsigned block, int frames, int offset) {
    if (index >= int(channels.size()) || pieces >= mostPieces) return;
    Channel& to = channels[size_t(index)];
    to.heard[size_t(pieces)] = !ch->mute && heardInSolo(ch);
    to.late = ch->pdc.delay != 0;
    if (!to.late) return;
    ch->pdc.enter(block);
    for (int i = offset; i < offset + frames; ++i)
        ch->pdc.exchange(ch->bufL[i], ch->bufR[i], to.left[size_t(i)], to.right[size_t(i)]);
}

void SendTap::feedPiece(const Channel& from, const COutputChannel* ch, float level,
                        CInputChannel* to, int frames, int offset) const {
    const float* left = from.late ? from.left.data() : ch->bufL;
    const float* right = from.late ? from.right.data() : ch->bufR;
    addScaled(to->bufL + offset, left + offset, frames, level * level);
    addScaled(to->bufR + offset, right + offset, frames, level * level);
}

void SendTap::feed(CComp* c, int bus, CInputChannel* to, int frames) const {
    size_t index = 0;
    for (const auto* ch : each<COutputChannel>(c->outputs)) {
        if (index == channels.size()) return;
        const Channel& from = channels[index];
        const CSend* send = ch->sendLevels[bus];
        float level = moved ? levels[index * size_t(buses) + size_t(bus)] : float(send->level);
        ++index;
        if (send->muted) continue;
        if (!moved) {
            if (from.heard[0] && level != 0.0f) feedPiece(from, ch, level, to, frames, 0);
            continue;
        }
        size_t piece = 0;
        eachStripEvent(
            c, frames,
            [&](int n, int offset) {
                if (from.heard[piece++] && level != 0.0f) feedPiece(from, ch, level, to, n, offset);
            },
            [&](const StripTarget& target, const CMIDIBytes* e) {
                if (target.send == send && e->param == 0) level = fLimit(e->value, 0.0f, 1.0f);
            });
    }
}

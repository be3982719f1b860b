#include "engine/SendOrder.h"

#include "engine/CComp.h"
#include "engine/CUndo.h"

#include <cassert>
#include <utility>

namespace {

struct SendValues {
    float level = 0.0f;
    int muted = 0, shownLevel = -1;
    PlanFade gate{};
    bool settled = false;
};

SendValues get(const CSend* send) {
    return {send->level, send->muted, send->shownLevel, send->gate, send->settled};
}

void set(CSend* send, const SendValues& v) {
    send->level = v.level;
    send->muted = v.muted;
    send->shownLevel = v.shownLevel;
    send->gate = v.gate;
    send->settled = v.settled;
}

SendValues takeOut(COutputChannel* ch, int at) {
    const SendValues out = get(ch->sendLevels[at]);
    for (int k = at; k + 1 < maxSends; ++k) set(ch->sendLevels[k], get(ch->sendLevels[k + 1]));
    set(ch->sendLevels[maxSends - 1], {});
    return out;
}

void putIn(COutputChannel* ch, int at, const SendValues& v) {
    for (int k = maxSends - 1; k > at; --k) set(ch->sendLevels[k], get(ch->sendLevels[k - 1]));
    set(ch->sendLevels[at], v);
}

bool isPlace(int at) {
    return at >= 0 && at < maxSends;
}

void shiftSends(COutputChannel* ch, int from, int to) {
    SendValues v;
    if (isPlace(from)) v = takeOut(ch, from);
    if (isPlace(to)) putIn(ch, to, v);
}

template <class T>
void exchange(Shared<T>& field, T& stored) {
    const T now = field;
    field = stored;
    stored = now;
}

} // namespace

CSendRecord::CSendRecord(COutputChannel* ch) : channel(ch) {
    store();
}

void CSendRecord::store() {
    for (int k = 0; k < maxSends; ++k) {
        const CSend* send = channel->sendLevels[k];
        level[k] = send->level;
        muted[k] = send->muted;
        shownLevel[k] = send->shownLevel;
    }
}

void CSendRecord::storeGates() {
    for (int k = 0; k < maxSends; ++k) {
        gate[k] = channel->sendLevels[k]->gate;
        settled[k] = channel->sendLevels[k]->settled;
    }
}

void CSendRecord::swapLevels() {
    for (int k = 0; k < maxSends; ++k) {
        exchange(channel->sendLevels[k]->level.written(), level[k]);
        exchange(channel->sendLevels[k]->muted, muted[k]);
        exchange(channel->sendLevels[k]->shownLevel, shownLevel[k]);
        std::swap(channel->sendLevels[k]->gate, gate[k]);
        std::swap(channel->sendLevels[k]->settled, settled[k]);
    }
}

void reorderSends(CUndoItem* item, int from, int to) {
    assert(item->owner->comp->heldByThread());
    for (auto* record : item->reorder) {
        if (item->sendsStored) {
            record->swapLevels();
            continue;
        }
        record->store();
        record->storeGates();
        shiftSends(record->channel, from, to);
    }
    item->sendsStored = true;
}

#include "engine/Solo.h"

#include "engine/CQV.h"

#include <cassert>

namespace {

template <class F>
void eachStrip(const ListOf<CComp>& comps, F&& visit) {
    for (CComp* c : comps)
        for (COutputChannel* ch : c->outputs) visit(c, ch);
}

/// Spares strips, each once: one that is spared already is not followed again.
class Spread {
public:
    explicit Spread(CQV* root) : host(root) {}

    void spareFeeds(CComp* c, COutputChannel* ch) {
        if (depth == maxPullDepth) return;
        ++depth;
        CComp* const track = c->type == compSeq ? c->getComp(ch) : nullptr;
        for (const CAudioCable* cable : c->audioCables)
            if (!track || track->inputs.contains(cable->toChannel))
                spare(cable->fromComp, cable->fromChannel);
        const int bus = c->type == compGroupCh ? host->sends.indexed(c) : -1;
        if (bus >= 0) spareSenders(bus);
        --depth;
    }

private:
    void spare(CComp* c, COutputChannel* ch) {
        if (!c || !ch || !ch->anySolo) return;
        ch->anySolo = 0;
        spareFeeds(c, ch);
    }
    void spareSenders(int bus) {
        if (bus >= maxSends) return;
        eachStrip(host->comps, [this, bus](CComp* c, COutputChannel* ch) {
            const CSend* send = ch->sendLevels[bus];
            if (!send->muted && send->level > 0.0f) spare(c, ch);
        });
    }

    CQV* host;
    int depth = 0;
};

} // namespace

void spreadSolo(CQV* host) {
    assert(host->heldByThread());
    int solo = 0;
    for (const auto* list : listsOf(host->comps, host->sends))
        eachStrip(*list, [&solo](CComp*, const COutputChannel* ch) { solo |= ch->solo ? 1 : 0; });
    for (const auto* list : listsOf(host->comps, host->sends))
        eachStrip(*list,
                  [solo](CComp*, COutputChannel* ch) { ch->anySolo = ch->soloSafe ? 0 : solo; });
    if (!solo) return;
    Spread spread(host);
    for (const auto* list : listsOf(host->comps, host->sends))
        eachStrip(*list, [&spread](CComp* c, COutputChannel* ch) {
            if (ch->solo) spread.spareFeeds(c, ch);
        });
    eachStrip(host->sends, [](CComp*, COutputChannel* ch) { ch->anySolo = 0; });
}

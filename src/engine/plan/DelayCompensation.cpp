#include "engine/plan/DelayCompensation.h"

#include "engine/CQV.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr int maxReported = 1 << 20;
constexpr int maxSum = 1 << 30;

int reported(CComp* c) {
    return std::clamp(c->getDelay(), 0, maxReported);
}

/// The sums of one round. Each channel is worked out once, however many paths come through it.
class DelaySums {
public:
    explicit DelaySums(CQV* host) : round(++host->delayRounds) {}

    int of(CComp* c, COutputChannel* ch) {
        if (!c || !ch || c->summing || depth >= maxPullDepth) return 0;
        if (ch->delayRound == round) return ch->delaySum;
        if (c->enabled != 1 || c->freezed(ch)) return 0;
        const int sum = std::min(ownDelay(c, ch) + longestBefore(c, ch), maxSum);
        ch->delayRound = round;
        ch->delaySum = sum;
        return sum;
    }

private:
    static int ownDelay(CComp* c, COutputChannel* ch) {
        int sum = reported(c);
        for (CComp* insert : each<CComp>(ch->inserts))
            if (insert->enabled == 1) sum = std::min(sum + reported(insert), maxSum);
        return sum;
    }
    /// A track waits for what arrives at it, and not for what the other tracks get.
    int longestBefore(CComp* c, COutputChannel* ch) {
        const CComp* const track = c->type == compSeq ? c->getComp(ch) : nullptr;
        ++depth;
        c->summing = true;
        int longest = 0;
        for (const CAudioCable* cable : each<CAudioCable>(c->audioCables))
            if (!track || track->inputs.contains(cable->toChannel))
                longest = std::max(longest, of(cable->fromComp, cable->fromChannel));
        c->summing = false;
        --depth;
        return std::min(longest, maxSum - maxReported);
    }

    const unsigned round;
    int depth = 0;
};

/// Calls `work(cable)` for each cable into an audio out from a source of that kind.
template <class F>
void eachCable(CQV* host, int kind, F&& work) {
    for (const CComp* c : each<CComp>(host->comps)) {
        if (c->type != compAudioOut) continue;
        for (CAudioCable* cable : each<CAudioCable>(c->audioCables))
            if (cable->fromComp->listKind == kind) work(cable);
    }
}

} // namespace

int sumDelay(CComp* c, COutputChannel* ch) {
    assert(c->heldByThread());
    return DelaySums(c->host).of(c, ch);
}

// The tap of a channel that is heard through a group, or not at all at present, is evened out like
// those of the cables: all sends are fed at the same latency.
void CQV::calcPDC() {
    assert(heldByThread());
    DelaySums sums(this);
    int sendMax = 0, inMax = 0;
    eachCable(this, listSends, [&](CAudioCable* cable) {
        cable->pdc->base = sums.of(cable->fromComp, cable->fromChannel);
        sendMax = std::max(sendMax, cable->pdc->base);
    });
    eachCable(this, listSends, [&](CAudioCable* cable) { cable->pdc->setDelay(sendMax); });
    pdcSendDelay = sendMax;
    eachCable(this, listComps, [&](CAudioCable* cable) {
        cable->pdc->base = sums.of(cable->fromComp, cable->fromChannel);
        inMax = std::max(inMax, cable->pdc->base);
    });
    eachCable(this, listComps, [&](CAudioCable* cable) { cable->pdc->setDelay(sendMax + inMax); });
    pdcInDelay = inMax;
    for (CComp* c : each<CComp>(comps)) {
        for (COutputChannel* ch : each<COutputChannel>(c->outputs)) {
            ch->pdc.base = sums.of(c, ch);
            ch->pdc.setDelay(std::max(inMax, ch->pdc.base));
        }
    }
}

#include "sequencer/CRender.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/DelayCompensation.h"

#include <algorithm>
#include <cmath>

namespace {

/// Renders of one project are equal byte for byte, so chance begins anew with each.
constexpr unsigned renderSeed = 1;

/// Makes the host a renderer for a while: transport stopped, rate and start position set; and puts
/// everything back.
class RenderState {
public:
    RenderState(CQV* master, double rate, double startTick)
        : host(master), oldRate(double(host->rate)), oldPos(songPos()), oldTempo(host->tempo),
          oldTempoNow(host->tempoNow), oldMode(host->renderMode) {
        if (host->playing) host->stop();
        settle();
        host->renderMode = 1;
        host->setRate(rate);
        host->setPos(startTick);
        host->framesPlayed = 0;
        seedRand(renderSeed);
    }
    ~RenderState() {
        host->stop();
        settle();
        host->renderMode = oldMode;
        host->setRate(oldRate);
        host->setPos(oldPos);
        host->tempo = oldTempo;
        host->tempoNow = oldTempoNow;
    }
    RenderState(const RenderState&) = delete;
    RenderState& operator=(const RenderState&) = delete;

private:
    double songPos() const {
        CComp* seq = host->firstOfType(compSeq);
        return seq ? seq->getPos() : double(host->pos);
    }
    /// One block, in which a stop is served and what still sounds is silenced.
    void settle() {
        host->prepare(host->frames);
        host->process(host->frames);
        for (CComp* c : each<CComp>(host->comps)) c->allNotesOff = 1;
        host->prepare(host->frames);
        host->process(host->frames);
    }

    CQV* host;
    double oldRate, oldPos;
    float oldTempo, oldTempoNow;
    int oldMode;
};

float clipped(float v) {
    if (!std::isfinite(v)) return 0.0f;
    return v >= 1.0f ? 1.0f : (v <= -1.0f ? -1.0f : v);
}

} // namespace

CRender::CRender(CQV* host, CComp* component) : qv(host), comp(component) {
}

void CRender::setFilename(const CStr& path) {
    folder = extractFilePath(path);
    filename = path;
}

void CRender::setTarget(COutputChannel* channel, CSample* file) {
    targets.push_back({channel, file});
}

CSample* CRender::fileOf(const COutputChannel* channel) const {
    for (const Target& t : targets)
        if (t.channel == channel) return t.file;
    return nullptr;
}

void CRender::runBlock(int n) {
    qv->prepare(n);
    qv->process(n);
}

/// Adds (`mix`) or copies a channel's block to the buffers, narrowed to what its file takes.
void CRender::capture(Target& target, int n, bool mix) {
    const COutputChannel* ch = target.channel;
    const bool mono = target.file->chs == 1;
    for (int i = 0; i < n; i++) {
        const float middle = (ch->bufL[i] + ch->bufR[i]) * 0.5f;
        const float l = mono ? middle : ch->bufL[i];
        const float r = mono ? middle : ch->bufR[i];
        left[size_t(i)] = clipped(mix ? left[size_t(i)] + l : l);
        right[size_t(i)] = clipped(mix ? right[size_t(i)] + r : r);
    }
}

void CRender::write(Target& target, int n) {
    const int skipped = int(std::min<int64_t>(target.skip, n));
    target.skip -= skipped;
    if (skipped < n)
        target.file->writeFrames(n - skipped, left.data() + skipped, right.data() + skipped);
}

void CRender::run(double lengthTicks, CList* outputs, bool mix, RenderProgress* follower) {
    int64_t skip = qv->pdcInDelay + qv->pdcSendDelay;
    double rest = lengthTicks;
    while (asInt(rest) > 0 && !cancelled) {
        int n = asMinMax(asInt(qv->ticksToFrames(rest)), 1, qv->frames);
        if (skip > 0) n = int(std::min<int64_t>(n, skip));
        runBlock(n);
        if (skip > 0) {
            skip -= n;
            continue;
        }
        std::fill_n(left.begin(), n, 0.0f);
        std::fill_n(right.begin(), n, 0.0f);
        for (Target& t : targets) {
            if (outputs->indexed(t.channel) < 0) continue;
            capture(t, n, mix);
            if (!mix) write(t, n);
        }
        if (mix) write(targets.front(), n);
        framesWritten += n;
        rest -= qv->framesToTicks(n);
        progress = float((lengthTicks - rest) / lengthTicks);
        if (follower && !follower->onRender(progress)) cancelled = true;
    }
}

void CRender::process(double startTick, double lengthTicks, CList* outputs, bool mix,
                      RenderProgress* follower) {
    if (outputs->getCount() == 0 || targets.empty()) return;
    GraphHold hold(qv);
    cancelled = false;
    progress = 0.0f;
    framesWritten = 0;
    left.assign(size_t(qv->frames), 0.0f);
    right.assign(size_t(qv->frames), 0.0f);
    for (COutputChannel* ch : each<COutputChannel>(*outputs)) ch->holdL = ch->holdR = 0.0f;
    {
        RenderState state(qv, rate, startTick);
        qv->start();
        run(lengthTicks, outputs, mix, follower);
    }
    progress = 1.0f;
    for (Target& t : targets) {
        t.file->writeHeader();
        t.file->finalize();
    }
}

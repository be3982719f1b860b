#include "sequencer/render/CRender.h"

#include "audiofiles/CSample.h"
#include "audiofiles/FileRoom.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "engine/ObjectKinds.h"
#include "engine/SongClock.h"
#include "engine/plan/GraphPlan.h"
#include "sequencer/render/SilentGraph.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* rangeNames[] = {"All tracks and parts", "Left - Right locator",
                                      "Selected parts only"};
/// Frames by which what is left of a sum of ticks may fall short of what it stands for.
constexpr double countNoise = 0.01;
constexpr float quietLevel = 1.6e-5f; ///< -96 dB
/// Quiet for so long nothing more comes: the longest echo takes less.
constexpr double quietSeconds = 6.0, mostTailSeconds = 30.0;

/// Makes the host a renderer for a while: transport stopped, rate and start position set; and puts
/// everything back.
class RenderState {
public:
    RenderState(CQV* master, double rate, double startTick)
        : host(master), oldRate(double(host->rate)), oldPos(songPos()), oldTempo(host->tempo),
          oldTempoNow(host->tempoNow), oldMode(host->renderMode) {
        if (host->playing) host->stop();
        settle();
        host->deviceMidi->askSilence();
        host->renderMode = 1;
        host->setRate(rate);
        if (CComp* seq = host->firstOfType(compSeq)) compAs<CSeq>(seq)->stretchersAhead.makeAll();
        host->setPos(startTick);
        host->framesPlayed = 0;
        workOutLatency();
        silenceGraph(host);
    }
    ~RenderState() {
        host->stop();
        settle();
        host->renderMode = oldMode;
        host->setRate(oldRate);
        host->setPos(oldPos);
        workOutLatency();
        silenceGraph(host);
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
    /// A track that is frozen plays its events in a render, so it has another latency there.
    void workOutLatency() {
        host->hostNotices.raise(HostNotice::delays);
        settle();
    }
    /// One block, in which a stop is served and what still sounds is silenced.
    void settle() {
        host->prepare(host->frames);
        host->process(host->frames);
        for (CComp* c : host->comps) c->allNotesOff = 1;
        host->prepare(host->frames);
        host->process(host->frames);
    }

    CQV* host;
    double oldRate, oldPos;
    float oldTempo, oldTempoNow;
    int oldMode;
};

/// The host works out only what some channels are made of, for a while.
class OnlyFor {
public:
    OnlyFor(CQV* master, const ListOf<COutputChannel>& channels) : host(master) {
        std::vector<COutputChannel*> kept;
        for (COutputChannel* ch : channels) kept.push_back(ch);
        host->plans->current().keepTo(kept);
    }
    ~OnlyFor() { host->plans->current().keepTo({}); }
    OnlyFor(const OnlyFor&) = delete;
    OnlyFor& operator=(const OnlyFor&) = delete;

private:
    CQV* host;
};

float finite(float v) {
    return std::isfinite(v) ? v : 0.0f;
}

/// Keeps what a file takes, and raises `peak` to what it was.
void clip(float* side, int count, float& peak) {
    for (int i = 0; i < count; i++) {
        peak = std::max(peak, std::fabs(side[i]));
        side[i] = std::clamp(side[i], -1.0f, 1.0f);
    }
}

} // namespace

const char* renderRangeName(int rangeMode) {
    return rangeNames[asMinMax(rangeMode, rangeSong, rangeSelected)];
}

CRender::CRender(CQV* host, CComp* component) : qv(host), comp(component) {
}

namespace {

const char* const settingsSection = "render";

/// A choice as it lies in the settings file.
struct Setting {
    const char* key;
    int CRender::*field;
    int low, high, step; ///< what is allowed: `low`, and on in steps
};

const Setting settings[] = {
    {"source", &CRender::rangeMode, rangeSong, rangeSelected, 1},
    {"bits", &CRender::bits, 16, 32, 8},
    {"channels", &CRender::chs, 1, 2, 1},
    {"rate", &CRender::rate, 8000, 192000, 1},
    {"ext", &CRender::format, renderWav, renderMp3, 1},
    {"bitrate", &CRender::bitrate, 32, 320, 1},
    {"multitrack", &CRender::multiTrack, 0, 1, 1},
    {"tail", &CRender::tailMs, tailAuto, 3600000, 1},
};

} // namespace

void CRender::chooseUsual() {
    tailMs = tailAuto;
    readSettings();
    filename = changeFileExt(qv->projectFile, "");
    outputs.clear();
    for (CComp* c : qv->comps)
        if (c->type == compAudioOut && c->output()) outputs.add(c->output());
}

void CRender::readSettings() {
    if (!qv->settingsEnabled) return;
    for (const Setting& s : settings) {
        const int value = iniReadInt(settingsSection, s.key, this->*s.field);
        if (value >= s.low && value <= s.high && (value - s.low) % s.step == 0)
            this->*s.field = value;
    }
}

void CRender::writeSettings() const {
    if (!qv->settingsEnabled) return;
    const CIniBatch batch(inifile);
    CIniFile file(inifile);
    for (const Setting& s : settings) file.writeInteger(settingsSection, s.key, this->*s.field);
}

void CRender::setTarget(COutputChannel* channel, CSample* file) {
    targets.push_back({channel, file});
}

int64_t CRender::hostLatency() const {
    return qv->plans->latency();
}

/// The outs of the host wait for the latest of them; other channels lag by their own.
int64_t CRender::latencyOf(COutputChannel* channel) const {
    if (channel->comp->type == compAudioOut) return hostLatency();
    const PlanOrigin* origin = qv->plans->current().latency().originOf(channel);
    return origin ? origin->latency : 0;
}

void CRender::runBlock(int n) {
    qv->prepare(n);
    qv->process(n);
}

/// Adds (`mix`) or copies a channel's block to the buffers.
void CRender::capture(const Target& target, int n, bool mix) {
    const COutputChannel* ch = target.channel;
    const bool mono = target.file->chs == 1;
    for (int i = 0; i < n; i++) {
        const float middle = (ch->bufL[i] + ch->bufR[i]) * 0.5f;
        const float l = mono ? middle : ch->bufL[i];
        const float r = mono ? middle : ch->bufR[i];
        left[size_t(i)] = finite(mix ? left[size_t(i)] + l : l);
        right[size_t(i)] = finite(mix ? right[size_t(i)] + r : r);
    }
}

/// Writes what is due of a block: not the latency at the start, nor what lies behind the end.
void CRender::write(Target& target, int n) {
    const int from = int(std::min<int64_t>(target.skip, n));
    target.skip -= from;
    const int count = int(std::min<int64_t>(n - from, framesWritten - target.written));
    if (count < 1) return;
    float *l = left.data() + from, *r = right.data() + from;
    clip(l, count, peakLeft);
    clip(r, count, peakRight);
    target.file->writeFrames(count, l, r);
    for (int i = count; i-- > 0;)
        if (std::fabs(l[i]) > quietLevel || std::fabs(r[i]) > quietLevel) {
            target.audible = target.written + i + 1;
            break;
        }
    target.written += count;
}

void CRender::captureAll(int n, const Job& job) {
    std::fill_n(left.begin(), n, 0.0f);
    std::fill_n(right.begin(), n, 0.0f);
    for (Target& t : targets) {
        if (job.captured->indexed(t.channel) < 0) continue;
        capture(t, n, job.mix);
        if (!job.mix) write(t, n);
    }
    if (job.mix) write(targets.front(), n);
}

/// The targets whose files are written to: of a mix the first.
std::span<CRender::Target> CRender::writers(const Job& job) {
    return std::span(targets).first(job.mix ? 1 : targets.size());
}

/// Whole frames of so many ticks, at the tempo of the coming block.
int CRender::framesIn(double ticks) const {
    const float tempo = qv->clock->due() ? qv->tempo : qv->tempoNow;
    return asInt(ticks * rate / (double(tempo) * ticksPerSecondPerBpm) + countNoise);
}

/// Plays the range. What it brings lags behind by the latency.
void CRender::runRange(double lengthTicks, const Job& job) {
    double rest = asInt(lengthTicks) > 0 ? lengthTicks : 0.0;
    while (!cancelled) {
        const int n = std::min(framesIn(rest), std::min(qv->frames, qv->clock->room()));
        if (n < 1) break;
        runBlock(n);
        framesWritten += n;
        captureAll(n, job);
        rest -= n * qv->ticksPerFrame();
        progress = float((lengthTicks - rest) / lengthTicks);
        if (job.follower && !job.follower->onRender(progress)) cancelled = true;
    }
}

bool CRender::hasDiedAway(int64_t rangeEnd, const Job& job) {
    const auto quiet = int64_t(quietSeconds * rate);
    return std::ranges::all_of(writers(job), [&](const Target& t) {
        return t.written - std::max(t.audible, rangeEnd) >= quiet;
    });
}

/// Ends all files where the last of them has died away.
void CRender::cutQuiet(int64_t rangeEnd, const Job& job) {
    framesWritten = rangeEnd;
    for (const Target& t : writers(job)) framesWritten = std::max(framesWritten, t.audible);
    for (Target& t : writers(job)) cutTo(*t.file, int(framesWritten));
}

/// Brings the end of the range, which the latency has kept back, and the tail.
void CRender::runRest(bool stop, const Job& job) {
    const int64_t rangeEnd = framesWritten;
    if (stop) qv->stop();
    framesWritten +=
        tailMs == tailAuto ? int64_t(mostTailSeconds * rate) : int64_t(tailMs) * rate / 1000;
    for (const Target& t : writers(job))
        framesWritten = std::clamp(framesWritten, rangeEnd, t.written + roomOf(*t.file));
    const auto owes = [&](const Target& t) {
        return job.captured->indexed(t.channel) >= 0 && t.written < framesWritten;
    };
    while (!cancelled && std::ranges::any_of(writers(job), owes)) {
        const int n = std::min(qv->frames, qv->clock->room());
        runBlock(n);
        captureAll(n, job);
        if (tailMs == tailAuto && hasDiedAway(rangeEnd, job)) break;
        if (job.follower && !job.follower->onRender(progress)) cancelled = true;
    }
    if (tailMs == tailAuto) cutQuiet(rangeEnd, job);
}

void CRender::run(double startTick, double lengthTicks, const Job& job) {
    for (Target& t : targets) {
        t.skip = job.mix ? hostLatency() : latencyOf(t.channel);
        t.written = t.audible = 0;
    }
    runRange(lengthTicks, job);
    const bool songGoesOn = startTick + lengthTicks < comp->renderDuration();
    if (!cancelled) runRest(tailMs != 0 && songGoesOn, job);
}

void CRender::process(double startTick, double lengthTicks, ListOf<COutputChannel>* captured,
                      bool mix, RenderProgress* follower) {
    if (captured->getCount() == 0 || targets.empty()) return;
    GraphHold hold(qv);
    cancelled = false;
    progress = 0.0f;
    framesWritten = 0;
    left.assign(size_t(qv->frames), 0.0f);
    right.assign(size_t(qv->frames), 0.0f);
    {
        const RenderState state(qv, rate, startTick);
        const OnlyFor only(qv, *captured);
        for (COutputChannel* ch : *captured) ch->holdL = ch->holdR = 0.0f;
        qv->start();
        run(startTick, lengthTicks, {captured, mix, follower});
    }
    progress = 1.0f;
    for (Target& t : targets) {
        t.file->writeHeader();
        t.file->finalize();
    }
}

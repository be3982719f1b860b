#include "sequencer/CRender.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/DelayCompensation.h"
#include "engine/DeviceMidi.h"
#include "sequencer/CSeq.h"
#include "sequencer/SilentGraph.h"

#include <algorithm>
#include <cmath>

namespace {

/// Renders of one project are equal byte for byte, so chance begins anew with each.
constexpr unsigned renderSeed = 1;
/// Frames by which a sum of ticks may fall short of what it stands for.
constexpr double countNoise = 1e-6;

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
        while (host->makeStretcher()) {
        }
        host->setPos(startTick);
        host->framesPlayed = 0;
        workOutLatency();
        silenceGraph(host);
        seedRand(renderSeed);
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
        host->update(updateDelays);
        settle();
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
};

} // namespace

void CRender::chooseUsual() {
    readSettings();
    filename = changeFileExt(qv->projectFile, "");
    outputs.clear();
    for (CComp* c : each<CComp>(qv->comps))
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
    return int64_t(qv->pdcInDelay) + qv->pdcSendDelay;
}

/// The outs of the host are compensated to the longest path; other channels lag by their own.
int64_t CRender::latencyOf(COutputChannel* channel) const {
    if (channel->comp->type == compAudioOut) return hostLatency();
    return sumDelay(channel->comp, channel);
}

void CRender::runBlock(int n) {
    qv->prepare(n);
    qv->process(n);
}

/// Adds (`mix`) or copies a channel's block to the buffers, narrowed to what its file takes.
void CRender::capture(const Target& target, int n, bool mix) {
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

/// Writes what is due of a block: not the latency at the start, nor what lies behind the range.
void CRender::write(Target& target, int n) {
    const int from = int(std::min<int64_t>(target.skip, n));
    target.skip -= from;
    const int count = int(std::min<int64_t>(n - from, framesWritten - target.written));
    if (count < 1) return;
    target.file->writeFrames(count, left.data() + from, right.data() + from);
    target.written += count;
}

void CRender::captureAll(CList* captured, int n, bool mix) {
    std::fill_n(left.begin(), n, 0.0f);
    std::fill_n(right.begin(), n, 0.0f);
    for (Target& t : targets) {
        if (captured->indexed(t.channel) < 0) continue;
        capture(t, n, mix);
        if (!mix) write(t, n);
    }
    if (mix) write(targets.front(), n);
}

/// Lets the latency of the mix pass, before the range counts.
void CRender::runPreRoll() {
    for (int64_t skip = hostLatency(); skip > 0;) {
        const int n = int(std::min<int64_t>(skip, qv->frames));
        runBlock(n);
        skip -= n;
    }
}

/// Brings the end of the range, which the latency of a channel has kept back.
void CRender::runTail(CList* captured) {
    const auto owes = [&](const Target& t) {
        return captured->indexed(t.channel) >= 0 && t.written < framesWritten;
    };
    while (std::any_of(targets.begin(), targets.end(), owes)) {
        runBlock(qv->frames);
        captureAll(captured, qv->frames, false);
    }
}

void CRender::run(double lengthTicks, CList* captured, bool mix, RenderProgress* follower) {
    for (Target& t : targets) {
        t.skip = mix ? 0 : latencyOf(t.channel);
        t.written = 0;
    }
    if (mix) runPreRoll();
    double rest = lengthTicks;
    while (asInt(rest) > 0 && !cancelled) {
        const int n = asMinMax(asInt(qv->ticksToFrames(rest) + countNoise), 1, qv->frames);
        runBlock(n);
        framesWritten += n;
        captureAll(captured, n, mix);
        rest -= qv->framesToTicks(n);
        progress = float((lengthTicks - rest) / lengthTicks);
        if (follower && !follower->onRender(progress)) cancelled = true;
    }
    if (!mix && !cancelled) runTail(captured);
}

void CRender::process(double startTick, double lengthTicks, CList* captured, bool mix,
                      RenderProgress* follower) {
    if (captured->getCount() == 0 || targets.empty()) return;
    GraphHold hold(qv);
    cancelled = false;
    progress = 0.0f;
    framesWritten = 0;
    left.assign(size_t(qv->frames), 0.0f);
    right.assign(size_t(qv->frames), 0.0f);
    {
        RenderState state(qv, rate, startTick);
        for (COutputChannel* ch : each<COutputChannel>(*captured)) ch->holdL = ch->holdR = 0.0f;
        qv->start();
        run(lengthTicks, captured, mix, follower);
    }
    progress = 1.0f;
    for (Target& t : targets) {
        t.file->writeHeader();
        t.file->finalize();
    }
}

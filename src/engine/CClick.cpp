#include "engine/CClick.h"

#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/SongClock.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <new>

namespace {

/// Where a count-in begins in the sound: so near its end that nothing is heard of it.
constexpr int silentTail = 100;
constexpr float loudness = 3.0f;

struct Burst {
    static constexpr int frames = 4096;
    static constexpr int rate = 44100;
    static constexpr int peak = 32767;
    static constexpr double phaseStep = 0.025;
    static constexpr double share = 0.3;
};

} // namespace

CClick::CClick(CQV* root) : host(root), sound(new CSample) {
    defaultSound();
}

CClick::~CClick() {
    delete sound;
}

void CClick::defaultSound() {
    auto* values = static_cast<short*>(std::malloc(Burst::frames * sizeof(short)));
    if (!values) throw std::bad_alloc();
    double phase = 0.0;
    for (int i = 0; i < Burst::frames; ++i) {
        const int noise = asRandInt() % Burst::peak;
        const int value = phase > 0.0 ? Burst::peak - noise : noise - Burst::peak;
        const double envelope = 1.0 - double(i) / Burst::frames;
        values[i] = short(short(value * Burst::share) * std::pow(envelope, 4));
        phase += Burst::phaseStep;
        if (phase > 1.0) phase = -1.0;
    }
    sound->close();
    sound->setFormat(Burst::rate, 16, 1);
    sound->takeData(reinterpret_cast<unsigned char*>(values), Burst::frames);
}

void CClick::setPos(double ticks) {
    tickPos = std::fmod(ticks, beatTicks);
    samplePos = framesOf(tickPos);
}

double CClick::framesOf(double ticks) const {
    return ticks / host->ticksPerFrame();
}

void CClick::init() {
    assert(host->heldByThread());
    countIn = 0;
    if (!enabled || !(mode & clickCountIn)) return;
    countIn = asRound(framesOf(double(beatTicks) * beats));
    tickPos += beatTicks;
    samplePos = sound->frames - silentTail;
}

void CClick::endCountIn(double ticks) {
    assert(host->heldByThread());
    countIn = 0;
    setPos(ticks);
}

bool CClick::audible() const {
    if (!enabled || !sound->data || sound->streamed) return false;
    return ((mode & clickCountIn) && countIn > 0) || ((mode & clickRecord) && host->recording) ||
           ((mode & clickPlay) && host->playing);
}

void CClick::render(int frames) {
    assert(host->heldByThread());
    CComp* out = host->getAudioOut();
    const COutputChannel* ch = out ? out->output() : nullptr;
    const bool late = !line.idle();
    if (!late) line.skip();
    const CInputChannel& room = host->scratch().arrival;
    toL = late ? room.bufL : ch ? ch->bufL : nullptr;
    toR = late ? room.bufR : ch ? ch->bufR : nullptr;
    if (late)
        for (float* side : {toL, toR}) std::fill_n(side, frames, 0.0f);
    playBlock(frames);
    if (!late) return;
    line.process(toL, toR, toL, toR, frames);
    if (!ch) return;
    addScaled(ch->bufL, toL, frames, 1.0f);
    addScaled(ch->bufR, toR, frames, 1.0f);
}

void CClick::playBlock(int frames) {
    if (!host->playing && !host->recording) return;
    if (host->clock->begins()) tickPos = host->clock->exact(tickPos);
    const std::optional<Jump> jump = findJump(frames);
    play(0, jump ? jump->frame : frames);
    if (!jump) return;
    setPos(jump->ticks);
    play(jump->frame, frames);
}

std::optional<CClick::Jump> CClick::findJump(int frames) const {
    if (!host->playing) return {};
    CComp* const seq = host->masterSeq;
    const double reached = seq ? seq->getPos() : double(host->pos);
    const double frame = host->ticksPerFrame();
    const double expected = tickPos + frames * frame;
    if (std::fabs(std::remainder(reached - expected, beatTicks)) < frame) return {};
    int left = host->loopStart, right = host->loopEnd;
    if (seq) seq->getLoopSection(left, right);
    const double since = reached - left;
    if (!(since >= 0.0 && since <= (frames + 1) * frame)) return {};
    return Jump{std::clamp(frames - asRound(framesOf(since)), 0, frames), double(left)};
}

void CClick::play(int from, int to) {
    const double frame = host->ticksPerFrame();
    for (int done = from, n = 0; done < to; done += n) {
        n = to - done;
        const double left = beatTicks - tickPos;
        const bool due = n * frame >= left;
        if (due) n = std::clamp(asRound(framesOf(left)), 0, n);
        const double fit = (double(sound->frames) - samplePos) / double(speed);
        const int sounding = std::min(n, asInt(fit));
        if (toL && sounding >= 1 && audible()) mix(done, sounding);
        samplePos = due ? 0.0 : samplePos + n * double(speed);
        tickPos += n * frame - (due ? beatTicks : 0);
        countIn = std::max(countIn - n, 0);
    }
}

void CClick::mix(int offset, int frames) {
    float* soundL = host->scratch().left.data();
    float* soundR = host->scratch().right.data();
    if (!render_2(*sound, samplePos, double(speed), frames, soundL, soundR)) return;
    const float level = volume;
    const float factor = level * loudness * level;
    for (int i = 0; i < frames; ++i) {
        toL[offset + i] += soundL[i] * factor;
        toR[offset + i] += soundR[i] * factor;
    }
}

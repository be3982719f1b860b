#include "engine/CSamplePreview.h"

#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "engine/plan/GraphWorkers.h"

#include <cmath>
#include <memory>

namespace {

constexpr double rounding = 1e-6; ///< of a frame, which is no frame of its own

void forgetPreviewed(CQV* host, const ForgetSet& gone) {
    if (auto* preview = playerIn<CSamplePreview>(host->preview)) preview->forget(gone);
}

} // namespace

CSamplePreview* CSamplePreview::of(CQV* host) {
    if (auto* known = playerIn<CSamplePreview>(host->preview)) return known;
    auto made = std::make_unique<CSamplePreview>(host);
    made->join(host);
    return made.release();
}

CSamplePreview::CSamplePreview(CQV* root) : host(root) {
    enterForgetHook(forgetPreviewed);
}

void CSamplePreview::play(const CSample* sample, int from, int to, bool loop) {
    if (to > from) ask({sample, from, to, loop});
}

void CSamplePreview::stop() {
    ask({});
}

void CSamplePreview::ask(Span span) {
    wanted = span.sample != nullptr;
    span.number = asked + 1;
    requests.draft() = span;
    requests.publish();
    asked = span.number;
}

void CSamplePreview::settle() {
    if (settled()) return;
    const GraphHold hold(host);
    takeRequest();
}

void CSamplePreview::takeRequest() {
    if (!requests.take()) return;
    begin(requests.taken());
    served = requests.taken().number;
}

void CSamplePreview::forget(const ForgetSet& gone) {
    const GraphHold hold(host);
    takeRequest();
    if (gone.has(played.sample)) begin({});
}

void CSamplePreview::begin(const Span& span) {
    played = span;
    pos = span.from;
    sounding = span.sample != nullptr;
    heard = span.sample ? span.from : -1;
}

void CSamplePreview::process(float* left, float* right, float* tmpLeft, float* tmpRight,
                             int frames) {
    takeRequest();
    if (!played.sample) return;
    const float loud = gain;
    const double speed = double(played.sample->rate) / double(host->rate.load());
    if (!(speed > 0.0)) return begin({});
    for (int done = 0; done < frames;) {
        const int ahead = asInt(std::ceil((played.to - pos) / speed - rounding));
        if (ahead <= 0) {
            if (!played.loop) return begin({});
            pos = std::max<double>(played.from, pos - (played.to - played.from));
            continue;
        }
        const int n = asMin(frames - done, ahead);
        if (!render(*played.sample, {pos, speed, 0, played.from, played.to}, n, tmpLeft, tmpRight,
                    host->scratch().source.get(), ReadMode::live))
            return begin({});
        for (int i = 0; i < n; i++) {
            left[done + i] += tmpLeft[i] * loud;
            right[done + i] += tmpRight[i] * loud;
        }
        pos += n * speed;
        done += n;
    }
    heard = asInt(pos);
}

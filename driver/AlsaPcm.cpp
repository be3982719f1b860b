#include "driver/AlsaPcm.h"

#include "driver/Clock.h"
#include "driver/libaam.h"

#include <algorithm>
#include <alsa/asoundlib.h>
#include <cmath>
#include <cstdint>

namespace {

constexpr double int32Scale = 2147483647.0;
constexpr float int16Scale = 32767.0f;

template <class Sample, class Convert>
void interleave(const std::vector<float*>& planes, int frames, char* to, Convert convert) {
    Sample* out = reinterpret_cast<Sample*>(to);
    for (size_t c = 0; c < planes.size(); ++c) {
        for (size_t i = 0; i < size_t(frames); ++i)
            out[i * planes.size() + c] = convert(planes[c][i]);
    }
}

template <class Sample>
void separate(const char* from, int frames, const std::vector<float*>& planes, float scale) {
    const Sample* in = reinterpret_cast<const Sample*>(from);
    for (size_t c = 0; c < planes.size(); ++c) {
        for (size_t i = 0; i < size_t(frames); ++i)
            planes[c][i] = float(in[i * planes.size() + c]) * scale;
    }
}

AlsaPcm::Result failure(long error) {
    return error == -EPIPE || error == -ESTRPIPE ? AlsaPcm::Result::gap : AlsaPcm::Result::lost;
}

} // namespace

AlsaPcm::~AlsaPcm() {
    close();
}

void AlsaPcm::close() {
    if (pcm) snd_pcm_close(pcm);
    pcm = nullptr;
    planes.clear();
}

bool AlsaPcm::open(const std::string& name, bool playback, int wantedFrames, int wantedRate) {
    plays = playback;
    const auto direction = plays ? SND_PCM_STREAM_PLAYBACK : SND_PCM_STREAM_CAPTURE;
    if (snd_pcm_open(&pcm, name.c_str(), direction, SND_PCM_NONBLOCK) < 0) {
        pcm = nullptr;
        return false;
    }
    if (configure(wantedFrames, wantedRate)) return true;
    close();
    return false;
}

bool AlsaPcm::configure(int wantedFrames, int wantedRate) {
    snd_pcm_hw_params_t* params;
    snd_pcm_hw_params_alloca(&params);
    unsigned most = 0, hz = unsigned(wantedRate);
    if (snd_pcm_hw_params_any(pcm, params) < 0 ||
        snd_pcm_hw_params_set_access(pcm, params, SND_PCM_ACCESS_RW_INTERLEAVED) < 0 ||
        !chooseForm(params) || snd_pcm_hw_params_get_channels_max(params, &most) < 0)
        return false;
    // A converter offers thousands of channels; what lies behind it is mostly a pair.
    unsigned count = most > unsigned(aamMaxChannels) ? 2 : most;
    snd_pcm_uframes_t period = snd_pcm_uframes_t(wantedFrames), buffer = blocksBuffered * period;
    if (snd_pcm_hw_params_set_channels_near(pcm, params, &count) < 0 ||
        snd_pcm_hw_params_set_rate_near(pcm, params, &hz, nullptr) < 0 ||
        snd_pcm_hw_params_set_period_size_near(pcm, params, &period, nullptr) < 0 ||
        snd_pcm_hw_params_set_buffer_size_near(pcm, params, &buffer) < 0 ||
        snd_pcm_hw_params(pcm, params) < 0)
        return false;
    rate = int(hz);
    channels = int(count);
    periodFrames = int(period);
    bufferFrames = int(buffer);
    return channels <= aamMaxChannels;
}

bool AlsaPcm::chooseForm(void* params) {
    struct Choice {
        snd_pcm_format_t format;
        Form form;
    };
    constexpr Choice choices[] = {{SND_PCM_FORMAT_FLOAT, Form::float32},
                                  {SND_PCM_FORMAT_S32, Form::int32},
                                  {SND_PCM_FORMAT_S16, Form::int16}};
    for (const Choice& choice : choices) {
        auto* hardware = static_cast<snd_pcm_hw_params_t*>(params);
        if (snd_pcm_hw_params_set_format(pcm, hardware, choice.format) < 0) continue;
        form = choice.form;
        return true;
    }
    return false;
}

bool AlsaPcm::prepareBlocks(int frames) {
    blockFrames = frames;
    storage.assign(size_t(channels), std::vector<float>(size_t(frames)));
    planes.clear();
    for (auto& plane : storage) planes.push_back(plane.data());
    interleaved.assign(size_t(frames) * size_t(channels) * sampleBytes(), 0);

    // The stream starts when it is told to, and wakes us for whole blocks.
    snd_pcm_sw_params_t* params;
    snd_pcm_sw_params_alloca(&params);
    snd_pcm_uframes_t boundary = 0;
    return snd_pcm_sw_params_current(pcm, params) == 0 &&
           snd_pcm_sw_params_get_boundary(params, &boundary) == 0 &&
           snd_pcm_sw_params_set_start_threshold(pcm, params, boundary) == 0 &&
           snd_pcm_sw_params_set_avail_min(pcm, params, snd_pcm_uframes_t(frames)) == 0 &&
           snd_pcm_sw_params(pcm, params) == 0;
}

size_t AlsaPcm::sampleBytes() const {
    return form == Form::int16 ? sizeof(int16_t) : 4;
}

bool AlsaPcm::prepare() {
    return snd_pcm_prepare(pcm) == 0;
}

bool AlsaPcm::startNow() {
    return snd_pcm_start(pcm) == 0;
}

void AlsaPcm::drop() {
    snd_pcm_drop(pcm);
}

AlsaPcm::Result AlsaPcm::move(const std::atomic<bool>& stopping) {
    const Result ready = waitForBlock(stopping);
    if (ready != Result::done) return ready;
    if (plays) pack();
    const auto left = snd_pcm_uframes_t(blockFrames);
    const long moved = plays ? snd_pcm_writei(pcm, interleaved.data(), left)
                             : snd_pcm_readi(pcm, interleaved.data(), left);
    if (moved < 0) return failure(moved);
    if (moved < blockFrames) return Result::gap;
    if (!plays) unpack();
    return Result::done;
}

/// The device wakes us, or the clock does when the block should be there: some tell late, some in
/// coarse steps, some too early.
AlsaPcm::Result AlsaPcm::waitForBlock(const std::atomic<bool>& stopping) {
    constexpr int maxWaitMs = 20;
    constexpr int64_t patienceNs = 2 * nsPerSecond, pauseNs = nsPerMs / 5;
    const int64_t until = nowNs() + patienceNs;
    bool woken = false;
    while (!stopping.load(std::memory_order_relaxed)) {
        const snd_pcm_sframes_t available = snd_pcm_avail(pcm);
        if (available < 0) return failure(available);
        if (available >= blockFrames) return Result::done;
        if (nowNs() > until) return Result::lost;
        if (woken) sleepUntilNs(nowNs() + pauseNs);
        const int64_t missingNs = framesToNs(blockFrames - available, rate);
        woken = snd_pcm_wait(pcm, int(std::min(missingNs / nsPerMs + 1, int64_t(maxWaitMs)))) > 0;
    }
    return Result::stopped;
}

void AlsaPcm::pack() {
    char* to = interleaved.data();
    const auto limited = [](float x) { return std::clamp(x, -1.0f, 1.0f); };
    switch (form) {
    case Form::float32:
        return interleave<float>(planes, blockFrames, to, [](float x) { return x; });
    case Form::int32:
        return interleave<int32_t>(planes, blockFrames, to, [&](float x) {
            return int32_t(std::lrint(double(limited(x)) * int32Scale));
        });
    case Form::int16:
        return interleave<int16_t>(planes, blockFrames, to, [&](float x) {
            return int16_t(std::lrint(limited(x) * int16Scale));
        });
    }
}

void AlsaPcm::unpack() {
    const char* from = interleaved.data();
    switch (form) {
    case Form::float32:
        return separate<float>(from, blockFrames, planes, 1.0f);
    case Form::int32:
        return separate<int32_t>(from, blockFrames, planes, float(1 / int32Scale));
    case Form::int16:
        return separate<int16_t>(from, blockFrames, planes, 1 / int16Scale);
    }
}

#include "plugins/PinBuffers.h"

#include "engine/COutputChannel.h"

#include <algorithm>
#include <cstring>

namespace {

/// Calls `visit(channel, pin, width)` for the channels as far as there are pins.
template <class Channel, class F>
void eachChannel(const ListOf<Channel>& channels, int pins, F&& visit) {
    int pin = 0;
    for (auto* channel : channels) {
        const int width = channel->channels;
        if (width < 1 || width > 2 || pin + width > pins) return;
        visit(channel, pin, width);
        pin += width;
    }
}

bool allFinite(const float* samples, int frames) {
    constexpr uint32_t exponent = 0x7f800000u;
    uint32_t bad = 0;
    for (int i = 0; i < frames; i++) {
        uint32_t bits;
        std::memcpy(&bits, samples + i, sizeof bits);
        bad |= uint32_t((bits & exponent) == exponent);
    }
    return bad == 0;
}

} // namespace

void PinBuffers::make(int inputs, int outputs, int frames) {
    inCount = std::clamp(inputs, 0, int(Plugin::mostPins));
    outCount = std::clamp(outputs, 0, int(Plugin::mostPins));
    stride = (size_t(frames) * 2 + align - 1) / align * align + align;
    memory.assign(stride * size_t(ownPins + inCount + outCount), 0.0f);
    const auto buffer = [this](int number) { return memory.data() + stride * size_t(number); };
    for (int i = 0; i < Plugin::mostPins; i++) {
        ins[size_t(i)] = buffer(i < inCount ? ownPins + i : int(silentPin));
        outs[size_t(i)] = buffer(i < outCount ? ownPins + inCount + i : int(wastePin));
    }
}

void PinBuffers::take(const ListOf<CInputChannel>& channels, int frames, int offset) {
    std::fill_n(memory.data(), frames, 0.0f); // of the silent pin, which somebody may write to
    for (int i = 0; i < inCount; i++) std::fill_n(ins[size_t(i)], frames, 0.0f);
    eachChannel(channels, inCount, [&](const CInputChannel* channel, int pin, int width) {
        std::copy_n(channel->bufL + offset, frames, ins[size_t(pin)]);
        if (width == 2) std::copy_n(channel->bufR + offset, frames, ins[size_t(pin) + 1]);
    });
}

void PinBuffers::give(const ListOf<COutputChannel>& channels, int frames, int offset) const {
    eachChannel(channels, outCount, [&](COutputChannel* channel, int pin, int width) {
        std::copy_n(outs[size_t(pin)], frames, channel->bufL + offset);
        if (width == 2) std::copy_n(outs[size_t(pin) + 1], frames, channel->bufR + offset);
    });
}

void PinBuffers::clearOutputs(int frames) {
    for (int i = 0; i < outCount; i++) std::fill_n(outs[size_t(i)], frames, 0.0f);
}

bool PinBuffers::mendOutputs(int frames) {
    bool whole = true;
    for (int i = 0; i < outCount; i++) {
        if (allFinite(outs[size_t(i)], frames)) continue;
        std::fill_n(outs[size_t(i)], frames, 0.0f);
        whole = false;
    }
    return whole;
}

#pragma once

#include "base/CList.h"
#include "plugins/Plugin.h"

#include <array>
#include <vector>

class CInputChannel;
class COutputChannel;

/// What a plug-in reads and writes: a buffer for each of its pins, with room behind it for one that
/// writes too far. Pins that no channel stands for read silence, and write where nobody listens.
class PinBuffers {
public:
    /// For so many pins, and blocks of up to `frames`. Whoever has the graph, or for a component
    /// that is not linked yet.
    void make(int inputs, int outputs, int frames);

    // Graph holder. Channels of another width than 1 or 2 end the list of them.
    void take(const ListOf<CInputChannel>& channels, int frames, int offset);
    void give(const ListOf<COutputChannel>& channels, int frames, int offset) const;
    void clearOutputs(int frames);
    /// Whether all that was written are numbers; what is not becomes silence, pin by pin.
    bool mendOutputs(int frames);

    float** in() { return ins.data(); }
    float** out() { return outs.data(); }

private:
    static constexpr int align = 16; ///< floats
    static constexpr int silentPin = 0, wastePin = 1, ownPins = 2;

    std::vector<float> memory;
    size_t stride = 0;
    int inCount = 0, outCount = 0;
    /// Of all pins that a plug-in could have, as it may come to have more.
    std::array<float*, Plugin::mostPins> ins{}, outs{};
};

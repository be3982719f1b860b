#pragma once

#include "plugins/MadeEditor.h"
#include "plugins/vst2/Vst2Abi.h"

#include <atomic>
#include <memory>
#include <vector>

/// What a plug-in made for the tests has seen and is to do; each instance has one, and the
/// library's `latestMade` gives that of the last. How it behaves else is told by the name of its
/// file, so that copies of the one library are different plug-ins:
///
///     gain*      2 in, 2 out: times parameter 0, which is twice its share; 3 programs, no chunk
///     lateN      2 in, 2 out: delays by N frames, and says so drawn      a gain with a window of
///     its own synth*     2 out: the velocity of the note that is held; chunks; answers each note
///     an octave up pinsI_O    I in, O out; pins 2 and 3 belong together bad-X      a gain that
///     does X: see MadePlugin.cpp
struct MadePlugin {
    static constexpr int most = 256, params = 3, programs = 3;

    vst2::Effect effect{};
    vst2::Dispatcher host = nullptr;
    char kind[64] = {};

    // What it has seen.
    int opcodes[4096] = {}, calls = 0; ///< all that was dispatched, in order
    int blocks[most] = {}, blockCount = 0;
    int deltas[most] = {}, messages[most] = {}, eventCalls[most] = {}, eventCount = 0;
    int eventCall = 0; ///< times that it was given events
    bool running = false, ranWhileOff = false;
    vst2::TimeInfo time{};
    intptr_t answers[64] = {}; ///< of the host in the latest block, by opcode

    std::unique_ptr<MadeEditor> editor; ///< while it is open

    // What it is to do.
    int timeMask = 0; ///< asks for the time in blocks, 0 never

    // Its sound.
    float values[programs][params] = {};
    char names[programs][32] = {};
    int program = 0;
    int note = -1;
    float level = 0.0f;
    std::vector<float> line[2]; ///< what is on its way

    /// The host sets them while it plays.
    std::atomic_ref<float> now(int index) { return std::atomic_ref(values[program][index]); }
};

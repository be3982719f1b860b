#pragma once

#include "base/Atomic.h"
#include "plugins/Plugin.h"
#include "plugins/SteadyClock.h"

#include <cstddef>
#include <cstdint>

/// What the program and a helper share of a plug-in. Either side takes nothing in it for granted:
/// the plug-in may write anywhere. All bytes 0 is a room that nobody has used.
struct PluginRoom {
    static constexpr int mostParams = 16384, mostMidi = 1024, mostEvents = 1024;
    static constexpr int mostFrames = 65536, wordBits = 31;

    struct Midi {
        int frame, data;
    };
    struct Event {
        enum Kind : int {
            moved,   ///< a parameter, by the user
            drifted, ///< the same, by itself
            gestureBegins,
            gestureEnds,
            editorSize, ///< width in `index`, height in `value`
            channels,
            display,
        };
        int kind, index;
        float value;
    };

    // What the helper knows of the plug-in.
    Shared<int> inputs{0}, outputs{0}, latency{0}, params{0}, programs{0}, program{0};
    Shared<float> values[mostParams]; ///< of its parameters
    // What these are to be, those with a bit.
    Shared<float> wantedValues[mostParams];
    Shared<unsigned> wanted[(mostParams + wordBits - 1) / wordBits];
    Shared<int> anyWanted{0};

    // A trip: what it brings stands here before `asked` has its number, and what it takes home
    // before `answered` has. Then come the inputs, the outputs behind them.
    Shared<int> asked{0}, answered{0};
    Shared<int> waiting{0}; ///< somebody sleeps on `answered`
    int frames = 0, inCount = 0, outCount = 0, midiCount = 0;
    PluginLevel level = PluginLevel::other;
    PluginTime time;
    Midi midi[mostMidi] = {};
    enum class Outcome : int {
        failed,
        whole,
        busy, ///< the plug-in was being changed, and heard nothing of it
    };
    Outcome outcome = Outcome::failed; ///< what it takes home
    int sentCount = 0;
    int64_t workNs = 0; ///< that the plug-in took
    Midi sent[mostMidi] = {};

    // What the plug-in has told since, the latest `mostEvents` of all.
    Shared<unsigned> told{0};
    Event events[mostEvents] = {};

    /// Floats of one pin in a trip.
    static size_t stride(int frameCount) { return (size_t(frameCount) + 15) / 16 * 16; }
    static constexpr size_t soundBytes = 2u * Plugin::mostPins * mostFrames * sizeof(float);

    /// The plug-in shall have a value. Any thread.
    void want(int index, float share) {
        values[index] = wantedValues[index] = share;
        wanted[index / wordBits].fetchOr(1u << index % wordBits);
        anyWanted.exchange(1);
    }
    bool isWanted(int index) const {
        return (wanted[index / wordBits].loadAcquire() >> index % wordBits & 1u) != 0;
    }
    /// The value that is wanted, or else that it has.
    float value(int index) const { return isWanted(index) ? wantedValues[index] : values[index]; }
    /// The plug-in has a value, unless it is to have another one since `known` was read.
    void tell(int index, float known, float now) {
        if (now != known && !isWanted(index)) values[index].compareExchange(known, now);
    }
    /// Calls `visit(index, share)` for what is wanted, once each.
    template <class F>
    void takeWanted(F&& visit) {
        if (!anyWanted.exchange(0)) return;
        for (int word = 0; word * wordBits < mostParams; word++) {
            const unsigned bits = wanted[word].load() ? wanted[word].exchange(0) : 0;
            for (int bit = 0; bits >> bit; bit++)
                if (bits >> bit & 1u)
                    visit(word * wordBits + bit, float(wantedValues[word * wordBits + bit]));
        }
    }
};

/// What they share of a helper: the plug-ins that have a trip before them, in a ring.
struct HelperRoom {
    static constexpr unsigned places = 1024;

    Shared<unsigned> taken{0};   ///< places, so far
    Shared<int> waiting[places]; ///< number of a plug-in; 0 nobody
    Shared<int> asleep{0};       ///< the helper sleeps on `bell`
    Shared<int> bell{0};         ///< counts
    Shared<int> spins{0};        ///< how often it looks before it goes to sleep
    Shared<int> policy{0};       ///< of its thread, as the system has them
    Shared<int> priority{0};
    Shared<int> inTrip{0};  ///< number of the plug-in that is at work; 0 none
    Shared<int> culprit{0}; ///< at which it has crashed
    Shared<int> inCall{0};  ///< the same for what the interface asks
};

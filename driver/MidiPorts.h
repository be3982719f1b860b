#pragma once

#include "driver/libaam.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>

/// The MIDI ports that the program sees. The lists are filled once, before anything runs; after
/// that only the flags change.
struct MidiPorts {
    struct Port {
        explicit Port(std::string portName) : name(std::move(portName)) {}
        std::string name;
        std::atomic<bool> enabled{false}; ///< interface thread sets, all others read
    };
    using List = std::deque<Port>;

    List ins, outs;
    int jackIn = -1, jackOut = -1; ///< the ports of our JACK client, -1 none

    /// Adds a port and answers its index, or -1 if an event's device byte cannot name it.
    static int add(List& list, const std::string& name) {
        if (list.size() > size_t(std::numeric_limits<int8_t>::max())) return -1;
        list.emplace_back(name);
        return int(list.size()) - 1;
    }
    /// Whether port `index` is there and enabled.
    static bool enabled(const List& list, int index) {
        return index >= 0 && size_t(index) < list.size() &&
               list[size_t(index)].enabled.load(std::memory_order_relaxed);
    }
    /// Whether `event` goes to output `index`.
    bool goesTo(const AamEvent& event, int index) const {
        return (event.device == -1 || event.device == index) && enabled(outs, index);
    }
};

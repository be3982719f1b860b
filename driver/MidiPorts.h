#pragma once

#include "driver/LongMessages.h"
#include "driver/libaam.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <string>

/// The MIDI ports that the program sees. The lists are filled once, before anything runs; after
/// that only the flags change.
struct MidiPorts {
    struct Port {
        explicit Port(std::string portName) : name(std::move(portName)) {}
        std::string name;
        std::atomic<bool> enabled{false}; ///< interface thread sets, all others read
        /// Of an input that was enabled once; the thread of its device puts, the interface takes.
        std::atomic<LongMessages*> messages{nullptr};
        std::unique_ptr<LongMessages> ownMessages; ///< the same
    };
    using List = std::deque<Port>;

    List ins, outs;
    int jackIn = -1, jackOut = -1; ///< the ports of our JACK client, -1 none
    LongMessages toJack;           ///< interface thread puts, the client takes

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
    /// Whether what is for `device` goes to output `index`.
    bool goesTo(int device, int index) const {
        return (device == -1 || device == index) && enabled(outs, index);
    }
    bool goesTo(const AamEvent& event, int index) const { return goesTo(event.device, index); }
    /// Bytes that came at an enabled input; false if they are no system exclusive message, nor a
    /// piece of one. The thread of its device.
    static bool join(const List& list, int index, const unsigned char* bytes, size_t count) {
        if (!enabled(list, index)) return false;
        LongMessages* messages = list[size_t(index)].messages.load(std::memory_order_acquire);
        return messages && messages->join(bytes, count, index);
    }
};

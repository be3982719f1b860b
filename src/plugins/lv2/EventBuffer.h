#pragma once

#include "plugins/lv2/Lv2Ports.h"

#include <cstdint>
#include <lv2/atom/atom.h>
#include <vector>

/// A sequence of events for a port of an LV2 plug-in. Whoever renders, but for its making.
class EventBuffer {
public:
    const Lv2Ports::Events port;

    EventBuffer(const Lv2Ports::Events& of, UridMap& urids);

    void clear();  ///< as an input: no events
    void vacate(); ///< as an output: all of its room
    /// Behind those that are there; one for which there is no room is left out.
    void add(int frame, LV2_URID type, const void* data, uint32_t size);
    LV2_Atom_Sequence* sequence() { return reinterpret_cast<LV2_Atom_Sequence*>(memory.data()); }
    /// Calls `visit(frame, atom)` for what the plug-in has written, as far as it is sound.
    template <class F>
    void each(F&& visit) {
        const LV2_Atom& head = sequence()->atom;
        if (head.type != sequenceType || head.size > bytes() - sizeof head) return;
        const char* at = reinterpret_cast<const char*>(sequence()) + sizeof(LV2_Atom_Sequence);
        const char* end = reinterpret_cast<const char*>(sequence()) + sizeof head + head.size;
        while (at + sizeof(LV2_Atom_Event) <= end) {
            const auto* event = reinterpret_cast<const LV2_Atom_Event*>(at);
            if (event->body.size > size_t(end - at) - sizeof(LV2_Atom_Event)) return;
            visit(int(event->time.frames), &event->body);
            at += padded(uint32_t(sizeof(LV2_Atom_Event)) + event->body.size);
        }
    }

private:
    uint32_t bytes() const { return uint32_t(memory.size() * sizeof(uint64_t)); }
    static uint32_t padded(uint32_t size) { return (size + 7u) & ~7u; }

    std::vector<uint64_t> memory;
    LV2_URID sequenceType, chunkType;
};

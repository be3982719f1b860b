#pragma once

#include "plugins/clap/ClapAbi.h"

#include <vector>

/// The events that a CLAP plug-in is given in a block, in order of time. Whoever renders.
class ClapEvents {
public:
    ClapEvents();
    ClapEvents(const ClapEvents&) = delete;
    ClapEvents& operator=(const ClapEvents&) = delete;

    const clapabi::InEvents* list() const { return &in; }
    void clear() { events.clear(); }
    // One for which there is no room is left out.
    void addParam(clapabi::Id param, void* cookie, double value);
    void addMidi(int frame, int data);
    void addNote(int frame, int data); ///< a note that begins or ends; nothing for other messages

private:
    union Any {
        clapabi::EventHeader header;
        clapabi::NoteEvent note;
        clapabi::ParamEvent param;
        clapabi::MidiEvent midi;
    };
    static constexpr size_t most = 8192;

    template <class T>
    T* add(T Any::*kind, clapabi::EventType type, int frame);

    std::vector<Any> events;
    clapabi::InEvents in{};
};

#pragma once

#include "engine/CIO.h"

class CFreezeItem;
template <class T>
class ListOf;

/// Kinds of event that travel through a queue.
enum EventKind : unsigned char {
    eventMidi = 0,
    eventParam = 1,
    eventConsumed = 255, ///< to be skipped
};

/// One event of a block. Copied by value.
struct CMIDIBytes {
    double time = 0.0;          ///< frames from the start of the block, may carry a fraction
    int data = 0;               ///< packed message (MidiBytes.h)
    unsigned char kind = 0;     ///< EventKind
    float value = 0.0f;         ///< parameter value, 0 to 1
    int param = 0;              ///< parameter index
    void* owner = nullptr;      ///< what the parameter belongs to: a channel, a send or a component
    void* extra = nullptr;      ///< carried along
    CMIDIBytes* next = nullptr; ///< next event of the queue, null at the end
};

/// The event queue of a MIDI port: a fixed array, filled and emptied once per block. Belongs to
/// whoever runs the graph; nothing here allocates.
class CMIDIQ : public CIO {
public:
    static constexpr int capacity = 512;
    static constexpr int maxEvents = capacity - 1; ///< the last slot stays free

    explicit CMIDIQ(CComp* owner);
    ~CMIDIQ() override;
    CMIDIQ(const CMIDIQ&) = delete;
    CMIDIQ& operator=(const CMIDIQ&) = delete;

    int count = 0;
    CMIDIBytes* const events; ///< owned; `capacity` of them, in zero pages until they are used
    ListOf<CFreezeItem>* freezeItems = nullptr; ///< of the track behind an output port; not owned
    /// Activity light of the port: 1 when something passed, 0.15 less at each idle pass.
    Shared<float> hasData{0.0f};

    void clear();
    CMIDIBytes* first();
    /// Appends without a look at the time; for producers that write in time order. Ignored when
    /// full.
    void push(double time, int data, unsigned char kind, float value, int param, void* owner,
              void* extra);
    /// Sorted insertion, behind events of the same time. Ignored when full.
    void insert(double time, int data, unsigned char kind, float value, int param, void* owner,
                void* extra);
    /// Removes event `i`; out of range does nothing.
    void pop(int i);
    void addMidiEvent(double time, int data);
    void copyEvents(CMIDIQ* src);

    /// The event's time as a frame of a block: rounded, and within `low` to `high`.
    static int frameOf(const CMIDIBytes* event, int low, int high);

private:
    void put(int i, double time, int data, unsigned char kind, float value, int param, void* owner,
             void* extra);
};

class CInputPort : public CMIDIQ {
public:
    explicit CInputPort(CComp* owner);
};

class COutputPort : public CMIDIQ {
public:
    explicit COutputPort(CComp* owner);
};

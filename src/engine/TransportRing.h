#pragma once

#include "base/Ring.h"

class CObject;

/// A call that changes how the song runs: `act(target, value, arg)`, to be made by whoever holds
/// the graph. `target` and `arg` must live until then.
struct TransportCall {
    using Act = void (*)(CObject* target, double value, void* arg);
    Act act = nullptr;
    CObject* target = nullptr;
    double value = 0.0;
    void* arg = nullptr;
};

/// Transport calls of the interface thread on their way to the next block. They are made in the
/// order in which they came, before anything else of that block.
class TransportRing {
public:
    static constexpr int capacity = 256;

    /// False when the ring is full. Interface thread.
    bool post(const TransportCall& call) { return ring.push(call); }
    /// Makes the calls that wait. Graph holder.
    void drain();
    bool empty() const { return ring.empty(); }

private:
    Ring<TransportCall, capacity> ring;
};

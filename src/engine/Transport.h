#pragma once

#include "base/Atomic.h"
#include "base/Stored.h"
#include "engine/GraphClock.h"

#include <memory>

class CQV;
class TransportRing;
struct TransportCall;

/// What starts, stops and places the song. Calls may come from the interface thread: while blocks
/// are coming they are queued and served at the start of the next one, else, and for a thread that
/// holds the graph, they act at once, so that a getter sees the result.
class Transport {
public:
    explicit Transport(CQV* host);
    ~Transport();
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    Shared<float> tempo{usualTempo};     ///< beats per minute, 10 to 250
    Stored<float> songTempo{usualTempo}; ///< the same, in force before the song's first tempo point
    Shared<int> playing{0}, recording{0};
    Shared<bool> transportChanged{false};
    Stored<int> loopStart{0}, loopEnd{3840}, loop{0}; ///< ticks
    Shared<int> startTime{0};                         ///< asTimeInMS of the last start
    Shared<int> startPos{0};                          ///< ticks

    /// The song's own tempo, clamped; in force from the next block on, until a tempo point says
    /// otherwise. Any thread.
    void setTempo(ToStore<float> bpm);
    /// Makes a call now, or at the start of the next block if that has to wait (see above).
    void onTransport(const TransportCall& call);
    void startSynced();
    void stopSynced();
    void setPosSynced(double ticks);
    void setTempoSynced(float bpm);
    /// Whether a transport call of this thread has to wait for the next block.
    bool mustQueue() const;
    /// Makes the transport calls that wait. Graph holder.
    void serveTransport();
    bool transportWaiting() const;

protected:
    void askStart();
    void askStop();
    void askRec();
    void askPos(double ticks);

    // Graph holder.
    void startNow();
    void stopNow();
    void setPosNow(double ticks);
    void advance(int frames);

private:
    void recNow();
    void startRecording();

    CQV* root;
    const std::unique_ptr<TransportRing> waiting;
};

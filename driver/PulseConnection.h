#pragma once

#include <pulse/pulseaudio.h>

/// A connection to a PulseAudio server, or to PipeWire in its place, with its own thread. The
/// server is never started from here.
class PulseConnection {
public:
    /// Connects; check `good` afterwards. Without a server that takes some milliseconds.
    PulseConnection();
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    /// Holds the thread off. What follows is to be called under it.
    class Lock {
    public:
        explicit Lock(const PulseConnection& c) : loop(c.loop) { pa_threaded_mainloop_lock(loop); }
        ~Lock() { pa_threaded_mainloop_unlock(loop); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        pa_threaded_mainloop* loop;
    };

    bool good() const;
    /// Sleeps until `done`, which is asked anew after each signal; false if the server takes too
    /// long or goes away.
    template <class Done>
    bool wait(Done done) {
        const Deadline deadline(*this);
        while (!done() && !deadline.passed && good()) pa_threaded_mainloop_wait(loop);
        return done() && good();
    }
    /// Waits for the end of a question to the server, whose answers have come by then.
    bool finish(pa_operation* operation);
    /// Wakes `wait`.
    void signal() { pa_threaded_mainloop_signal(loop, 0); }

    pa_threaded_mainloop* loop; ///< owned
    pa_context* context;        ///< owned

private:
    struct Deadline {
        explicit Deadline(PulseConnection& c);
        ~Deadline();
        Deadline(const Deadline&) = delete;
        Deadline& operator=(const Deadline&) = delete;
        PulseConnection& connection;
        pa_time_event* event;
        bool passed = false;
    };
};

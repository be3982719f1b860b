#pragma once

#include "driver/MidiPorts.h"
#include "driver/Ring.h"
#include "driver/libaam.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

typedef struct _snd_seq snd_seq_t;
typedef struct snd_seq_event snd_seq_event_t;
typedef struct snd_midi_event snd_midi_event_t;

/// The ports of the kernel's sequencer. A thread of its own talks to the kernel; the audio thread
/// only sees two rings.
class AlsaMidi {
public:
    /// An event with its moment on the monotonic clock.
    struct Timed {
        AamEvent event;
        int64_t ns;
    };

    /// Adds the ports of other clients to the lists of `ports`, which outlives this object; null
    /// if the machine has no sequencer.
    static std::unique_ptr<AlsaMidi> open(MidiPorts& ports);
    ~AlsaMidi();
    AlsaMidi(const AlsaMidi&) = delete;
    AlsaMidi& operator=(const AlsaMidi&) = delete;

    /// Interface thread: connects or disconnects the port of that index, if it is one of ours.
    void connectIn(int index, bool on);
    void connectOut(int index, bool on);

    /// Audio thread: takes the oldest event that came in.
    bool receive(Timed& to) { return received.take(to); }
    /// Audio thread: sends those of the events that go to our outputs, each at its frame. Frame 0
    /// is due at `firstNs`. What does not fit is lost.
    void send(const AamEvent* events, int count, int64_t firstNs, int rate);
    /// Interface thread: sends a system exclusive message at once, where it goes to our outputs.
    /// False where it does not, or too much waits.
    bool send(const AamMessage& message);

private:
    /// Another client's port, and what the program knows it by.
    struct Remote {
        int index, client, port;
    };
    AlsaMidi(snd_seq_t* sequencer, MidiPorts& midiPorts);
    bool prepare();
    void list();
    void listPorts(int client, const char* clientName);
    void work();
    void readAll();
    void accept(const snd_seq_event_t& event);
    void writeAll();
    void followQueue();
    void waitForKernel();
    void write(const AamEvent& event, int64_t dueNs);
    void writeLong(const AamMessage& message);
    void output(snd_seq_event_t& event);

    snd_seq_t* seq; ///< owned
    MidiPorts& ports;
    snd_midi_event_t* coder = nullptr; ///< owned, used by the thread
    int inPort = -1, outPort = -1, queue = -1;
    int64_t queueBeganNs = 0; ///< when the queue's clock stood at 0
    int wake = -1;            ///< event counter that ends the thread's sleep
    std::vector<Remote> sources, sinks;
    Ring<Timed> received, waiting;
    LongMessages messages;           ///< waiting
    std::vector<unsigned char> room; ///< for one of them
    std::atomic<bool> ending{false};
    std::thread thread;
};

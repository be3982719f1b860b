#pragma once

#include "base/Atomic.h"
#include "base/ZeroPages.h"

#include <algorithm>
#include <cstdint>
#include <vector>

class CSeq;

/// Time as it runs for who plays, whether the song does or not. The graph holder moves it.
struct PlayedTime {
    Shared<int64_t> frames{0};
    Shared<double> ticks{0.0};
    Shared<unsigned> run{0}; ///< counts starts, stops and jumps of the song
};

/// What was played last at one track: a ring, in which older messages make room. The graph holder
/// notes, any other thread reads; nothing is allocated but by the reader.
class PlayedNotes {
public:
    static constexpr unsigned capacity = 16384;

    struct Event {
        int64_t frame = 0;  ///< of `PlayedTime`
        double tick = 0.0;  ///< of `PlayedTime`
        double where = 0.0; ///< ticks, in the song; below 0 while it stood
        unsigned run = 0;   ///< of `PlayedTime`
        int msg = 0;        ///< packed message
    };

    PlayedNotes() : slots(makeZeroPages<Slot>(capacity)) {}

    void note(const Event& event);
    /// Those from a frame on, the oldest first.
    std::vector<Event> since(int64_t frame) const;
    /// Whether there is a note of that frame or later.
    bool anySince(int64_t frame) const { return lastNote > std::max<int64_t>(frame, 0); }

private:
    struct Slot {
        Shared<int64_t> frame;
        Shared<double> tick, where;
        Shared<unsigned> run;
        Shared<int> msg;
    };
    ZeroPages<Slot> slots;
    Shared<int64_t> written{0};
    Shared<int64_t> lastNote{0}; ///< one more than the frame of the latest note-on; 0 none
};

constexpr int keptSeconds = 60;

/// Whether a selected track that is not locked has notes of the last minute.
bool canKeepPlayed(CSeq* seq);
/// One step, "Keep what I played": what was played in the last minute comes to a new part of the
/// first such track, selected. What was played along with the song stands where the song was, but
/// goes on past the end of a loop; what was played while the song stood follows from the position
/// on. Notes that are still held end now. Interface thread.
void keepPlayed(CSeq* seq);

#pragma once

#include "base/Ring.h"

class CMIDIQ;
class CSeq;

/// Notes that the user auditions on a track, with the transport running or not. `addNote` and
/// `mute` come from the interface thread, the rest runs with the graph.
class CTrakPreview {
public:
    static constexpr int maxNotes = 16;
    static constexpr double noteTicks = 960.0; ///< a note that nobody mutes ends after these

    /// `note` 0 to 127, `velocity` 1 to 127, else nothing. Lost when 64 requests wait, and when 16
    /// notes sound.
    void addNote(int note, int velocity);
    /// Ends all notes.
    void mute();
    /// MIDI channel 0 to 15 of the notes to come; others count as 0.
    void assignCh(int channel);
    /// Serves the requests: note-ons go into `queue` at the block's first frame, note-offs at the
    /// mute or after their ticks. `ticks` is the length of the block. A null queue drops all.
    void process(CMIDIQ* queue, double ticks, double framesPerTick);

private:
    static constexpr int slots = 64;
    struct Note {
        int message = 0;        ///< the note-on; 0: free
        double ticksLeft = 0.0; ///< until the note-off
    };
    void start(CMIDIQ* queue, int message);
    void end(CMIDIQ* queue, Note& note, double frame);

    Ring<int, slots> requests; ///< note-on without channel, or 0 for mute
    int ch = 0;
    Note notes[maxNotes];
};

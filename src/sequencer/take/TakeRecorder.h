#pragma once

#include "base/Atomic.h"
#include "base/CStr.h"
#include "sequencer/take/CRecThread.h"
#include "sequencer/take/CStepRec.h"
#include "sequencer/take/TakeEdits.h"
#include "sequencer/take/Takes.h"

class CIniFile;
class CPart;
class CSeq;
class CSongTrack;

/// Where a take went back to the beginning of the loop. The graph holder notes, and while the take
/// is put away the interface reads.
struct LoopPasses {
    static constexpr int most = Takes::most - 1;
    Shared<int64_t> recorded{0}; ///< frames, from the block on in which the take began
    Shared<int> count{0};        ///< wraps
    Shared<int> frame[most];     ///< of each wrap, of those recorded
    Shared<int> tick[most];      ///< of the song, that it went on at

    void clear() { recorded = count = 0; }
    void note(int64_t at, int songTick);
};

/// The takes of a song, one at a time. A take begins with the block that finds the host recording;
/// its notes, sound and automation go into one step. While `recReady` is 0 the interface may touch
/// what the graph has armed; while it is 1, only by `edits`.
class TakeRecorder {
public:
    /// A note-on so much ahead of a take, or of the right locator of a loop, belongs to what comes.
    static constexpr double upbeatTicks = 240.0;

    CRecThread recThread;
    CStepRec stepRec;
    TakeEdits edits;                   ///< on their way into the song
    LoopPasses passes;                 ///< of the take that runs
    Shared<unsigned char> recReady{1}; ///< 0 from the beginning of a take until all of it is placed
    Shared<bool> anyArmed{false};      ///< a track is switched to be armed; as of the last block
    Shared<double> takeStart{0.0};     ///< ticks, where the take began
    Shared<double> takeEnd{0.0};       ///< ticks, where the latest take ended
    Shared<int> takeLead{0};           ///< frames of sound that were recorded before `takeStart`
    Shared<int> loopTakes{1};          ///< passes of a loop become takes of the recorded sound
    bool loopNoteTakes = false;        ///< and of recorded notes; interface thread

    explicit TakeRecorder(CSeq* of);
    TakeRecorder(const TakeRecorder&) = delete;
    TakeRecorder& operator=(const TakeRecorder&) = delete;

    void readSettings();
    void writeSettings(CIniFile& file) const;

    // Graph holder.
    /// Where a take that is asked for at a position begins to play, and what of it counts.
    double plan(double ticks, bool running);
    /// Arms the tracks that want a take, and those with a selected lane.
    void arm();
    /// Begins or ends the take where the coming block says so.
    void follow(int frames);
    /// What is played from here on does not belong to the take any more.
    void stop();
    bool leadsIn() const; ///< what plays lies before the take that is asked for
    /// Whether the input of an armed track belongs to the take.
    bool runs() const;
    /// Where what is played at a tick counts in the take that runs or is about to; below 0 when it
    /// does not: a note-on just before the take begins with it, all else that is out of it is not
    /// in it.
    double tickInTake(double tick, int msg) const;

    // Interface thread.
    double limit() const { return recTo; } ///< ticks, where it ends by itself; below 0 nowhere
    void idle();
    /// Puts away what the idle pass has not put away yet.
    void finish();
    /// Begins to record a MIDI or drum part in steps; null ends it.
    void recordSteps(CPart* part);

private:
    void armTrack(CSongTrack* songTrack);
    int barTicksAt(int tick) const;
    bool reaches(int frames) const;
    void punchOut();
    void noticeArmed();
    void begin();
    void beginFiles();
    void close();
    void warnOnce(const CStr& text);
    void noticeLoss();
    void tellWarning();

    CSeq* seq;
    Shared<bool> takeBegun{false};            ///< by the graph, for the idle pass
    Shared<double> recFrom{0.0}, recTo{-1.0}; ///< ticks; of the take that is asked for, or runs
    bool warned = false;                      ///< of sound that is lost, during this take
    CStr warning; ///< for the end of the idle pass; empty if there is none
};

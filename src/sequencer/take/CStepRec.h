#pragma once

#include "base/Atomic.h"

class CPart;
class CSeq;
class CSongTrack;

/// Step recording: what is played is written chord by chord at a position of one part, which moves
/// on by the grid. A chord is complete when its last key is let go. Interface thread, but for
/// `takesFrom` and `leave`.
class CStepRec {
public:
    static constexpr int capacity = 1024;

    int note = 0;       ///< the current row, 0 to 127
    Shared<int> pos{0}; ///< ticks from the beginning of the part
    int held = 0;       ///< keys that are down

    /// The part that is written, null for none. Begins at its start.
    void setPart(CPart* newPart, CSongTrack* on);
    CPart* getPart() const { return part; }
    int getPos() const { return pos; }
    void setNote(int row); ///< clamped
    /// The packed messages of the chord, the latest first. A push on a full stack is ignored, a pop
    /// from an empty one gives -1.
    void addNote(int msg);
    int removeNote();

    /// A key went down or up, as if it had been played: a note-on or note-off.
    void play(CSeq* seq, int msg);
    void moveTo(CSeq* seq, int ticks);    ///< from the beginning of the part; as far as it goes
    void rest(CSeq* seq, int by);         ///< so many steps of the grid on, below 0 back
    void tie(CSeq* seq);                  ///< the chord that ends here lasts a step longer
    void takeBack(CSeq* seq);             ///< one step back, and what begins in it goes
    int stepTicks(const CSeq* seq) const; ///< of a step

    /// Whether the notes of a track are recorded in steps. Any thread.
    bool takesFrom(const CSongTrack* t) const { return t && songTrack.load() == t; }
    /// Graph holder: a live take begins.
    void leave() { songTrack = nullptr; }
    /// Writes what was played since.
    void idle(CSeq* seq);

private:
    CPart* part = nullptr;
    Shared<CSongTrack*> songTrack{nullptr}; ///< of the part; null: off
    int notes[capacity] = {};
    int count = 0;

    void writeChord(CSeq* seq, CSongTrack* on);
    int lastPos(const CSeq* seq) const;
    CPart* current(CSeq* seq);
    void addTo(CPart* edited, CSongTrack* on, int msg, int tick, int len);
};

#pragma once

#include "base/Numbers.h"

#include <memory>
#include <vector>

class CAudioPart;
class CPart;
class CSeq;
struct CBaseEvent;

/// What was played in a pass over notes or hits.
class TakeNotes {
public:
    const int type;         ///< PartType
    CBaseEvent* const list; ///< owned; ticks from where the pass begins

    TakeNotes(int partType, CBaseEvent* events) : type(partType), list(events) {}
    ~TakeNotes();
    TakeNotes(const TakeNotes&) = delete;
    TakeNotes& operator=(const TakeNotes&) = delete;
};

/// The passes of a loop over which a part was recorded, and which of them it plays when. All ticks
/// are of the part's own time, as those of its events are.
class Takes {
public:
    struct Take {
        int at, ticks;  ///< where it begins, and how long it is
        int start, end; ///< frames of the part's sample, inclusive; 0 of notes
        std::shared_ptr<const TakeNotes> notes{}; ///< null of sound
        int to() const { return saturate(int64_t(at) + ticks); }
        bool operator==(const Take&) const = default;
    };
    /// A stretch of one take.
    struct Piece {
        int take;     ///< index
        int from, to; ///< without `to`
        bool operator==(const Piece&) const = default;
    };
    static constexpr int most = 256;
    static constexpr float fadeMs = 5.0f; ///< of each piece at both ends

    std::vector<Take> takes;
    std::vector<Piece> comp; ///< in order, none into the next

    /// From tick to tick, as far as it reaches, that take is heard. False when nothing changes.
    bool choose(int take, int from, int to);
    /// Of those that last as long as any, the latest one is heard, and where it is not the ones
    /// before it.
    void chooseLast();
    /// Those that the comp has nothing of go. False when there are none.
    bool dropUnused();
    void shift(int ticks); ///< the part's own time begins that much earlier
};

/// Of a part or its master; null when it has none.
const Takes* takesOf(CPart* part);
/// A part of notes or hits that is not linked has in place of what begins from tick to tick what
/// the take has there. What lasts beyond the end of that stretch is cut.
void playNotes(CPart* part, const Takes::Take& take, int from, int to);
/// Makes the clips of a part that is not linked anew, as its comp tells: like the first one that it
/// has, of the same sample, each with the fades and going on for a while under the next. `pos` is
/// the song tick of its own tick 0, and of what lies there only what the part shows is made.
void playComp(CSeq* seq, CAudioPart* part, int pos);

// Interface thread.
/// One step, "Comp": from song tick to song tick a part plays one of its takes. Notes beside that
/// stay as they are, edited or not. False, and nothing happens, for what it has not, on a locked
/// track, and where it plays it already.
bool compTake(CSeq* seq, CPart* part, int take, int from, int to);
/// One step, "Delete unused takes", of the selected parts.
void deleteUnusedTakes(CSeq* seq);

#pragma once

#include <map>
#include <tuple>
#include <vector>

class CSeq;
class CSongTrack;
class CStr;
class CUndo;
struct BringPlace;

/// Whether a track is of a kind, null none.
bool isOfKind(const CSongTrack* songTrack, int kind);

/// The tracks that files come to as a step brings them in: those they are for, and new ones below
/// them, in the folder that these are in. Interface thread.
class NewTracks {
public:
    NewTracks(CSeq* song, CUndo* open);

    /// The track of a place, if it is of that kind and `nth` is 0; else a new one, which files of
    /// one kind, row and number share. Null, after a message, when the song has no room.
    CSongTrack* take(const BringPlace& place, int kind, int nth, const CStr& name);
    /// Never one that there is.
    CSongTrack* make(CSongTrack* below, int kind, const CStr& name);

    /// For who makes tracks in the step itself: where they begin, and, once it has, that it has.
    int indexBelow(CSongTrack* onto) const;
    void follow(CSongTrack* onto);

private:
    CSeq* seq;
    CUndo* step;
    std::vector<CSongTrack*> order;            ///< of the tracks once the step is carried out
    std::map<CSongTrack*, CSongTrack*> lowest; ///< of the new ones below a track
    std::map<std::tuple<CSongTrack*, int, int, int>, CSongTrack*> shared;
};

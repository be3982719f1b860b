#pragma once

#include "project/BringIn.h"

class CPart;
class CTrack;

// Files that are dropped where the content of a part shows. Interface thread.

/// A place in a part that stands on a track.
struct PartSpot {
    CSeq* seq;
    CTrack* track;
    CPart* part;
    int tick = 0; ///< of the song
    int row = -1; ///< of a sound of the kit, -1 below all
};

/// Whether a file of that kind has something for a part: notes and clips of notes for a MIDI part,
/// these, clips of drums and samples for a drum part.
bool partTakes(const CPart* part, SongFile kind);

/// One step, "Drop " and the names of the files: notes and hits come in at the place, all of them
/// selected; of samples the first becomes that of the sound at the place, and the others become new
/// sounds below all. The keys of notes that come to a drum part are its sounds from the lowest of
/// the kit on. Gives the first file that could not come, empty when all have.
CStr dropOnPart(const PartSpot& place, const std::vector<CStr>& paths);

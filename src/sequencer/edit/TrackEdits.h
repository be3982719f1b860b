#pragma once

#include "base/CStr.h"

#include <vector>

class CSeq;
class CTrack;

// What a user does to whole tracks. Each edit is one step. Interface thread.

/// Where moved tracks come: before another one, null at the end, and into a folder, null none. In a
/// folder and before null they come behind all that is in it.
struct TrackTarget {
    CTrack* before = nullptr;
    CTrack* folder = nullptr;
};

constexpr int mostFolderDepth = 64; ///< of folders in folders, should a file hold a ring
bool isInside(const CTrack* track, const CTrack* folder); ///< at any depth
/// Whether none of them is a folder that would come into itself.
bool canMoveTracksTo(const std::vector<CTrack*>& tracks, const TrackTarget& target);
/// "Move track": they come there in the order that they have in the song, folders with what is in
/// them; folders that are summed let go of them or take them in. No step where all stay as they
/// are, or that cannot be.
void moveTracksTo(CSeq* seq, const std::vector<CTrack*>& tracks, const TrackTarget& target);
/// "Duplicate track": tracks like them, folders with what is in them, come behind the last of them
/// and are selected. They have their parts in all programs, lanes, settings, sounds, strips and
/// cables; ghosts stay ghosts, freeze files are left to the first ones. A synthesizer that plays
/// one of them alone is duplicated; what else they lead to they share. Why nothing was done, empty
/// if it was.
CStr duplicateTracks(CSeq* seq, const std::vector<CTrack*>& tracks);
/// "Delete track": they leave with their parts, a folder with all that is in it.
void deleteTracks(CSeq* seq, const std::vector<CTrack*>& tracks);

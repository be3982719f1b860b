#pragma once

class ClipContent;
class CSeq;
class CTrack;
class CUndo;

// How the sounds of clips come into the kits of drum tracks. Interface thread.

/// Records that the sounds of a drum clip come into the kit of a track, and has the events of the
/// clip name them there. Those that the kit has already are used as they are; events without a
/// sound are left out. False, and nothing is done, when the kit has no room.
bool takeDrums(ClipContent& clip, CSeq* seq, CTrack* track, CUndo* undo);

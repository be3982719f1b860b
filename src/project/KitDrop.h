#pragma once

class ClipContent;
class CSeq;
class CTrack;
class CUndo;
class DrumKit;

// How the sounds of files come into the kits of drum tracks. Interface thread.

/// Records that the sounds of a kit, made for the track's layer, come to the end of it, and the
/// track grows with them.
void takeKit(DrumKit& kit, CSeq* seq, CTrack* track, CUndo* undo);

/// Records that the sounds of a drum clip come into the kit of a track, and has the events of the
/// clip name them there. Those that the kit has already are used as they are; events without a
/// sound are left out. False, and nothing is done, when the kit has no room.
bool takeDrums(ClipContent& clip, CSeq* seq, CTrack* track, CUndo* undo);

#pragma once

class ClipContent;
class CPart;
class CSeq;
class CSongTrack;
class CStr;
class CUndo;

// How clips come into a song. Interface thread.

/// Records that a clip comes to tick `tick` of a song track, or, if that is null or of another
/// kind, of a new track behind all others. Its samples join the pool, in memory; its drums join the
/// kit of the track; its synthesizers come along, cabled to the track and the audio out, if the
/// track feeds nothing yet. Plug-ins are not loaded. Gives the part, null and nothing done when
/// there is no room for it. What the clip gave is not in `clip` any more.
CPart* dropClip(ClipContent& clip, CSeq* seq, CSongTrack* onto, int tick, CUndo* undo);

/// The same as one step, called after the file that the clip was read from.
CPart* dropClip(ClipContent& clip, CSeq* seq, CSongTrack* onto, int tick, const CStr& path);
/// The kind of track that takes a part.
int trackKindOf(const CPart* part);

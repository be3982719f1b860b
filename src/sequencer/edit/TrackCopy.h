#pragma once

class CSeq;
class CTrack;
class CUndo;

/// Records that a track like another one comes at an index of the song's tracks, as
/// `duplicateTracks` tells, in the same folder and not selected. Interface thread.
CTrack* copyTrack(CSeq* seq, CTrack* source, CUndo* undo, int index);

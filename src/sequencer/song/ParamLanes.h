#pragma once

class CObject;
class CSeq;
class CSubTrack;
class CTrack;

// Lanes for the parameters of components, strips and sends. Interface thread.

/// The track that a parameter is heard through: whose output it is or leads there, else, of those
/// whose notes lead there, an armed one, a selected one, or the first. Null without any.
CTrack* trackOfParam(const CSeq* seq, CObject* object);
/// The lane of a parameter on that track, opened; a new one, by a step "Add lane", where it has
/// none. Null without a track, and where that has no room for a lane.
CSubTrack* showParamLane(CSeq* seq, CObject* object, int param);

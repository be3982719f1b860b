#pragma once

class CComp;
class CSeq;
class CTrack;
class CUndo;

// A folder of tracks that is heard as one: what is in it leads to a group of the graph in place of
// the audio out. Which group that is stands in no file, it is told from the cables. Interface
// thread.

/// The group that tracks of a folder lead to, and nothing else does; null if there is none. Of
/// folders that lie in one another the inner ones come first.
CComp* folderGroup(CSeq* seq, const CTrack* folder);
/// One step, "Sum folder": a group of the folder's name comes before the audio outs that its
/// tracks, their synthesizers and their racks lead to, or, where there is one, leaves. A
/// synthesizer that plays tracks of other folders stays as it is. False, and nothing happens, if
/// none is left.
bool sumFolder(CSeq* seq, CTrack* folder);
/// Records that what is heard of a track follows it from its folder into another one; either may be
/// null.
void followFolder(CSeq* seq, CTrack* track, const CTrack* from, const CTrack* to, CUndo* undo);

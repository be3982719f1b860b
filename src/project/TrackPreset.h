#pragma once

class CSongTrack;
class CStr;
class CTrack;
class CUndo;

// A track as a file (.qvp), in blocks: kind, name and colour; the synthesizer or the kit that plays
// it; its arpeggiator; and the mixer strip that it is heard through, with its effects. It holds no
// part, and no lane. Interface thread.

/// Writes a track. Of a plug-in that plays it nothing is kept, and of a synthesizer the current
/// program. False after a message, and what was there before stays.
bool saveTrack(CTrack* track, const CStr& path);

/// The TrackKind in a file; 0 for what is no track, as an empty file.
int trackPresetKind(const CStr& path);

/// Fills a new track of that kind, which `step` adds, from the file, instruments as part of the
/// step. What is damaged in it is left out.
void fillTrack(CTrack* track, const CStr& path, CUndo* step);

#pragma once

class CPart;
class CSeq;

/// "Fit bars", one step: the tempo becomes such that a recording, an audio part of one clip at its
/// own speed, lasts so many bars, 1 or more, from where it begins on. Without tempo points the song
/// gets it; else a point at its start does, those until its end go, and behind it all is as it was.
/// False, and nothing happens, for other parts, and where no tempo (10 to 250) does it. Interface
/// thread.
bool fitBars(CSeq* seq, CPart* part, int bars);

#pragma once

#include "base/CStr.h"

#include <vector>

class CQV;
class CSample;

// The audio files that a project needs, and how they get to where it lies. Interface thread.

/// The samples whose frames lie in a file: those of the pool and of frozen tracks. A take that is
/// still growing is not among them.
std::vector<CSample*> filedSamples(CQV* host);

/// Copies all files that there are into an existing folder, and has the samples stand on the
/// copies. The status line tells how far it is. What cannot be copied stays where it is, and one
/// message tells it.
void takeAudioAlong(CQV* host, const CStr& folder);
/// The same, into the project's audio folder, for samples of a project on a removable medium that
/// were written to a temporary place.
void archiveCachedSamples(CQV* host);

/// The files in the project's audio folder and in the temp folder, with these folders: what has to
/// be on the disk before a file that refers to it.
std::vector<CStr> freshAudio(CQV* host);
/// Samples in the temp folder come along when the project is saved: to be called when it was
/// opened from a copy that a crash has left.
void adoptTempAudio(CQV* host);

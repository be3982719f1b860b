#pragma once

#include "audiofiles/CAudioProcessor.h"
#include "base/CStr.h"
#include "sequencer/edit/PartRange.h"

#include <functional>

class CQV;

/// One step with the text of the mode (AudioProcess, CAudioProcessor.h): each selected audio part
/// of a single clip gets a new file, in which all that it plays, or the range if it is of that
/// part, has been processed; once for each master. What is cut out comes into the clipboard. The
/// modes that slice and flatten do that. All or none: why nothing was done, empty if it was or
/// there is nothing to do. Interface thread.
CStr processAudio(CSeq* seq, int mode, const PartRange& range = {});

/// What the first clip of an audio part plays goes into a new file, on which a program is started;
/// once `edited` comes back with true, the file is what the clip plays, whole. One step, "Edit";
/// `edited` may take its time and run the program's windows, and false leaves all as it was. Why
/// nothing was done, empty if it was.
CStr openExternal(CSeq* seq, CPart* part, const CStr& program, const std::function<bool()>& edited);

/// What makes new files from those of a project; they come where its takes do.
CAudioProcessor processorFor(CQV* host);

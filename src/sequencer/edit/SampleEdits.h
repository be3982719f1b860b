#pragma once

#include "base/CStr.h"
#include "sequencer/edit/PartRange.h"

#include <vector>

class CPart;
class CSample;
class CSeq;
struct CAudioEvent;

/// Edits of the frames that one clip is made of, whatever is selected. Each writes a new file,
/// which the clip plays from then on, and is one step; undoing it leads back to the file before.
/// Frames that stay are played as they were, and the part keeps its place. What comes back tells
/// why nothing was done, empty if it was or there is nothing to do. Interface thread.

/// A clip of an audio part or of its master, by its place in the list.
struct ClipPlace {
    CPart* part = nullptr;
    int index = 0;

    CAudioEvent* clip() const; ///< null where there is none
    bool operator==(const ClipPlace&) const = default;
};

/// Whether its frames can be edited: they are there, in one or two channels.
bool hasFrames(const CAudioEvent* clip);

/// What an AudioProcess that leaves the frames where they are does to some; "Convert to mono" does
/// it to all, and `processDelete` is called "Silence", since others delete here.
CStr processFrames(CSeq* seq, const ClipPlace& place, int mode, const FrameRange& frames);
/// "Cut" and "Delete": the frames go, and what follows moves up.
CStr cutFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames);
CStr deleteFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames);
/// "Crop": all others go.
CStr cropFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames);
/// The frames come into the song's clipboard, as a part that plays them.
void copyFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames);
/// "Paste": the range of the clip in the clipboard comes in place of the frames, which may be none.
CStr pasteOverFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames);
/// How many frames that would be; 0 when the clipboard has no such clip.
int framesToPaste(CSeq* seq);
/// The frames stay: one step, "Marks", of where the user has marked them, rising.
void setMarks(CSeq* seq, const ClipPlace& place, std::vector<int> marks);

#pragma once

#include <memory>

class CPart;
class CSeq;
struct CAudioEvent;

/// Some time of a part, in ticks from its start, such as a range that is selected in its editor.
struct PartRange {
    CPart* part = nullptr; ///< null for none
    int from = 0, to = 0;  ///< in either order
};

/// Frames of a sample, the last one exclusive.
struct FrameRange {
    int from = 0, to = 0;
    int count() const { return to - from; }
    bool operator==(const FrameRange&) const = default;
};

/// The frames of the first clip of an audio part that are meant: those in the range if it is of
/// this part and not empty, else all that the clip plays. Interface thread.
FrameRange framesOf(CSeq* seq, CPart* part, const PartRange& range);
/// A new part for the clipboard, like another, that plays these frames of one of its clips, null
/// for the first; in the modes that follow the tempo it lasts for its share of the other.
std::unique_ptr<CPart> partOfFrames(CSeq* seq, CPart* part, const FrameRange& frames,
                                    const CAudioEvent* of = nullptr);

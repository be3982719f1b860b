#pragma once

#include "sequencer/edit/RangeEdits.h"

#include <functional>

/// The time of some tracks that is chosen in the arrangement with the tool for ranges, beside the
/// parts. Commands act on it while there is one. Interface thread.
class SongRange {
public:
    std::function<void()> onChange; ///< the range or the tool is another one

    bool tool() const { return toolOn; } ///< drags on the grid choose a range, and not parts
    void setTool(bool on);               ///< off it lets the range go
    /// Null without one.
    const TimeRange* get() const { return chosen.from < chosen.to ? &chosen : nullptr; }
    void set(const TimeRange& range);
    void clear() { set({}); }
    bool withMarkers() const { return markersToo; } ///< markers in its time go along with edits
    void setWithMarkers(bool on);
    /// The tracks of the song may be others: lets go of those that are gone; null for all.
    void keepTracksOf(CSeq* seq);

private:
    TimeRange chosen;
    bool toolOn = false, markersToo = false;
};

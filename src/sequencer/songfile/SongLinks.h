#pragma once

#include "base/CStr.h"
#include "sequencer/song/LaneLink.h"

#include <vector>

class CSongTrack;
class CSubTrack;
class CTrack;

/// What the blocks of a song name by index, kept until every component of the project is there.
struct SongLinks {
    struct Lane {
        CSubTrack* lane;
        LaneLink link;
    };
    struct Source {
        CTrack* track; ///< that listens
        int index;     ///< of the track whose notes it gets
        bool muted = false;
    };
    struct Freeze {
        CSongTrack* songTrack;
        int comp; ///< in the host's list, -1 the sequencer
        int channel;
        CStr file;
    };
    std::vector<Lane> lanes;
    std::vector<Source> sources;
    std::vector<Freeze> frozen;
};

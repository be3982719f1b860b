#pragma once

#include "sequencer/song/EventIndex.h"

#include <map>

/// The indexes of parts that a view shows together, each made anew when its part has changed.
/// Interface thread.
class EventIndexes {
public:
    const EventIndex& of(CSeq* seq, CPart* part) { ///< good until `forget`
        EventIndex& index = known[part];
        index.refresh(seq, part);
        return index;
    }
    void forget() { known.clear(); }

private:
    std::map<const CPart*, EventIndex> known; ///< parts only to be compared
};

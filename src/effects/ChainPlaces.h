#pragma once

#include "base/CList.h"

// Places in a chain of effects or inserts. Interface thread.

/// Where something comes for an index, as a step of the history takes it: -1 behind all.
inline int placeIn(const CList& chain, int index) {
    return index < 0 || index >= chain.getCount() ? -1 : index;
}

/// Whether what a chain has stays where it is, if it comes before `place`, as that is told by
/// `placeIn`.
inline bool staysAt(const CList& chain, const CObject* member, int place) {
    const int at = chain.indexed(member), last = chain.getCount() - 1;
    return place == at || place == at + 1 || (place < 0 && at == last);
}

#pragma once

#include "project/GraphIndex.h"

#include <set>
#include <utility>

class CStream;
class ItemView;

/// "ac" and "mc", each with "cableMute" behind it if it is muted: the cables that arrive at a
/// component, then those of its children, at the host also of its sends. A cable with an end
/// outside of these lists, or a number above 255, is none that a file can hold.
void writeCables(CStream* stream, CComp* c, const GraphIndex& index);

/// Reads cables into the components that they lead to. One without all of its ends, one that is
/// there, and all beyond 4096 are left out.
class CableReader {
public:
    explicit CableReader(GraphIndex& graph) : index(graph) {}

    void readAudio(ItemView& item);
    void readMIDI(ItemView& item);
    void readMute(ItemView& item); ///< "cableMute", of the cable before it

private:
    GraphIndex& index;
    std::set<std::pair<const CIO*, const CIO*>> seen;
    CObject* newest = nullptr; ///< of the latest item; null where that was left out

    bool isNew(const CIO* from, const CIO* to);
};

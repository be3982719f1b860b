#pragma once

#include "base/CObject.h"
#include "engine/COutputChannel.h"

class CUndoItem;

/// Levels of one channel's sends on the other side of a change of buses.
class CSendRecord : public CObject {
public:
    explicit CSendRecord(COutputChannel* ch);
    COutputChannel* channel;
    float level[maxSends] = {};
    int muted[maxSends] = {};
    int shownLevel[maxSends] = {};
    PlanFade gate[maxSends];
    bool settled[maxSends] = {};

    void store();
    void storeGates(); ///< graph holder
    /// Exchanges the stored levels with the channel's.
    void swapLevels();
};

/// Has the send levels of all channels in the item's records follow a bus that went from place
/// `from` to place `to` of the host's `sends`, -1 for elsewhere. The first time the levels shift
/// and the old ones are stored; from then on the two sides are exchanged. Graph holder, as a task.
void reorderSends(CUndoItem* item, int from, int to);

#pragma once

#include "base/CObject.h"

class CComp;
class COutputChannel;
class CSample;

/// A file that plays in place of a track's events. Listed by the song track that owns it, and
/// reached by instruments through the port that feeds them.
class CFreezeItem : public CObject {
public:
    CFreezeItem() = default;
    ~CFreezeItem() override;
    CFreezeItem(const CFreezeItem&) = delete;
    CFreezeItem& operator=(const CFreezeItem&) = delete;

    CSample* sample = nullptr;         ///< owned
    int start = 0, end = 0;            ///< frames of the sample, first and last
    CComp* comp = nullptr;             ///< the component that made the sound
    COutputChannel* channel = nullptr; ///< where it plays into
    CObject* songTrack = nullptr;      ///< the CSongTrack that owns it

    /// The whole of `s`, which the item owns from now on.
    void setSample(CSample* s);
};

/// Whether a track that feeds a component by MIDI plays a file in its place. Not in a render, which
/// plays what was frozen itself. Graph holder.
bool playsFrozen(const CComp* comp);

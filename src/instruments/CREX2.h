#pragma once

#include "base/CStr.h"

class CSampleClip;

/// Where a slice of a loop lies.
struct CREXSlice {
    double ticks = 0.0; ///< from the start of the loop
    int frames = 0;
};

/// A loop cut into slices. No library that reads such files comes with the program: a loop of this
/// class has no slices. A reader derives from it. Interface thread.
class CREX2 {
public:
    CREX2(const CStr& path, int rate);
    virtual ~CREX2();
    CREX2(const CREX2&) = delete;
    CREX2& operator=(const CREX2&) = delete;

    virtual int getNumSlices();
    // New clips, owned by the caller, or null.
    virtual CSampleClip* render(int slice);
    virtual CSampleClip* renderCompact();         ///< all slices one behind the other
    virtual CSampleClip* renderAll(float tempo);  ///< the loop, at beats per minute
    virtual const CREXSlice* getSlice(int slice); ///< null outside the loop
};

#pragma once

#include "base/CObject.h"
#include "base/Stored.h"

class COnChange;

/// A choice of grid. Interface thread; what an undo brings back is in atomics.
class CSnap : public CObject {
public:
    Stored<int> index{3}; ///< 0 to 6: 30, 60, 120, 240, 480, 960 ticks, and a bar of `num`/`den`
    int num = 4, den = 4; ///< 1 to 960 (see `setBar`)
    Stored<bool> active{true};
    Stored<bool> triplet{false}, dotted{false}; ///< dotted goes first
    COnChange* onChange = nullptr;              ///< owned

    CSnap() = default;
    ~CSnap() override;
    CSnap(const CSnap&) = delete;
    CSnap& operator=(const CSnap&) = delete;

    /// Calls `onChange`, that may refresh `num` and `den`; then `getTicks`, or 1 when not active.
    int val();
    int getTicks() const;                    ///< at least 1
    int getTicks(int choice) const;          ///< the same of another `index`
    int asIndex() const;                     ///< 3 for an `index` out of range
    void indexToSnap(ToStore<int> newIndex); ///< ignored out of range
    /// Clamps both.
    void setBar(int newNum, int newDen);
};

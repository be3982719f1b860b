#pragma once

#include "base/Atomic.h"
#include "base/CStr.h"

/// Root of nearly every class. `category` and `type` are the type system of the program.
class CObject {
public:
    CStr id; ///< visible name
    int category = 0;
    int type = 0;
    Shared<unsigned> flags{0}; ///< several threads change bits: by `setFlag`, `|=`, `&=` only

    CObject() = default;
    virtual ~CObject() = default;
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    /// Whether the category matches, and the type, where 0 stands for any.
    int asType(int wantedCategory, int wantedType) const {
        return category == wantedCategory && (wantedType == 0 || wantedType == type);
    }
    bool hasFlag(unsigned bits) const { return (flags.load() & bits) != 0; }
    void setFlag(unsigned bits, bool on) {
        if (on)
            flags.fetchOr(bits);
        else
            flags.fetchAnd(~bits);
    }
};

#pragma once

#include "engine/CComp.h"

class BlockView;

/// A choice of the sections that the mixer shows.
class CMixProg : public CProgram {
public:
    CMixProg();
    int sh = 31; ///< bit mask of shown sections; bit 0 audio inputs

    /// A program of the same name, owned by the caller.
    CMixProg* copy() const;
};

/// What a project keeps of the mixer view. Held by whoever shows or saves it; no part of the graph.
class CMixer : public CComp {
public:
    int mxv = 7; ///< flags of the view

    explicit CMixer(CQV* root);

    void init() override;
    void clear() override;
    /// Up to the first item that is empty or does not fit.
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    /// -1 means the current one; null outside the list.
    CMixProg* getProg(int index);

private:
    void readItem(BlockView& item, const CStr& name);
};

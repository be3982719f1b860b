#pragma once

#include "engine/CComp.h"

/// Joins what is cabled to it into one strip: a group, or as a member of the host's `sends` a send
/// bus. Solo elsewhere does not silence it.
class CGroupCh : public CComp {
public:
    explicit CGroupCh(CQV* root);

    void init() override;
    void process(int frames) override;
    /// Empties inputs and outputs, which the items of a stored component make anew.
    void read(CStream* stream, int end) override;
    CComp* copy() override;
};

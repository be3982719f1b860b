#pragma once

#include "engine/CComp.h"

#include <memory>

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

/// "Add Send": adds a bus to the host's as one step. False, after a message, when there are as many
/// as there can be; the bus is gone then.
bool addSendBus(std::unique_ptr<CGroupCh> bus);

#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"

#include <functional>
#include <vector>

class CQV;

/// Changes of a song that is playing, which a take makes bit by bit: collected on the interface
/// thread, carried out in their order on the graph, by one task for all that wait. Each is prepared
/// so that it only moves pointers: it may not allocate or free. What it captured is freed on the
/// interface thread.
class TakeEdits : public CObject {
public:
    using Edit = std::function<void()>;

    explicit TakeEdits(CQV* root) : host(root) {}
    ~TakeEdits() override { settle(); }
    TakeEdits(const TakeEdits&) = delete;
    TakeEdits& operator=(const TakeEdits&) = delete;

    void add(Edit edit) { collected.push_back(std::move(edit)); }
    bool pending() const { return !collected.empty() || sent.loadAcquire(); }
    /// Hands over what was collected; while an earlier task is on its way, later.
    void send();
    /// Returns when all is done.
    void settle();

private:
    void run(CObject*);

    CQV* host;
    std::vector<Edit> collected, running;
    Shared<bool> sent{false}; ///< `running` belongs to the task
};

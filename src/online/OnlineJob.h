#pragma once

#include "base/CThread.h"
#include "online/Fetch.h"

#include <functional>

/// Something that blocks, on a thread of its own: `start` it, watch `done`, and take the result
/// once `finished`. Deleting it cancels and waits.
class OnlineJob : public CThread {
public:
    using Work = std::function<OnlineResult(const OnlineWatch& watch)>;

    explicit OnlineJob(Work what) : work(std::move(what)) {}
    ~OnlineJob() override { finish(); }
    OnlineJob(const OnlineJob&) = delete;
    OnlineJob& operator=(const OnlineJob&) = delete;

    Shared<float> done{0.0f}; ///< 0 to 1
    bool finished() const { return ready.loadAcquire(); }
    OnlineResult result() const { return outcome; } ///< once finished
    void cancel() { terminated = true; }

    void execute() override {
        outcome = work([this](double part) {
            done = float(part);
            return !terminated;
        });
        ready.storeRelease(true);
    }

private:
    const Work work;
    OnlineResult outcome = OnlineResult::cancelled;
    Shared<bool> ready{false};
};

#pragma once

#include "base/CThread.h"

class CQV;

/// Reads ahead for all samples that are played from disk: those of the pool, and what sequencers
/// ask for in `CComp::diskRead`.
class CDiskThread : public CThread {
public:
    static constexpr int priority = 10;
    static constexpr int pauseMs = 10;
    static constexpr int restMs = 50; ///< while nothing plays, and no sample lies on disk

    explicit CDiskThread(CQV* host) : qv(host) {}
    ~CDiskThread() override { finish(); }
    CDiskThread(const CDiskThread&) = delete;
    CDiskThread& operator=(const CDiskThread&) = delete;

    void execute() override;

private:
    CQV* qv;
};

/// Computes the peak images of samples that ask for one, when it is woken.
class CPeakThread : public CThread {
public:
    static constexpr int priority = -20; ///< asked for; outside the range, so it has no effect

    explicit CPeakThread(CQV* host) : qv(host) {}
    ~CPeakThread() override { finish(); }
    CPeakThread(const CPeakThread&) = delete;
    CPeakThread& operator=(const CPeakThread&) = delete;

    void execute() override;

private:
    bool buildNext();

    CQV* qv;
};

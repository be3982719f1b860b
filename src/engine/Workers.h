#pragma once

#include "base/CThread.h"

class CQV;

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

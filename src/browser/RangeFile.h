#pragma once

#include "base/CStr.h"

class CQV;
class CSample;

/// A stretch of what is listened to, written to a file of its own so that it can be dragged where
/// files are taken. What nobody takes is deleted again. Interface thread.
class RangeFile {
public:
    explicit RangeFile(CQV* root) : host(root) {}
    ~RangeFile();
    RangeFile(const RangeFile&) = delete;
    RangeFile& operator=(const RangeFile&) = delete;

    /// Writes frames `from` to below `to` where new audio of the project goes, under a name like
    /// `name`. Empty when that could not be done.
    CStr write(const CSample& sample, int from, int to, const CStr& name);
    /// Sees what has become of it; interface tick, while nothing is dragged or asked.
    void idle();

private:
    static constexpr int patience = 100; ///< ticks until nobody wants it

    bool taken() const;
    void drop();

    CQV* host;
    CStr path; ///< of the latest one; empty once somebody has it
    int ticks = 0;
};

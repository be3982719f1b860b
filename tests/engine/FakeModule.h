#pragma once

#include "driver/libaam.h"

#include <vector>

/// A driver module without a driver, that does as it is told and takes down what it is asked. The
/// test reaches it through the symbol `fakeState` of the loaded module.
struct FakeState {
    static constexpr int audioIns = 8;
    std::vector<int> ops; ///< asked so far
    AamCallback callback = nullptr;
    intptr_t devices = 2;
    int firstDevice = 0; ///< number in the name of the first
    intptr_t openResult = 0;
    intptr_t grantFrames = 0; ///< 0: what was asked for
    float grantRate = 0.0f;   ///< 0: what was asked for
    intptr_t askedFrames = 0, askedRate = 0;
    int needsReopen = 0;
};

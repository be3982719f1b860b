#pragma once

/// Whether all samples are 0. Any thread.
bool isSilent(const float* buf, long frames);
inline bool isSilent(const float* left, const float* right, long frames) {
    return isSilent(left, frames) && isSilent(right, frames);
}
